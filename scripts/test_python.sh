#!/usr/bin/env bash
# The Python package's tests: a venv of Debian's Python (with its NumPy, pybind11, pytest,
# matplotlib and dask from apt, see scripts/bootstrap.sh) under the build directory, the
# package installed into it offline, then pytest, which also compares every hand with the C
# exports of the release build's libquil_linear.so and runs the examples.
#   bash scripts/test_python.sh [BUILD_DIR]     BUILD_DIR defaults to build (made by scripts/test.sh)
#   bash scripts/test_python.sh BUILD_DIR --install-only   the venv and the package, no tests
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
[ -f "$build/libquil_linear.so" ] || { echo "$build/libquil_linear.so is missing: build the library first" >&2; exit 1; }

venv=$build/python-venv
# Debian's interpreter, whatever else comes first on PATH: the apt packages are installed for it.
[ -x "$venv/bin/python" ] || /usr/bin/python3 -m venv --system-site-packages "$venv"
"$venv/bin/python" -m pip install --quiet --no-build-isolation --no-index --disable-pip-version-check \
  ./python
[ "${2:-}" = --install-only ] && exit 0
QUIL_LINEAR_LIB="$build/libquil_linear.so" MPLBACKEND=Agg "$venv/bin/python" -m pytest -q python/tests
