#!/usr/bin/env bash
# The firmware kit on an emulated chip: the library with four compilers, the three products and the
# Arduino sketch behind a virtual link, and what they cost. Prints a line a fact, and then how many
# held. PROGRAMS is where corvanectl and corvane-bench are.
#   tests/firmware/run.sh PROGRAMS [RUNS]   so many light programs over a bad wire; 3 if not given
# Status 77 when a package is missing that only the long check needs.
set -uo pipefail
[ $# -ge 1 ] || { sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2; }
root=$(cd "$(dirname "$0")/../.." && pwd)
programs=$(cd "$1" && pwd)
runs=${2:-3}
for tool in avr-gcc arm-none-eabi-gcc clang arduino-builder; do
  command -v $tool >/dev/null || { echo "$tool is missing: see packaging/apt-packages-long.txt"; exit 77; }
done
[ -f /usr/include/simavr/sim_avr.h ] || { echo "libsimavr-dev is missing"; exit 77; }
work=$(mktemp -d)
export CORVANE_BENCH_DIR=$work/links HOME=$work
mkdir -m 700 "$CORVANE_BENCH_DIR"
chip=
trap '[ -n "$chip" ] && kill $chip 2>/dev/null; rm -rf "$work"' EXIT

passed=0 failed=0
fact() { # WORDS STATUS
  if [ "$2" = 0 ]; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
  printf '%s %s\n' "$([ "$2" = 0 ] && echo ok || echo FAILED)" "$1"
}
equal() { # WORDS EXPECTED FOUND
  [ "$2" = "$3" ]; local status=$?
  fact "$1" $status
  [ $status = 0 ] || printf '   expected: %s\n   found:    %s\n' "$2" "$3"
}
below() { # WORDS NUMBER BOUND
  [ -n "$2" ] && [ "$2" -lt "$3" ]; fact "$1: $2 (below $3)" $?
}
ctl() { timeout 60 "$programs/corvanectl" "$@" 2>>"$work/errors"; }

# What a compiler that knows no more than C99 says of it.
strict="-std=c99 -Os -Wall -Wextra -pedantic -Wconversion -Wshadow -Werror -c"
for compiler in "gcc" "clang" "avr-gcc -mmcu=atmega328p" "arm-none-eabi-gcc -mcpu=cortex-m0 -ffreestanding"; do
  for limits in "" -DCV_SMALL; do
    mkdir -p "$work/strict"
    (cd "$work/strict" && $compiler $strict $limits "$root"/firmware/src/*.c \
      "$root"/firmware/products/{light_player,stick}.c) ; status=$?
    fact "${compiler%% *} ${limits:-whole}: nothing to complain of" $status
    case $compiler$limits in
      avr-gcc*SMALL) below "bytes of RAM, small" "$(avr-size "$work"/strict/corvane_*.o | awk 'NR > 1 { sum += $2 + $3 } END { print sum }')" 200 ;;
      avr-gcc*) below "bytes of RAM, with whole packets" "$(avr-size "$work"/strict/corvane_*.o | awk 'NR > 1 { sum += $2 + $3 } END { print sum }')" 600 ;;
    esac
  done
done

gcc -std=gnu99 -O2 -Wall -Wextra -I/usr/include/simavr -o "$work/chip" "$root"/tests/firmware/{chip,link}.c \
  -lsimavr -lelf && make -s -C "$root/firmware/products" BUILD="$work" >"$work/sizes"
fact "the products are built" $?
mkdir -p "$work/libraries" "$work/sketch"
cp -r "$root/firmware" "$work/libraries/Corvane"
arduino-builder -hardware /usr/share/arduino/hardware -hardware /usr/share/arduino-builder \
  -tools /usr/share/arduino-builder -libraries "$work/libraries" -build-path "$work/sketch" \
  -fqbn arduino:avr:nano:cpu=atmega328 -prefs compiler.cpp.extra_flags=-DDECIMAL_DIG=__DECIMAL_DIG__ \
  "$work/libraries/Corvane/examples/EepromProduct/EepromProduct.ino" >"$work/builder" 2>&1
fact "the Arduino sketch is built" $?
cp "$work/sketch/EepromProduct.ino.elf" "$work/sketch.elf"

start() { # ELF NAME
  coproc "$work/chip" "$work/$1.elf" "$1" 2>>"$work/errors"
  chip=$COPROC_PID
  exec {to}>&"${COPROC[1]}" {from}<&"${COPROC[0]}" # which the parts of a pipe have, too
  for _ in $(seq 50); do [ -S "$CORVANE_BENCH_DIR/$1.link" ] && break; sleep 0.1; done
}
tell() { echo "$*" >&"$to"; }
ask() { tell "$@"; local answer=; read -r -t 20 answer <&"$from"; echo "$answer"; }
finish() { # NAME FLASH RAM CYCLES
  local overruns busy worst text data bss
  read -r overruns busy worst <<<"$(ask report)"
  equal "$1: bytes that the UART lost, and accesses to the busy EEPROM" "0 0" "$overruns $busy"
  below "$1: cycles from a question to its answer" "$worst" "$4"
  read -r text data bss _ < <(avr-size "$work/$1.elf" | tail -1)
  below "$1: bytes of flash" $((text + data)) "$2"
  below "$1: bytes of RAM, without the stack" $((data + bss)) "$3"
  kill "$chip"
  wait "$chip" 2>/dev/null
  chip=
  exec {to}>&- {from}<&-
  rm -f "$CORVANE_BENCH_DIR/$1.link"
}

for name in eeprom sketch; do
  start $name
  equal "$name: identified" $'KOEEPROM\t255.1\t1.0' "$(ctl identify)"
  ctl program --yes "$root/examples/speed-controller.ko_eeprom" >/dev/null
  fact "$name: the variables are programmed" $?
  ctl read-settings eeprom "$root/examples/speed-controller.ko_eeprom" "$work/$name.ko_eeprom" >/dev/null
  fact "$name: and read back" $?
  ctl write 1020 1 0 255 0 >/dev/null
  equal "$name: the last cells, and the first ones behind them" \
    "1 0 255 0 $(ctl read 0 2)" "$(ctl read 1020 6)"
  finish $name $([ $name = eeprom ] && echo 4096 800 || echo 8192 1200) 8000
done

start relay
tell pulse 1300
equal "relay: identified" $'Pactor\t3.1\t1.0' "$(ctl identify)"
ctl program "$root/examples/bilge-pump.relay" >/dev/null
fact "relay: the settings are programmed" $?
ctl read-settings relay "$work/read.relay" >/dev/null && ctl read 0 7 >"$work/settings"
fact "relay: and read back" $?
read -r trip band above_i below_i above_r below_r lost_r <"$work/settings"
on() { [ "$1" = 1 ] && echo 255 || echo 0; }
tell pulse 1200; sleep 0.2
equal "relay: below" "$(on "$below_i") $(on "$below_r")" "$(ask outputs | cut -d' ' -f7,8)"
tell pulse 1800; sleep 0.2
equal "relay: above" "$(on "$above_i") $(on "$above_r")" "$(ask outputs | cut -d' ' -f7,8)"
tell pulse 0; sleep 0.3
equal "relay: without a signal" "blinks $(on "$lost_r")" \
  "$(ask outputs | awk '{ print ($7 > 90 && $7 < 165 ? "blinks" : $7), $8 }')"
finish relay 5120 800 8000

start lights
tell pulse 1500
equal "lights: identified" $'Lumora\t1.2\t1.0' "$(ctl identify)"
for example in police navigation landing-lights; do
  ctl program "$root/examples/$example.lumora" >/dev/null
  fact "lights: $example is programmed" $?
  ctl compile "$root/examples/$example.lumora" -o "$work/image"
  equal "lights: and read back" "$(od -An -v -w255 -tu1 "$work/image" | xargs)" "$(ctl read 0 255)"
done
# A program that does not move shows best what plays: half of 250 mA at the top, 20 % at the bottom.
printf 'Lumora\t3\t3\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t1\nLumoraTrackInsert\t1\t-1\t1\t20\t1\nLumoraTrackInsert2\t2\t0\t1\t100\t1\tP\t0\n' >"$work/still.lumora"
ctl program "$work/still.lumora" >/dev/null
fact "lights: a still program" $?
ctl compile "$work/still.lumora" -o "$work/image"
for pulse in 1800 1650 1300; do
  tell pulse $pulse; sleep 0.3
  expected=$("$programs/corvane-bench" play "$work/image" --stick $(((pulse - 1200) / 6)) --seconds 0.1 |
    awk -F, 'NR == 2 { for (i = 2; i < 8; ++i) printf "%s%d", (i == 2 ? "" : " "), ($i * 255 + 125) / 250 }')
  equal "lights: plays at a pulse of $pulse microseconds" "$expected" "$(ask outputs | cut -d' ' -f1-6)"
done
tell faults 5 5
good=0
for run in $(seq "$runs"); do
  example=$([ $((run % 2)) = 0 ] && echo police || echo navigation)
  ctl program "$root/examples/$example.lumora" >/dev/null && good=$((good + 1))
done
tell faults 0 0
equal "lights: programs that came through with 0.5 % of the bytes lost and 0.5 % damaged, each way" "$runs" "$good"
finish lights 6144 1200 16000

echo "$passed passed, $failed failed"
[ "$failed" = 0 ] || cat "$work/errors" >&2
[ "$failed" = 0 ]
