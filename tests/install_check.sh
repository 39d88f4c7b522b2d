#!/usr/bin/env bash
# Installs the built library into a scratch prefix and builds the example host against it twice:
# through CMake's find_package and through pkg-config. Both hosts must run.
set -euo pipefail
build_dir=$1
source_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null
libdir=$(find "$scratch/prefix" -name 'libquil_linear.so' -printf '%h\n' | head -n 1)

cmake -S "$source_dir/examples/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
LD_LIBRARY_PATH=$libdir "$scratch/consumer/host_example" | grep -q 'QUIL_linear_AA'

export PKG_CONFIG_PATH=$libdir/pkgconfig
cc "$source_dir/examples/host_example.c" $(pkg-config --cflags --libs quil_linear) -o "$scratch/pc_host"
LD_LIBRARY_PATH=$libdir "$scratch/pc_host" | grep -q 'ROBOTERA_XHAND1'

# The installed command-line tool finds the installed library through its run path (it is
# built only where CLI11 and nlohmann-json are installed).
tool="$scratch/prefix/bin/quil-retarget"
if [ -x "$tool" ]; then
  env -u LD_LIBRARY_PATH "$tool" list | grep -q '^QUIL_linear_AA '
  env -u LD_LIBRARY_PATH "$tool" describe --json ruiyan_ry_h15 | grep -q '"name": "RUIYAN_RY_H15"'
  env -u LD_LIBRARY_PATH "$tool" map --model QUIL_linear_AA "$source_dir/data/sample_session.csv" -o "$scratch/out.csv"
  [ "$(wc -l <"$scratch/out.csv")" -eq 2001 ]
  env -u LD_LIBRARY_PATH "$tool" map --model QUIL_linear_AA "$source_dir/data/sample_session.csv" -o "$scratch/out.npy"
  [ "$(stat -c %s "$scratch/out.npy")" -eq $((128 + 2000 * 25 * 8)) ]
fi
echo "find_package and pkg-config hosts and the installed quil-retarget ran against $scratch/prefix"
