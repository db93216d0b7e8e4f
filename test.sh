#!/usr/bin/env bash
# Checks everything: the floors of the house, formatting, the build with warnings as errors, all
# tests, the tests again under the sanitizers, and a short run of each fuzzer.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$root"
fuzz_seconds=${FUZZ_SECONDS:-20}

scripts/setup.sh
python3 scripts/check-floors.py
git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror

export QT_QPA_PLATFORM=offscreen
# The builds differ by so little that most of what one has compiled will do for another.
export CCACHE_NOHASHDIR=1
step() { printf '\n== %s\n' "$*"; }

step "build and test"
cmake --preset debug >/dev/null
cmake --build --preset debug
ctest --preset debug

step "the programs for the vendor RQ"
cmake --preset debug-rq >/dev/null
cmake --build --preset debug-rq
ctest --preset debug-rq

step "the tests again under the address and undefined-behaviour sanitizers"
cmake --preset sanitize >/dev/null
cmake --build --preset sanitize
# What the desktop libraries keep to themselves until the end is not ours to free.
export LSAN_OPTIONS=suppressions=$root/scripts/leaks.txt:print_suppressions=0
ctest --preset sanitize

step "the fuzzers, $fuzz_seconds seconds each"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
fuzz_one() {
  local name; name=$(basename "$1")
  local corpus=build/fuzz/corpus/$name
  mkdir -p "$corpus"
  if ! "$1" -max_total_time="$fuzz_seconds" -timeout=10 -rss_limit_mb=2048 -verbosity=0 \
      -print_final_stats=0 -artifact_prefix="build/fuzz/$name-" "$corpus" >"build/fuzz/$name.log" 2>&1; then
    cat "build/fuzz/$name.log"
    return 1
  fi
  echo "$name: nothing found"
}
export -f fuzz_one
export fuzz_seconds
find build/fuzz/bin -name 'fuzz-*' -type f -executable | sort | xargs -P 2 -I{} bash -c 'fuzz_one {}'

step "all is well"
