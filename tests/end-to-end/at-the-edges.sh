#!/usr/bin/env bash
# What lies between the window and the system, with real keys and clicks: a screen where everything is
# twice as large, a name from the working folder, clicks while a job runs, a file for a window that
# closes, a start-up notice. Usage: at-the-edges.sh FOLDER-OF-THE-PROGRAMS
set -euo pipefail
bin=$(realpath "$1")
here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
source "$here/support.sh"
openScreen 1600x1000
newHome home
say() { printf '  %s\n' "$*"; }
cd "$folder"
cp "$here/../../examples/police.lumora" "$here/../../examples/bilge-pump.relay" .

say "tell of itself"
"$bin/corvane" --version | grep -q '^Corvane [0-9.]*$' || fail "no version"
"$bin/corvane" --help | grep -q '^  -eeprom ' || fail "no help"

say "open a name from the working folder on a screen of 200 percent"
memory=$folder/memory
start "$bin/corvane-bench" pactor-3.1 --eeprom "$memory" --write-time 300
eventually "the bench does not show" test -S "$CORVANE_BENCH_DIR/pactor-3.1.link"
QT_SCALE_FACTOR=2 start "$bin/corvane" police.lumora
corvane=$pid
awaitWindow "^Lumora - $folder/police.lumora$"
isWhole() { # the window with its frame
  eval "$(xdotool getwindowgeometry --shell "$window")"
  local left right top bottom
  IFS=', ' read -r left right top bottom \
    <<<"$(xprop -id "$window" _NET_FRAME_EXTENTS | sed 's/.*= //')"
  [ $((X - left)) -ge 0 ] && [ $((Y - top)) -ge 0 ] &&
    [ $((X + WIDTH + right)) -le 1600 ] && [ $((Y + HEIGHT + bottom)) -le 1000 ]
}
eventually "the window is not whole on its screen" isWhole
key alt+f x
eventually "the program does not end" isGone "$corvane"

say "what is done while a job runs is thrown away"
start "$bin/corvane" bilge-pump.relay
corvane=$pid
awaitWindow "^Dervan/Maltrex - $folder/bilge-pump.relay$"
program=(140 357)
status=(40 380)
clickAt "${program[@]}"
eventually "nothing is being programmed" test -s "$memory"
for _ in 1 2 3; do clickAt "${program[@]}"; done
key space Tab space ctrl+z alt+f
clickAt 90 40 # the other tab
isWritten() { # all seven bytes, and nothing of a menu
  [ "$(od -An -tx1 -N7 "$memory" | tr -d ' ')" != ffffffffffffff ]
}
eventually "nothing was programmed" isWritten
picture() { import -window "$window" -crop "$1" -depth 8 rgb:- | md5sum; }
isQuiet() { # the line that tells of it stands still for longer than a job takes
  local before
  before=$(picture 306x24+0+365)
  sleep 4
  [ "$before" == "$(picture 306x24+0+365)" ]
}
eventually "it is programmed again" isQuiet
stamp=$(stat -c %Y "$memory")
sleep 2
[ "$stamp" == "$(stat -c %Y "$memory")" ] || fail "it was programmed again"
awaitTitle "Dervan/Maltrex - $folder/bilge-pump.relay" # nothing was undone

say "the program's file is replaced while it runs"
mkdir other
cp "$bin/corvane" other/corvane
key alt+f x # with the relay's settings as they were
eventually "the program does not end" isGone "$corvane"
start other/corvane bilge-pump.relay
corvane=$pid
awaitWindow "^Dervan/Maltrex - $folder/bilge-pump.relay$"
rm other/corvane
key alt+f x
eventually "the program does not end" isGone "$corvane"
grep -q "$folder/other/corvane" "$HOME/.config/corvane/settings" || fail "it is not registered"
! grep -rq '(deleted)' "$HOME/.config" "$HOME/.local" || fail "what is registered is no program"

say "a second start ends the notice of it"
start "$bin/corvane" bilge-pump.relay
corvane=$pid
awaitWindow "^Dervan/Maltrex - $folder/bilge-pump.relay$"
xev -root >"$folder/events" 2>&1 &
started+=($!)
sleep 0.5
DESKTOP_STARTUP_ID=corvane-second_TIME1 "$bin/corvane" bilge-pump.relay
eventually "the notice stays" grep -q _NET_STARTUP_INFO "$folder/events"

say "a file for a window that closes opens in a window of its own"
clickAt 170 118 # another setting
awaitTitle '*relay\*'
key alt+f x
awaitWindow '^Corvane$' # whether to save
start "$bin/corvane" police.lumora
second=$pid
sleep 1
key alt+n
eventually "the program does not end" isGone "$corvane"
awaitWindow "^Lumora - $folder/police.lumora$"
key alt+f x
eventually "the second program does not end" isGone "$second"
echo "all done"
