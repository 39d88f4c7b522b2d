#!/usr/bin/env bash
# Installs the built library into a scratch prefix and builds hosts against it: through CMake's
# find_package and through pkg-config (with the run-time path the README gives), and runs them
# with no LD_LIBRARY_PATH, as a user would. Also configures the project as the README's install
# line does on a machine without GoogleTest.
set -euo pipefail
# A program's output is matched only after it has all been read: `grep -q` stops at the first
# match, and the writer then dies of a closed pipe, which pipefail turns into a failure.
contains() { grep -e "$1" >/dev/null; }
build_dir=$1
source_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unset LD_LIBRARY_PATH

cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null
libdir=$(find "$scratch/prefix" -name 'libquil_linear.so' -printf '%h\n' | head -n 1)

cmake -S "$source_dir/examples/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
"$scratch/consumer/host_example" | contains 'index pinch:'

export PKG_CONFIG_PATH=$libdir/pkgconfig
cc "$source_dir/examples/04_resume.c" $(pkg-config --cflags --libs quil_linear) \
  -Wl,-rpath,"$(pkg-config --variable=libdir quil_linear)" -lm -o "$scratch/pc_host"
"$scratch/pc_host" "$scratch/hand.state" | contains 'identical'
c++ -std=c++17 "$source_dir/examples/02_two_gloves.cpp" $(pkg-config --cflags --libs quil_linear) \
  -Wl,-rpath,"$(pkg-config --variable=libdir quil_linear)" -pthread -o "$scratch/pc_host_cpp"
"$scratch/pc_host_cpp" | contains 'held'

# The installed command-line tool finds the installed library through its run path (it is
# built only where CLI11 and nlohmann-json are installed).
tool="$scratch/prefix/bin/quil-retarget"
if [ -x "$tool" ]; then
  env -u LD_LIBRARY_PATH "$tool" list | contains '^QUIL_linear_AA '
  env -u LD_LIBRARY_PATH "$tool" describe --json ruiyan_ry_h15 | contains '"name": "RUIYAN_RY_H15"'
  env -u LD_LIBRARY_PATH "$tool" map --model QUIL_linear_AA "$source_dir/data/sample_session.csv" -o "$scratch/out.csv"
  [ "$(wc -l <"$scratch/out.csv")" -eq 2001 ]
  env -u LD_LIBRARY_PATH "$tool" map --model QUIL_linear_AA "$source_dir/data/sample_session.csv" -o "$scratch/out.npy"
  [ "$(stat -c %s "$scratch/out.npy")" -eq $((128 + 2000 * 25 * 8)) ]
fi

# Without GoogleTest the project still configures, with no tests.
cmake -S "$source_dir" -B "$scratch/no-gtest" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON >"$scratch/no-gtest.log"
grep -q 'GoogleTest not found: tests are not built' "$scratch/no-gtest.log"
echo "find_package and pkg-config hosts and the installed quil-retarget ran against $scratch/prefix"
