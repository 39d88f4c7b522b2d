#!/usr/bin/env bash
# Builds and runs every test: the unit tests (GoogleTest via CTest), the hand API against the C
# exports, the golden record, the C host test that loads the shared library with dlopen, the
# examples, the exported-symbol check and the install/find_package check, first in the release
# build, then the same suite under AddressSanitizer and UndefinedBehaviorSanitizer, then the
# concurrency tests under ThreadSanitizer, the Python package, the hand explorer in headless
# Chromium, and the fuzzers for a bounded time.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

jobs=$(nproc 2>/dev/null || echo 2)

echo "== release build"
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$jobs"
ctest --test-dir build --output-on-failure -j "$jobs"

echo "== Python package against the release build"
bash scripts/test_python.sh build

echo "== AddressSanitizer + UndefinedBehaviorSanitizer build"
cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUIL_LINEAR_SANITIZE=ON \
  -DQUIL_LINEAR_BUILD_BENCH=OFF >/dev/null
cmake --build build-sanitize -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build-sanitize --output-on-failure -j "$jobs"

echo "== ThreadSanitizer build (concurrency tests)"
cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUIL_LINEAR_TSAN=ON \
  -DQUIL_LINEAR_BUILD_BENCH=OFF -DQUIL_LINEAR_BUILD_TOOLS=OFF >/dev/null
cmake --build build-tsan -j "$jobs" --target hand_threads_test 02_two_gloves
TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build-tsan -L concurrency --output-on-failure -j "$jobs"

echo "== hand explorer in the browser"
bash scripts/test_web.sh

echo "== fuzzing (each target about a minute; FUZZ_SECONDS to change)"
bash scripts/fuzz.sh "${FUZZ_SECONDS:-60}"
