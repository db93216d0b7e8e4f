#!/usr/bin/env bash
# Builds Corvane and starts it, with FILE or else an example. Without a link device a virtual product
# that fits the file stands in for one as long as the window is open; press Program, and a light
# controller plays the program.
# Where there is no display the same runs in the terminal.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
"$root/scripts/setup.sh"
( cd "$root" && cmake --preset release >/dev/null && cmake --build --preset release )
bin=$root/build/release/bin
[ $# -gt 0 ] || set -- "$root/examples/police.lumora"

bench=
memory=
cleanup() {
  if [ -n "$bench" ]; then kill "$bench" 2>/dev/null || true; wait "$bench" 2>/dev/null || true; fi
  if [ -n "$memory" ]; then rm -f "$memory"; fi
}
trap cleanup EXIT
plugged() { "$bin/corvanectl" devices | grep $'\tCorvane\tOrtaline Works\t' >/dev/null; }
display=no
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then display=yes; fi

if ! plugged; then
  case $1 in
    *.relay) product=pactor-3.1 ;;
    *.ko_eeprom) product=eeprom ;;
    *) product=lumora-1.2 ;;
  esac
  echo "No link is plugged in: a virtual $product stands in for one."
  memory=$(mktemp)
  rm "$memory" # a new controller has an empty memory
  watch=
  if [ $display = yes ] && [ -t 1 ]; then watch=--watch; fi
  "$bin/corvane-bench" "$product" --eeprom "$memory" --stick 70 $watch </dev/null &
  bench=$!
  for _ in $(seq 50); do
    if plugged; then break; fi
    sleep 0.1
  done
fi

if [ $display = yes ]; then
  "$bin/corvane" "$@"
else
  echo "There is no display: corvanectl does the same job here."
  "$bin/corvanectl" identify
  "$bin/corvanectl" program "$1"
  if [ "${product:-}" = lumora-1.2 ]; then
    echo "What the controller plays in the first second, with the stick at 70 percent (mA):"
    "$bin/corvane-bench" play "$memory" --stick 70 --seconds 1 --step 50
  fi
fi
