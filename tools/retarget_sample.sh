#!/usr/bin/env bash
# Builds the library and quil-retarget, then retargets the sample glove session
# (data/sample_session.csv) onto one hand, writing out/sample_session.<MODEL>.csv and .svg
# (and a .png of the chart when rsvg-convert is installed).
#
#   tools/retarget_sample.sh [MODEL]        MODEL defaults to QUIL_linear_AA;
#                                           'build/tools/quil-retarget list' shows them all
set -euo pipefail
cd "$(dirname "$0")/.."
model="${1:-QUIL_linear_AA}"

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target quil-retarget

mkdir -p out
csv="out/sample_session.$model.csv"
svg="out/sample_session.$model.svg"
build/tools/quil-retarget map --model "$model" data/sample_session.csv -o "$csv" --plot "$svg"
echo "wrote $csv ($(($(wc -l <"$csv") - 1)) rows of joint targets) and $svg"
if command -v rsvg-convert >/dev/null; then
  rsvg-convert "$svg" -o "${svg%.svg}.png"
  echo "wrote ${svg%.svg}.png"
fi
