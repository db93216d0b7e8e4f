#!/usr/bin/env bash
# What a person does, with real keys and clicks, in the real program, with a real virtual product on
# the link: draws a light program, saves it, sees it play, programs it, loses the link in the middle
# and programs again, opens a second document through a second start, crashes, gets the work back.
# Usage: program-a-light.sh FOLDER-OF-THE-PROGRAMS
set -euo pipefail
bin=$(realpath "$1")
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
openScreen 1100x800
newHome home
# Where things are in a window of its first size.
add=(31 518)
topTrack=(300 129)
brightness=(281 129) # of the second segment
simulatorTab=(683 37)
program=(688 518) # on the simulator tab

say() { printf '  %s\n' "$*"; }

memory=$folder/memory
startBench() {
  start "$bin/corvane-bench" lumora-1.2 --eeprom "$memory" --write-time "$1"
  bench=$pid
  eventually "the bench does not show" test -S "$CORVANE_BENCH_DIR/lumora-1.2.link"
}
startBench 2

start "$bin/corvane"
corvane=$pid
awaitWindow '^Lumora$'

say "draw a program"
clickAt "${topTrack[@]}"
for _ in 1 2 3; do clickAt "${add[@]}"; done
awaitTitle 'Lumora\*'
key ctrl+z
clickAt "${brightness[@]}" 3
typeText 0
key Tab
typeText .25
key Return

say "save it"
file=$folder/mine.lumora
saveAs() {
  awaitWindow '^Save'
  typeText "$1"
  key Return
  eventually "nothing was saved" test -s "$1"
}
key ctrl+s
saveAs "$file"
awaitWindow "^Lumora - $file"
printf 'Lumora\t4\t4\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t1\nLumoraTrackInsert\t1\t0\t2\t50\t1\n%s\n%s\n' \
  $'LumoraBrightness\t1\t0\t2\t50\t0' $'LumoraTime\t1\t0\t2\t1\t.25' >"$folder/expected"
diff "$folder/expected" "$file" || fail "the file is not what was drawn"

say "see it play"
clickAt "${simulatorTab[@]}"
key End # the stick to 100 percent
isPlaying() { # the light of channel 1 goes off and on again
  local looks
  looks=$(for _ in $(seq 14); do import -window "$window" -depth 8 rgb:- | md5sum; sleep 0.1; done | sort -u | wc -l)
  [ "$looks" -ge 2 ]
}
eventually "nothing plays" isPlaying

say "program it"
"$bin/corvanectl" compile "$file" -o "$folder/image" >/dev/null
isProgrammed() { cmp -n "$(stat -c %s "$folder/image")" "$folder/image" "$memory"; }
clickAt "${program[@]}"
eventually "the controller does not have the program" isProgrammed
awaitWindow '^Program Lumora'
key Return
awaitWindow "^Lumora - $file"

say "lose the link in the middle of it, and program again"
crash "$bench"
rm -f "$memory"
startBench 20 # a slow one, so that there is a middle
sleep 0.5
clickAt "${program[@]}"
eventually "nothing is being programmed" test -s "$memory"
crash "$bench"
awaitWindow '^Error$'
isProgrammed >/dev/null 2>&1 && fail "the link was lost too late"
key Return
startBench 0
awaitWindow "^Lumora - $file"
clickAt "${program[@]}"
eventually "the controller does not have the program after a lost link" isProgrammed
awaitWindow '^Program Lumora'
key Return

say "open a second document through a second start"
cp "$(dirname "${BASH_SOURCE[0]}")/../../examples/police.lumora" "$folder/police.lumora"
(cd "$folder" && "$bin/corvane" police.lumora) || fail "the second start did not end well"
awaitWindow "^Lumora - $folder/police.lumora$"
[ "$(xdotool search --onlyvisible --name '^Lumora' | wc -l)" -eq 1 ] || fail "there are two windows"

say "crash, and get the work back"
clickAt 45 37 # the first channel
clickAt "${topTrack[@]}"
clickAt "${add[@]}"
awaitTitle '*police.lumora\*'
crash "$corvane"
"$bin/corvanectl" recover | grep -q police.lumora || fail "there is no journal"
for option in -program -eeprom; do # these ask for a screen, and get it
  start "$bin/corvane" $option
  awaitWindow '^(Corvane|EEPROM)'
  key alt+f x # would do nothing in a question
  eventually "a start with $option is asked about what was lost" isGone "$pid"
done
start "$bin/corvane"
corvane=$pid
awaitWindow '^Corvane$'
key alt+y
awaitWindow "^Lumora - $folder/police.lumora\\*$"
key ctrl+s
awaitTitle "Lumora - $folder/police.lumora"

say "close"
key alt+f x
eventually "the program does not end" isGone "$corvane"
wait "$corvane" || fail "the program did not end well"
[ -z "$("$bin/corvanectl" recover)" ] || fail "a journal was left"
echo "all done"
