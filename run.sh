#!/usr/bin/env bash
# Builds Corvane and starts it, with FILE if one is given. Without a link device a virtual light
# controller stands in for one as long as the window is open.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
"$root/scripts/setup.sh"
( cd "$root" && cmake --preset release >/dev/null && cmake --build --preset release )
bin=$root/build/release/bin

bench=
cleanup() { if [ -n "$bench" ]; then kill "$bench" 2>/dev/null || true; wait "$bench" 2>/dev/null || true; fi; }
trap cleanup EXIT
if ! "$bin/corvanectl" devices | grep -q $'\tCorvane\tOrtaline Works\t'; then
  echo "No link is plugged in: a virtual lumora-1.2 stands in for one."
  "$bin/corvane-bench" lumora-1.2 &
  bench=$!
  for _ in $(seq 50); do
    "$bin/corvanectl" devices | grep -q $'\tCorvane\tOrtaline Works\t' && break
    sleep 0.1
  done
fi

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  "$bin/corvane" "$@"
else
  echo "There is no display: corvanectl does the same job here."
  "$bin/corvanectl" identify
fi
