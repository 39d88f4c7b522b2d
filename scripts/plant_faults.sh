#!/usr/bin/env bash
# Plants single-token faults in the hands and the shared mechanics and counts how many the tests
# catch (see scripts/plant_faults.py). Slow: a rebuild per fault, so not part of scripts/test.sh.
#   bash scripts/plant_faults.sh [--count 100] [--seed 1] [--timeout 120] [--jobs 1]
set -euo pipefail
cd "$(dirname "$0")/.."
exec nice -n 10 /usr/bin/python3 scripts/plant_faults.py "$@"
