#!/usr/bin/env bash
# The slot facts the library ships (models/slot_facts_measured.inc): what every slot of every
# hand does over a documented sweep of readings (tests/facts/sweep.h), measured from the hands.
#   bash scripts/facts.sh regenerate   after a reviewed change to a hand's rules or slot roles:
#                                      remeasures, rebuilds, and remakes the pages in docs/hands/
# The tests (slot_facts_test) fail while the shipped facts differ from what the hands do.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "${1:-}" = regenerate ] || { echo "usage: bash scripts/facts.sh regenerate" >&2; exit 2; }
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build --target facts
./build/tests/facts models/slot_facts_measured.inc
cmake --build build
# The pages are written from the package, so it is reinstalled with the new facts first.
bash scripts/test_python.sh build --install-only
build/python-venv/bin/python scripts/hand_pages.py
git --no-pager diff --stat -- models/slot_facts_measured.inc docs/ || true
