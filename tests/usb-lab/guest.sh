#!/bin/bash
# Runs in the guest of run.sh, as its only program: guest.sh BIN_DIR [SCENARIO...]. Each fact is a line
# PASS or FAIL. It waits for what should come and not for times, since the machine below may be slow;
# its limits are for what never comes. A scenario in which a fact does not hold is tried once more, and
# says so.
export PATH=$1:/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 HOME=/run/home SYSTEMD_IGNORE_CHROOT=1
export XDG_RUNTIME_DIR=/run/own CORVANE_BENCH_DIR=/run/own # no virtual link there
echo LAB-BEGINS
mkdir -m 700 /run/own /run/home /run/guest
chown nobody /run/guest
cd /run/home || exit
rm -f /lab/*.log /lab/*.memory /lab/*.png
/lib/systemd/systemd-udevd --daemon
modprobe vhci-hcd
udevadm settle
dmesg -n 1

# ---- words for the facts ------------------------------------------------------------------------

fact() { # WHAT GOT PATTERN
  # shellcheck disable=SC2053
  if [[ $2 == $3 ]]; then echo "PASS $1"; else echo "FAIL $1: got '${2//$'\n'/ / }', wanted '$3'"; fi
}
note() { echo "NOTE $*"; }
until_so() { # COMMAND...: waits for it, a minute at most
  local end=$((SECONDS + ${LIMIT:-60}))
  until "$@" >/dev/null 2>&1; do
    ((SECONDS < end)) || return 1
    sleep 0.05
  done
}
started() { echo $! >>/run/started; } # in the background; ended with the scenario at the latest
scenario() { # NAME, that of a function
  local try pid
  for try in first second; do
    : >/run/started
    ("$1") >/run/told 2>&1
    while read -r pid; do kill -KILL "$pid" 2>/dev/null; done </run/started
    until_so eval '[ ! -e "$(place 0)" ] && [ ! -e "$(place 1)" ]'
    if [ $try = second ] || ! grep -q '^FAIL' /run/told; then break; fi
    sed -n "s/^FAIL/NOTE at first, in '$1':/p" /run/told
  done
  cat /run/told
}

place() { echo "/sys/bus/usb/devices/1-$(($1 + 1))"; } # of a port's device
node() { printf '/dev/bus/usb/%03d/%03d' "$(<"$(place "$1")/busnum")" "$(<"$(place "$1")/devnum")"; }
plug() { # NAME PORT OPTION...
  : >"/lab/$1.log"
  /lab/usb-lab-chip --port "$2" --memory "/lab/$1.memory" --log "/lab/$1.log" "${@:3}" &
  started
  echo $! >"/run/$1.pid"
  until_so test -e "$(place "$2"):1.0/driver"
  udevadm settle
}
unplug() { # NAME PORT
  kill "$(<"/run/$1.pid")" 2>/dev/null
  wait "$(<"/run/$1.pid")" 2>/dev/null
  until_so test ! -e "$(place "$2")"
  udevadm settle
}
ctl() { # ARGUMENT...: what it says, and its exit status before that
  local said status
  said=$(timeout 120 corvanectl "$@" 2>&1); status=$?
  echo "$status $said"
}
count() { grep -c "$2" "/lab/$1.log"; } # NAME WORDS, in what has happened to a chip
counts_more() { (($(count "$1" "$2") > $3)); }
begin() { # ARGUMENT...: a command in the background, once it has opened the link; in `job`
  local before
  before=$(count link requests)
  env --default-signal=INT corvanectl "$@" >/run/said 2>&1 & job=$!
  started
  until_so counts_more link requests "$before"
}
tty_is_back() { # WHEN [PORT]
  local driver
  driver=$(readlink "$(place "${2:-0}"):1.0/driver")
  fact "the kernel's driver has the link $1" "${driver##*/}" ftdi_sio
}
strings() { echo "$(<"$(place 0)/manufacturer")|$(<"$(place 0)/product")|$(cat "$(place 0)/serial" 2>/dev/null)"; }
sound() { # NAME WHAT POWER_CYCLES
  fact "$2: nothing forbidden was asked of the chip" "$(grep violation "/lab/$1.log")" ""
  fact "$2: the product has power in the end" "$(grep power "/lab/$1.log" | tail -1)" "*power on*"
  fact "$2: the product lost its power so often" "$(count "$1" "power off")" "$3"
  # They are sent again; usb_test shows that the program asks for them early enough.
  ! grep -q overrun "/lab/$1.log" || note "$2: lost in the chip, since the machine was busy: $(grep overrun "/lab/$1.log" | tail -1)"
}
as_person=(setpriv --reuid=nobody --regid=nogroup --clear-groups
  env HOME=/run/guest XDG_RUNTIME_DIR=/run/guest CORVANE_BENCH_DIR=/run/guest timeout 120)
link=(--kind link --product lumora-1.2)

shows() { xdotool search --onlyvisible --name "$1"; }
shows_window() { shows '^(Corvane|Lumora)'; }
desktop() { # opens a screen, and the window on it
  rm -f /tmp/.X11-unix/X7 /tmp/.X7-lock
  Xvfb :7 -screen 0 1100x800x24 >/dev/null 2>&1 & screen=$!
  started
  export DISPLAY=:7
  until_so test -S /tmp/.X11-unix/X7
  QT_QPA_PLATFORM=xcb corvane "$@" >/dev/null 2>&1 & window=$!
  started
  until_so shows_window
}
close_desktop() {
  kill "$window"; wait "$window" 2>/dev/null
  kill "$screen"; wait "$screen" 2>/dev/null
}
picture() { import -window root "/lab/$1.png"; }
holds_link() { find "/proc/$window/fd" -lname '*/bus/usb/*' | grep -q .; }
takes_link() { if until_so holds_link; then echo yes; fi; }
click_program() { # the button in the middle of the programmer screen
  local x y width height # the names that the tool prints
  eval "$(xdotool getwindowgeometry --shell "$(shows_window | tail -1)" | tr '[:upper:]' '[:lower:]' | grep -E '^(x|y|width|height)=')"
  # Below the logo and the title, which stand in the middle with it.
  xdotool mousemove $((x + width / 2)) $((y + height / 2 + 85)) sleep 0.3 click 1
}
spent() { awk '{ print $14 + $15 }' "/proc/$1/stat"; } # ticks of the processor
percent_of_a_core() { # PID SECONDS
  local before after
  before=$(spent "$1"); sleep "$2"; after=$(spent "$1")
  awk -v t=$((after - before)) -v s="$2" -v hz="$(getconf CLK_TCK)" 'BEGIN { printf "%.2f", 100 * t / s / hz }'
}

# ---- what a person does -------------------------------------------------------------------------

working_day() {
  plug link 0 "${link[@]}"
  tty_is_back "after plugging"
  fact "listed" "$(ctl devices)" $'0 0\tCorvane\tOrtaline Works\tKO\tKO1234567'
  fact "identified" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
  tty_is_back "after identifying"
  fact "programmed" "$(ctl program /lab/police.lumora)" "0 Programming complete."
  tty_is_back "after programming"
  sound link "after programming" 1
  fact "read" "$(ctl read 0 256)" "0 *"
  tty_is_back "after reading"
  fact "written" "$(ctl write 250 1 2 3)$(ctl read 250 3)" "0 0 1 2 3"
  tty_is_back "after writing"
  sound link "after reading and writing" 1
}

ways_out() {
  plug link 0 "${link[@]}" --write-time 7 # so that it is at work when it is hit
  local signal losses
  for signal in INT TERM HUP KILL; do
    losses=$(count link "power off")
    begin program /lab/police.lumora
    kill -$signal $job; wait $job
    fact "SIG$signal ends a command" $? $((128 + $(kill -l $signal)))
    [ $signal != KILL ] || break # which leaves no time to tidy up
    fact "SIG$signal leaves the product its power" "$(($(count link "power off") - losses)) $(grep power /lab/link.log | tail -1)" "[01] *power on*"
    tty_is_back "after SIG$signal"
  done
  fact "identified after a kill" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
  tty_is_back "after a kill and a command"
  begin program /lab/police.lumora
  unplug link 0; wait $job
  fact "pulled out in the middle" "$? $(</run/said)" "1 corvanectl: *"
}

other_programs() {
  plug link 0 "${link[@]}"
  /lab/usb-lab-claimer "$(<"$(place 0)/busnum")" "$(<"$(place 0)/devnum")" >/run/claimed & claimer=$!
  started
  until_so grep -q claimed /run/claimed
  fact "a claimed link is busy, by name" "$(ctl identify)" "1 *busy*another program*usb-lab-claimer (process $claimer)*"
  desktop
  note "the window beside a claimed link: $(percent_of_a_core $window 6) percent of this slow core"
  picture claimed
  kill $claimer; wait $claimer 2>/dev/null
  fact "the window takes the link once it is free" "$(takes_link)" yes
  unplug link 0
  until_so eval '! holds_link'
  plug link 0 "${link[@]}"
  fact "the window takes a link that is plugged in" "$(takes_link)" yes
  close_desktop
  tty_is_back "after the window was ended"
  begin read 0 256
  fact "a second program waits for the first" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
  wait $job; fact "and the first is done" $? 0
}

rights() {
  plug link 0 "${link[@]}"
  chmod 600 "$(node 0)"
  fact "without rights it says what to do" "$("${as_person[@]}" corvanectl identify 2>&1)" "*60-corvane.rules*"
  mkdir -p /etc/udev/rules.d
  cp /lab/60-corvane.rules /etc/udev/rules.d/
  udevadm control --reload-rules
  udevadm trigger --subsystem-match=usb --attr-match=idVendor=0403
  udevadm settle
  fact "the rule works" "$(udevadm info "$(node 0)" | tr '\n' ' ')" "*ID_MM_DEVICE_IGNORE=1*uaccess*"
  chown nobody "$(node 0)"
  fact "with rights it works" "$("${as_person[@]}" corvanectl identify 2>&1)" $'Lumora\t1.2\t3.7'
  tty_is_back "after a person's command"
  rm /etc/udev/rules.d/60-corvane.rules
  udevadm control --reload-rules
}

another_chip() {
  plug cable 1
  fact "a stock chip is no link" "$(ctl identify)" "1 corvanectl: No Corvane is connected.*"
  plug link 0 "${link[@]}"
  fact "a link beside a stock chip" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
  tty_is_back "of the stock chip" 1
}

read_again() { # NAME: the chip's memory, and nothing is done to it any more
  local reads
  reads=$(count "$1" "memory read")
  ((reads > 1)) && sleep 1 && [ "$reads" = "$(count "$1" "memory read")" ]
}
give_strings() { # NAME MODE OPTION...: to a new chip, in the window, with a real click
  rm -f "/lab/$1.memory"
  plug "$1" 0 "${@:3}"
  cp "/lab/$1.memory" /run/before
  desktop "$2"
  until_so grep "power on" "/lab/$1.log"
  for _ in {1..10}; do # the button comes a moment after the link
    click_program
    ! LIMIT=6 until_so counts_more "$1" "memory read" 0 || break
  done
  until_so read_again "$1"
}
becomes_a_link() { # NAME MODE OPTION...
  give_strings "$@"
  picture "$1"
  sound "$1" "a chip that was $1" 0
  close_desktop
  tty_is_back "of a chip that was $1"
  unplug "$1" 0; plug "$1" 0 "${@:3}"
  local now; now=$(strings)
  fact "a chip that was $1 is a link, with a number of its own" "${now/KO1234567/the old one}" "Ortaline Works|Corvane|KO???????"
  [ "$1" = empty ] || fact "a chip that was $1: the rest of its memory is as it was" \
    "$(cmp -l /run/before "/lab/$1.memory" | awk '$1 <= 14 || ($1 > 20 && $1 <= 24) || ($1 > 120 && $1 < 127)')" ""
}
stock_chip() { becomes_a_link stock -program; }
empty_chip() { becomes_a_link empty -program --kind empty; }
named_chip() {
  becomes_a_link named -program2 "${link[@]}"
  fact "and works" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
}
forgetful_chip() {
  give_strings deaf -program --forgetful
  fact "a chip that forgets its strings is told" "$(until_so shows '^Error$' && echo told)" told
  picture deaf
  close_desktop
}

all=(working_day ways_out other_programs rights another_chip stock_chip empty_chip named_chip forgetful_chip)
for name in "${@:2}"; do scenario "$name"; done
[ $# -gt 1 ] || for name in "${all[@]}"; do scenario "$name"; done
