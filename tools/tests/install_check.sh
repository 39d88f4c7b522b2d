#!/usr/bin/env bash
# cmake --install puts quil-retarget in bin/, and the installed tool runs on its own.
set -euo pipefail
build_dir=$1
source_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null
tool="$scratch/prefix/bin/quil-retarget"
"$tool" list | grep -q '^QUIL_linear_AA '
"$tool" map --model QUIL_linear_AA "$source_dir/data/sample_session.csv" -o "$scratch/out.csv"
[ "$(wc -l <"$scratch/out.csv")" -eq 2001 ]
echo "installed quil-retarget listed the hands and mapped the sample session"
