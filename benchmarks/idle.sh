#!/usr/bin/env bash
# Processor time of an idle corvane over 20 s, without a link and with one, as percent of a core.
# Aim: below 0.5.
set -euo pipefail
bin=$(cd "$(dirname "${BASH_SOURCE[0]}")/../build/release/bin" && pwd)
seconds=${1:-20}
CORVANE_BENCH_DIR=$(mktemp -d)
export CORVANE_BENCH_DIR QT_QPA_PLATFORM=offscreen
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$CORVANE_BENCH_DIR"' EXIT
ticks() { awk '{print $14 + $15}' "/proc/$1/stat"; }
measure() {
  "$bin/corvane" & local pid=$!
  sleep 3
  local before after
  before=$(ticks $pid); sleep "$seconds"; after=$(ticks $pid)
  kill $pid; wait $pid 2>/dev/null || true
  awk -v t=$((after - before)) -v hz="$(getconf CLK_TCK)" -v s="$seconds" -v what="$1" \
    'BEGIN { printf "%s: %.2f percent of a core\n", what, 100 * t / hz / s }'
}
measure "no link"
"$bin/corvane-bench" lumora-1.2 &
sleep 0.5
measure "with a link"
