#!/usr/bin/env bash
# Processor time of the window with the simulator on show and six lights over a large background:
# changing at 40 frames a second (aim: below 15 percent of a core), and steady (aim: below 1).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bin=$root/build/release/bin
seconds=${1:-20}
export QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES="*=false"
"$bin/simulating_benchmark" changing "$seconds"
"$bin/simulating_benchmark" steady "$seconds"
