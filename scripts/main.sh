#!/usr/bin/env bash
# The main job: set up, build everything, and retarget the sample glove session
# (data/sample_session.csv: open hand, slow fist, index pinch, middle pinch, open) onto one hand.
# Writes out/sample_session.<MODEL>.csv, .png (the plot) and .meta.json (the record of the run).
#   bash scripts/main.sh [MODEL]     MODEL defaults to INSPIRE_ROBOTS_RH56F1_E4
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)"
bash tools/retarget_sample.sh --no-build "${1:-INSPIRE_ROBOTS_RH56F1_E4}"
