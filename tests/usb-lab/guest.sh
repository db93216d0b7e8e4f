#!/bin/bash
# Runs in the guest of run.sh, as its only program: guest.sh BIN_DIR. Each fact is a line PASS or FAIL.
export PATH=$1:/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 HOME=/run/home SYSTEMD_IGNORE_CHROOT=1
export XDG_RUNTIME_DIR=/run/own CORVANE_BENCH_DIR=/run/own # no virtual link there
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
until_so() { # SECONDS COMMAND...
  local tries=$(($1 * 20)); shift
  while ! "$@" >/dev/null 2>&1; do
    ((tries-- > 0)) || return 1
    sleep 0.05
  done
}
place() { echo "/sys/bus/usb/devices/1-$(($1 + 1))"; } # of a port's device
node() { printf '/dev/bus/usb/%03d/%03d' "$(<"$(place "$1")/busnum")" "$(<"$(place "$1")/devnum")"; }
plug() { # NAME PORT OPTION...
  : >"/lab/$1.log"
  /lab/usb-lab-chip --port "$2" --memory "/lab/$1.memory" --log "/lab/$1.log" "${@:3}" &
  echo $! >"/run/$1.pid"
  until_so 10 test -e "$(place "$2"):1.0/driver"
  udevadm settle
}
unplug() { # NAME PORT
  kill "$(<"/run/$1.pid")" 2>/dev/null
  wait "$(<"/run/$1.pid")" 2>/dev/null
  until_so 5 test ! -e "$(place "$2")"
  udevadm settle
}
ctl() { # ARGUMENT...: what it says, and its exit status before that
  local said status
  said=$(timeout 60 corvanectl "$@" 2>&1); status=$?
  echo "$status $said"
}
tty_is_back() { # WHEN [PORT]
  local driver
  driver=$(readlink "$(place "${2:-0}"):1.0/driver")
  fact "the kernel's driver has the link $1" "${driver##*/}" ftdi_sio
}
strings() { echo "$(<"$(place "$1")/manufacturer")|$(<"$(place "$1")/product")|$(cat "$(place "$1")/serial" 2>/dev/null)"; }
losses() { grep -c 'power off' "/lab/$1.log"; }
sound() { # NAME WHAT POWER_CYCLES
  fact "$2: nothing forbidden was asked of the chip" "$(grep -e violation -e overrun "/lab/$1.log")" ""
  fact "$2: the product has power in the end" "$(grep power "/lab/$1.log" | tail -1)" "*power on*"
  fact "$2: the product lost its power so often" "$(losses "$1")" "$3"
}
as_person=(setpriv --reuid=nobody --regid=nogroup --clear-groups
  env HOME=/run/guest XDG_RUNTIME_DIR=/run/guest CORVANE_BENCH_DIR=/run/guest)
link=(--kind link --product lumora-1.2)
desktop() { # opens a screen, and the window on it
  Xvfb :7 -screen 0 1100x800x24 >/dev/null 2>&1 & screen=$!
  export DISPLAY=:7
  until_so 10 test -S /tmp/.X11-unix/X7
  QT_QPA_PLATFORM=xcb corvane "$@" >/dev/null 2>&1 & window=$!
  until_so 20 xdotool search --onlyvisible --name Corvane
}
close_desktop() {
  kill $window; wait $window 2>/dev/null
  kill $screen; wait $screen 2>/dev/null
  rm -f /tmp/.X11-unix/X7 /tmp/.X7-lock
}
picture() { import -window root "/lab/$1.png"; }
click_program() { # the button in the middle of the programmer screen
  local id x y width height window screen # the names that the tool prints
  id=$(xdotool search --onlyvisible --name Corvane | tail -1)
  eval "$(xdotool getwindowgeometry --shell "$id" | tr '[:upper:]' '[:lower:]')"
  # Below the logo and the title, which stand in the middle with it.
  xdotool mousemove $((x + width / 2)) $((y + height / 2 + 85)) sleep 0.3 click 1
}
spent() { awk '{ print $14 + $15 }' "/proc/$1/stat"; } # ticks of the processor
percent_of_a_core() { # PID SECONDS
  local before after
  before=$(spent "$1"); sleep "$2"; after=$(spent "$1")
  awk -v t=$((after - before)) -v s="$2" -v hz="$(getconf CLK_TCK)" 'BEGIN { printf "%.2f", 100 * t / s / hz }'
}

# ---- a working day ------------------------------------------------------------------------------

plug link 0 "${link[@]}"
tty_is_back "after plugging"
fact "listed" "$(ctl devices)" $'0 0\tCorvane\tOrtaline Works\tKO\tKO1234567'
fact "identified" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
tty_is_back "after identifying"
fact "programmed" "$(ctl program /lab/police.lumora)" "0 Programming complete."
tty_is_back "after programming"
sound link "after programming" 1
fact "read" "$(ctl read 0 256)" "0 *"
fact "written" "$(ctl write 250 1 2 3)$(ctl read 250 3)" "0 0 1 2 3"
sound link "after reading and writing" 1
tty_is_back "after writing"

# ---- ways out -----------------------------------------------------------------------------------

for signal in INT TERM HUP; do
  seen=$(losses link)
  corvanectl program /lab/police.lumora >/dev/null 2>&1 & job=$!
  sleep 0.7; kill -$signal $job; wait $job 2>/dev/null
  fact "SIG$signal leaves the product its power" "$(($(losses link) - seen)) $(grep power /lab/link.log | tail -1)" "[01] *power on*"
  tty_is_back "after SIG$signal"
done
corvanectl program /lab/police.lumora >/dev/null 2>&1 & job=$!
sleep 0.7; kill -KILL $job; wait $job 2>/dev/null
fact "identified after a kill" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
tty_is_back "after a kill and a command"
corvanectl program /lab/police.lumora >/run/said 2>&1 & job=$!
sleep 0.7; unplug link 0; wait $job; status=$?
fact "pulled out in the middle" "$status $(</run/said)" "1 corvanectl: *"
corvanectl identify >/run/said 2>&1 & job=$!
plug link 0 "${link[@]}"; wait $job; status=$? # five seconds are not long on this slow machine
fact "plugged in while a command waits" "$status $(</run/said)" $'0 Lumora\t1.2\t3.7'
tty_is_back "after that"

# ---- other programs -----------------------------------------------------------------------------

/lab/usb-lab-claimer "$(<"$(place 0)/busnum")" "$(<"$(place 0)/devnum")" >/run/claimed & claimer=$!
until_so 5 grep -q claimed /run/claimed
fact "a claimed link is busy, by name" "$(ctl identify)" "1 *busy*another program*usb-lab-claimer (process $claimer)*"
desktop
note "the window beside a claimed link: $(percent_of_a_core $window 6) percent of this slow core"
picture claimed
kill $claimer; wait $claimer 2>/dev/null
sleep 3
fact "the window takes the link once it is free" "$(ls -l /proc/$window/fd | grep -c bus/usb)" 1
close_desktop
tty_is_back "after the window was ended"
corvanectl program /lab/police.lumora >/run/said 2>&1 & job=$!
sleep 0.5
fact "a second program waits for the first" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
wait $job; fact "and the first is done" "$?" 0
unplug link 0

# ---- rights -------------------------------------------------------------------------------------

plug link 0 "${link[@]}"
chmod 600 "$(node 0)"
fact "without rights it says what to do" "$(timeout 30 "${as_person[@]}" corvanectl identify 2>&1)" "*60-corvane.rules*"
mkdir -p /etc/udev/rules.d
cp /lab/60-corvane.rules /etc/udev/rules.d/
udevadm control --reload-rules
udevadm trigger --subsystem-match=usb --attr-match=idVendor=0403
udevadm settle
fact "the rule works" "$(udevadm info "$(node 0)" | tr '\n' ' ')" "*ID_MM_DEVICE_IGNORE=1*uaccess*"
chown nobody "$(node 0)"
fact "with rights it works" "$(timeout 30 "${as_person[@]}" corvanectl identify 2>&1)" $'Lumora\t1.2\t3.7'
tty_is_back "after a person's command"
rm /etc/udev/rules.d/60-corvane.rules
udevadm control --reload-rules
unplug link 0

# ---- another chip beside ours -------------------------------------------------------------------

plug cable 1
fact "a stock chip is no link" "$(ctl identify)" "1 corvanectl: No Corvane is connected.*"
plug link 0 "${link[@]}"
fact "a link beside a stock chip" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
tty_is_back "of the stock chip" 1
unplug link 0; unplug cable 1

# ---- giving chips their strings, with a real click ----------------------------------------------

programmed() { # NAME LOG_OF: waits until it holds other bytes than before
  until_so 20 bash -c "! cmp -s /run/before /lab/$1.memory"
  sleep 1.5
}
for kind in stock empty; do
  plug $kind 0 --kind $kind
  cp /lab/$kind.memory /run/before
  desktop -program
  until_so 20 grep -q "power on" /lab/$kind.log
  sleep 2
  click_program; programmed $kind; picture $kind
  sound $kind "a chip that was $kind" 0
  close_desktop
  tty_is_back "of a chip that was $kind"
  unplug $kind 0; plug $kind 0 --kind $kind
  fact "a chip that was $kind is a link" "$(strings 0)" "Ortaline Works|Corvane|KO???????"
  [ $kind = empty ] || fact "the rest of its memory is as it was" \
    "$(cmp -l /run/before /lab/$kind.memory | awk '$1 <= 14 || ($1 > 20 && $1 <= 24) || ($1 > 120 && $1 < 127)')" ""
  unplug $kind 0
done
plug link 0 "${link[@]}"
cp /lab/link.memory /run/before
desktop -program2
until_so 20 grep -q "power on" /lab/link.log
sleep 2
click_program; programmed link
sound link "a link that gets a new number" 0
close_desktop
unplug link 0; plug link 0 "${link[@]}"
fact "it has a new number" "$(strings 0 | sed 's/KO1234567/the old one/')" "Ortaline Works|Corvane|KO???????"
fact "and works" "$(ctl identify)" $'0 Lumora\t1.2\t3.7'
unplug link 0
plug deaf 0 --forgetful
cp /lab/deaf.memory /run/before
desktop -program
until_so 20 grep -q "power on" /lab/deaf.log
sleep 2
click_program; sleep 5; picture deaf
fact "a chip that forgets its strings is told" "$(xdotool search --onlyvisible --name '^Error$' | wc -l)" 1
close_desktop
unplug deaf 0
