#!/usr/bin/env bash
# Makes the pictures of the manual from the real programs, on a screen of their own, in light and in
# dark colours.
# Usage: scripts/screenshots.sh [PROGRAMS [PROGRAMS-OF-A-BUILD-WITH-TESTS [FOLDER]]]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bin=$(realpath "${1:-$root/build/release/bin}")
binRq=$(realpath "${2:-$root/build/debug/bin}")
pictures=${3:-$root/docs/manual/pictures}
mkdir -p "$pictures"
source "$root/tests/end-to-end/support.sh"
openScreen 1100x800
# Titles show where a document lies: the same place each time.
documents=/tmp/models
mkdir "$documents"
trap 'cleanup; rm -rf "$documents"' EXIT

# A desktop whose colours are dark tells so in its settings.
darkColours() {
  export XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5
  local kind
  for kind in Window=42,46,50 View=27,30,32 Button=49,54,59 Tooltip=49,54,59 Selection=61,174,233; do
    printf '[Colors:%s]\nBackgroundNormal=%s\nForegroundNormal=252,252,252\n' "${kind%%=*}" "${kind##*=}"
    printf 'ForegroundInactive=161,169,177\nForegroundLink=29,153,243\nForegroundVisited=155,89,182\n'
  done >"$HOME/.config/kdeglobals"
}
# Everything that is on the screen, without the empty ground.
picture() {
  xdotool mousemove 1099 799
  sleep 0.3
  import -window root "$folder/screen.png"
  convert "$folder/screen.png" -trim +repage -strip -define png:compression-level=9 "$pictures/$1-$colours.png"
  echo "$1-$colours"
}
open() { # FILE in the programs of FOLDER, whose window has this title; a copy, so that it may be saved
  local file=$documents/$2
  [ -f "$file" ] || cp "$root/examples/$2" "$file"
  start "$1/corvane" "$file"
  awaitWindow "$3"
  sleep 0.5
}
closeIt() {
  crash "$pid"
  rm -rf "$HOME/.local/state/corvane" "$XDG_RUNTIME_DIR"/corvane
}
bench() {
  start "$@" --write-time 0
  benchPid=$pid
  eventually "the bench does not show" test -S "$CORVANE_BENCH_DIR/$2.link"
}

for colours in light dark; do
  newHome "$colours"
  [ $colours = dark ] && darkColours

  start "$bin/corvane"
  awaitWindow '^Lumora$'
  picture first-start
  key alt+h t
  picture troubleshooting
  key Escape Escape Escape
  key alt+h
  key a
  awaitWindow '^About'
  picture about
  key Return
  awaitWindow '^Lumora$'
  clickAt 300 129
  for _ in 1 2 3; do clickAt 31 518; done
  picture segments
  crash "$pid"
  start "$bin/corvane"
  awaitWindow '^Corvane$'
  picture crashed
  closeIt

  bench "$bin/corvane-bench" lumora-1.2
  open "$bin" police.lumora '^Lumora'
  clickAt 277 457 # the advanced options
  clickAt 160 120
  picture light
  xdotool mousemove --window "$window" 350 190 click 3
  picture segment-menu
  key Escape
  clickAt 515 37
  picture all-channels
  clickAt 603 37
  picture transmitter
  clickAt 603 37
  clickAt 688 518
  awaitWindow '^Program Lumora'
  sleep 1
  picture programming
  closeIt
  crash "$benchPid"
  open "$bin" navigation.lumora '^Lumora'
  clickAt 683 37
  picture simulator
  closeIt

  bench "$bin/corvane-bench" pactor-3.1
  open "$bin" bilge-pump.relay 'bilge-pump'
  picture relay
  clickAt 110 37
  picture relay-simulator
  closeIt
  crash "$benchPid"

  start "$bin/corvane" -program
  awaitWindow '^Corvane$'
  picture start-screen
  closeIt

  open "$bin" speed-controller.ko_eeprom 'speed-controller'
  picture eeprom
  closeIt

  export CORVANE_BENCH_DIR=$HOME/bench
  bench "$binRq/corvane-bench" quillon
  { # a sweep, as a servo would make it
    printf 'Quillon\t600\t600\t0\t1\n'
    for i in $(seq 600); do printf 'QuillonPWM\t%d\n' $((i % 200 < 100 ? i % 100 * 2 + 25 : 225 - i % 100)); done
  } >"$HOME/sweep.Quillon"
  start "$binRq/corvane-rq" "$HOME/sweep.Quillon"
  awaitWindow '^Corvane$'
  clickAt 225 111 # load from disk
  awaitWindow '^Open$'
  typeText "$HOME/sweep.Quillon"
  key Return
  sleep 1
  picture pwm
  closeIt
  crash "$benchPid"
  rm -f "$HOME/.config/kdeglobals"
  unset XDG_CURRENT_DESKTOP KDE_SESSION_VERSION
done
