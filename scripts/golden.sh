#!/usr/bin/env bash
# The golden record of every hand's behaviour (tests/golden/record.txt and samples.digest).
#   bash scripts/golden.sh check        check every interface against the record
#   bash scripts/golden.sh regenerate   remake the record from today's C exports
# Regenerate only after a deliberate change to a hand's rules that a reviewer has looked at; the
# diff of record.txt then shows which hands and blocks changed.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target golden golden_test
case "${1:-check}" in
  regenerate) build/tests/golden regenerate ;;
  check) ctest --test-dir build -R 'Golden|golden' --output-on-failure ;;
  *) echo "usage: $0 check|regenerate" >&2; exit 2 ;;
esac
