#!/usr/bin/env bash
# Checks everything that must hold before a change goes in. There are two builds: one is what people
# run, and its package and a person's way through it are tried; the other is instrumented (address
# and undefined behaviour, coverage), and runs all tests and all fuzzers. The long check also builds
# the core as on a machine without Qt.
#   ./test.sh          what takes about ten minutes on two cores without a compiler cache
#   ./test.sh --long   all, below three quarters of an hour
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$root"
case ${1:-} in
  "") long=OFF without=(-LE long) fuzz_seconds=${FUZZ_SECONDS:-2} ;;
  --long) long=ON without=() fuzz_seconds=${FUZZ_SECONDS:-30}; export CORVANE_LONG=1 ;;
  *)
    sed -n '2,8s/^# \{0,1\}//p' "$0" >&2
    exit 2
    ;;
esac
step() { printf '\n== %s (after %s s)\n' "$*" "$SECONDS"; }

scripts/setup.sh ${1:+"$1"}
jobs=$(nproc)

step "floors and formatting"
python3 scripts/check-floors.py
git ls-files '*.h' '*.cpp' | xargs -P "$jobs" -n 40 clang-format --dry-run -Werror

step "the core, on a machine that has no Qt"
cmake --preset core >/dev/null
if [ $long = ON ]; then
  cmake --build --preset core
  ctest --preset core -j "$jobs"
fi

step "build what people run"
cmake --preset release >/dev/null
cmake --build --preset release

step "build the instrumented tests and fuzzers"
cmake --preset checks -DCORVANE_LONG=$long >/dev/null
cmake --build --preset checks

step "the package, and a person's way on a screen"
ctest --preset release -j "$jobs" "${without[@]}"

step "all tests, instrumented"
ctest --preset checks -j $((jobs + 1)) "${without[@]}" # some wait

step "the fuzzers, $fuzz_seconds seconds each"
fuzz_one() {
  local name; name=$(basename "$1")
  local own=build/checks/fuzz/$name
  local begin=fuzz/corpus/${name#fuzz-} words=fuzz/dictionaries/${name#fuzz-}.dict
  local with=()
  mkdir -p "$own/corpus"
  [ -f "$words" ] && with+=("-dict=$words")
  with+=("$own/corpus")
  [ -d "$begin" ] && with+=("$begin")
  if ! "$1" -max_total_time="$fuzz_seconds" -timeout=10 -rss_limit_mb=2048 -verbosity=0 \
      -print_final_stats=0 -artifact_prefix="$own/" "${with[@]}" >"$own/log" 2>&1; then
    cat "$own/log"
    return 1
  fi
  echo "$name: nothing found"
}
export -f fuzz_one
export fuzz_seconds
find build/checks/bin -name 'fuzz-*' -type f -executable | sort |
  xargs -P "$jobs" -I{} bash -c 'fuzz_one {}'

if [ $long = OFF ]; then
  step "all is well; left out, since they take longer: the core's build without Qt, the benchmarks' compilation, the link in a real kernel, longer runs of what is random, undefined behaviour of the tests themselves, slow attacks on updates, long fuzzing (./test.sh --long)"
  exit
fi

step "build the benchmarks, and what the lab of the link needs"
cmake --build --preset release --target benchmarks usb-lab
cmake --build --preset checks --target make-corpus

step "the firmware kit on an emulated chip"
tests/firmware/run.sh build/release/bin

step "the link in a real kernel"
left_out=nothing
tests/usb-lab/run.sh build/release/bin || {
  [ $? = 77 ] || exit 1
  left_out="the link in a real kernel, which this machine can't fetch or start"
}

step "all is well; left out: $left_out"
