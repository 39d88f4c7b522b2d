#!/usr/bin/env bash
# Installs what the build, the tests and the benchmarks need, only where it is missing.
# Debian/Ubuntu; run as root or with sudo available.
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config libgtest-dev libbenchmark-dev python3 librsvg2-bin
          libcli11-dev nlohmann-json3-dev libssl-dev valgrind)
# The fuzzers, the browser explorer and its tests.
packages+=(clang-14 libfuzzer-14-dev emscripten chromium)
# The Python package (built offline into a venv of Debian's python3), its tests and examples.
packages+=(python3-dev python3-venv python3-setuptools python3-wheel python3-pybind11 python3-numpy
           python3-pytest python3-matplotlib python3-distributed)
# Training datasets (python -m quil_linear.dataset): HDF5 and zarr.
packages+=(python3-h5py python3-zarr)
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
# The browser tests run under Node.js and install their npm packages; a Node.js from elsewhere
# than Debian (with its own npm) will do.
command -v npm >/dev/null || missing+=(nodejs npm)
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
as_root=()
[ "$(id -u)" -ne 0 ] && as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
