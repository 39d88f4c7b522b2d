#!/usr/bin/env bash
# Retargets the sample glove session (data/sample_session.csv) onto one hand, writing into out/:
#   sample_session.<MODEL>.csv        the joint targets, with the session's time column
#   sample_session.<MODEL>.png        the plot (.svg when rsvg-convert is not installed)
#   sample_session.<MODEL>.meta.json  the record of the run: hand, versions, slot roles, rows
#
#   tools/retarget_sample.sh [--no-build] [MODEL [TOOL]]
#       MODEL defaults to INSPIRE_ROBOTS_RH56F1_E4 ('quil-retarget list' shows them all);
#       TOOL to build/tools/quil-retarget, which is built first unless --no-build is given.
set -euo pipefail
cd "$(dirname "$0")/.."
build=1
if [ "${1:-}" = "--no-build" ]; then
  build=0
  shift
fi
model="${1:-INSPIRE_ROBOTS_RH56F1_E4}"
tool="${2:-build/tools/quil-retarget}"

if [ "$build" = 1 ]; then
  cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target quil-retarget
fi

mkdir -p out
base="out/sample_session.$model"
plot="$base.svg"
command -v rsvg-convert >/dev/null && plot="$base.png"
"$tool" map --quiet --model "$model" data/sample_session.csv -o "$base.csv" --plot "$plot" --meta "$base.meta.json"
echo "wrote $base.csv ($(($(wc -l <"$base.csv") - 1)) rows of joint targets), $plot and $base.meta.json"
