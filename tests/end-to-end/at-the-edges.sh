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
QT_SCALE_FACTOR=2 start "$bin/corvane" police.lumora
corvane=$pid
awaitWindow "^Lumora - $folder/police.lumora$"
isWhole() { # the window with its frame
  local X Y WIDTH HEIGHT left right top bottom
  read -r X Y WIDTH HEIGHT < <(xwininfo -id "$window" |
    awk '/Absolute|Width:|Height:/ { printf "%s ", $NF }')
  IFS=', ' read -r left right top bottom \
    <<<"$(xprop -id "$window" _NET_FRAME_EXTENTS | sed 's/.*= //')"
  [ $((X - left)) -ge 0 ] && [ $((Y - top)) -ge 0 ] &&
    [ $((X + WIDTH + right)) -le 1600 ] && [ $((Y + HEIGHT + bottom)) -le 1000 ]
}
eventually "the window is not whole on its screen" isWhole
key alt+f x
eventually "the program does not end" isGone "$corvane"

say "what is done while a job runs is thrown away"
newHome usual # the window of a large screen is not kept here
memory=$folder/memory
start "$bin/corvane-bench" lumora-1.2 --eeprom "$memory" --write-time 7
eventually "the bench does not show" test -S "$CORVANE_BENCH_DIR/lumora-1.2.link"
start "$bin/corvane" police.lumora
corvane=$pid
awaitWindow "^Lumora - $folder/police.lumora$"
clickAt 683 37 # the simulator's tab, as in program-a-light.sh
program=(688 518)
clickAt "${program[@]}"
eventually "nothing is being programmed" test -s "$memory"
for _ in 1 2 3; do xdotool mousemove --window "$window" "${program[@]}" click 1; done
key space ctrl+z alt+f
clickAt 45 37 # the first channel's tab
"$bin/corvanectl" compile police.lumora -o image >/dev/null
isProgrammed() { cmp -n "$(stat -c %s image)" image "$memory"; }
isProgrammed >/dev/null 2>&1 && fail "the job was over too soon"
eventually "the controller does not have the program" isProgrammed
awaitWindow '^Program Lumora'
sleep 1
stamp=$(stat -c %Y%s "$memory")
key Return
sleep 2
[ "$stamp" == "$(stat -c %Y%s "$memory")" ] || fail "it was programmed again"
isShown '^Program Lumora' >/dev/null && fail "it is programmed again"
awaitWindow "^Lumora - $folder/police.lumora$" # nothing was undone
key alt+o u Escape Escape # to look for updates, in a build that has nowhere to
key alt+f x
eventually "the program does not end" isGone "$corvane"

! grep -q NoAutopatch "$HOME/.config/corvane/settings" || fail "updates that there are none of are turned off"

say "the program's file is replaced while it runs"
mkdir other
cp "$bin/corvane" other/corvane
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
key ctrl+z # something that is not saved
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
