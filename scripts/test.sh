#!/usr/bin/env bash
# Builds everything and runs all tests: the normal build, then ASan+UBSan and
# TSan builds of the runtime tests.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
jobs=$(nproc)
run() {  # run BUILD_DIR [cmake args...]
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
  cmake --build "$dir"
  (cd "$dir" && ctest -j"$jobs" --output-on-failure "${CTEST_ARGS[@]}")
}
CTEST_ARGS=()
run build
# The sanitizer builds rerun the tests on the probe back-end; the reference
# back-end opens OpenBLAS with RTLD_DEEPBIND, which ASan does not support.
CTEST_ARGS=(-E "Backend|ReferenceServices|ApplicationXerbla")
run build-asan -DQNL_SANITIZE=address -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
CTEST_ARGS=(-R "Binding|Verbose|ServiceEntries")
run build-tsan -DQNL_SANITIZE=thread -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
