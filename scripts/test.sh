#!/usr/bin/env bash
# Builds everything and runs all tests: the normal build with the real programs
# of tests/programs, then an ASan+UBSan build of the tests on the probe
# back-end, and a TSan build of the runtime's binding and tracing tests.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
jobs=$(nproc)
# run BUILD_DIR "TARGETS" "CTEST ARGS" [cmake args...]
run() {
  local dir=$1 targets=$2 filter=$3
  shift 3
  cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
  # shellcheck disable=SC2086
  cmake --build "$dir" ${targets:+--target $targets}
  # shellcheck disable=SC2086
  (cd "$dir" && ctest -j"$jobs" --output-on-failure $filter)
}
run build "" "" -DQNL_TESTS=ON -DQNL_BENCH=ON
# Real programs on libqnl_rt.so against the same programs on Debian's OpenBLAS.
start=$SECONDS
tests/programs/run_programs.py build
echo "real programs: $((SECONDS - start)) s"
# The reference back-end opens OpenBLAS with RTLD_DEEPBIND, which ASan does not support.
run build-asan "" "-E Backend|ReferenceServices|ApplicationXerbla|VmlAccuracy|VmlErrors" \
  -DQNL_SANITIZE=address -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
run build-tsan "test_runtime_facade test_runtime_internal" "-R Binding|Verbose|ServiceEntries" \
  -DQNL_SANITIZE=thread -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
