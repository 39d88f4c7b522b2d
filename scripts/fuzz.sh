#!/usr/bin/env bash
# Builds the libFuzzer targets with clang-14 under AddressSanitizer and UndefinedBehaviorSanitizer
# and runs each for a bounded time, two at a time (one per core).
#   bash scripts/fuzz.sh [SECONDS] [TARGET ...]    SECONDS per target (default 60); all targets
#                                                  when none is named
# Each target starts from its committed seeds (tests/fuzz/corpus/TARGET) and from what earlier
# runs on this machine found (build-fuzz/corpus/TARGET). A crash, a leak or undefined behaviour
# fails the run and leaves the input that caused it in build-fuzz/artifacts/; replay it with
#   build-fuzz/tests/fuzz/TARGET build-fuzz/artifacts/TARGET-crash-...
# The figures of the run go to build-fuzz/summary.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

seconds=${1:-60}
shift || true
all=(fuzz_state fuzz_hand_calls fuzz_csv fuzz_f64 fuzz_npy)
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all[@]}")

CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQUIL_LINEAR_FUZZ=ON -DQUIL_LINEAR_BUILD_TOOLS=ON -DQUIL_LINEAR_BUILD_TESTS=OFF -DQUIL_LINEAR_BUILD_BENCH=OFF >/dev/null
cmake --build build-fuzz -j "$(nproc 2>/dev/null || echo 2)" --target "${targets[@]}"

mkdir -p build-fuzz/artifacts build-fuzz/logs
run_one() {
  local t=$1
  mkdir -p "build-fuzz/corpus/$t"
  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "build-fuzz/tests/fuzz/$t" "build-fuzz/corpus/$t" "tests/fuzz/corpus/$t" \
    -max_total_time="$seconds" -artifact_prefix="build-fuzz/artifacts/$t-" -print_final_stats=1 \
    >"build-fuzz/logs/$t.log" 2>&1
}

failed=()
pids=()
names=()
for t in "${targets[@]}"; do
  run_one "$t" &
  pids+=($!)
  names+=("$t")
  if [ ${#pids[@]} -ge 2 ]; then
    wait "${pids[0]}" || failed+=("${names[0]}")
    pids=("${pids[@]:1}")
    names=("${names[@]:1}")
  fi
done
for i in "${!pids[@]}"; do
  wait "${pids[$i]}" || failed+=("${names[$i]}")
done

{
  printf '%-22s %14s %8s %8s\n' target executions seconds crashes
  for t in "${targets[@]}"; do
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "build-fuzz/logs/$t.log" | tail -n 1)
    crashes=0
    for f in "${failed[@]}"; do [ "$f" = "$t" ] && crashes=1; done
    printf '%-22s %14s %8s %8s\n' "$t" "${runs:-?}" "$seconds" "$crashes"
  done
} | tee build-fuzz/summary.txt

if [ ${#failed[@]} -gt 0 ]; then
  for t in "${failed[@]}"; do
    echo "== $t found a problem:"
    grep -E 'ERROR|runtime error|SUMMARY|Test unit written' "build-fuzz/logs/$t.log" | head -n 20
  done
  exit 1
fi
