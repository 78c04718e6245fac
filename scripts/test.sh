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
# The sanitizer builds rerun the tests that exercise the runtime's own code.
CTEST_ARGS=(-R "Binding|ExitHandler|Setter|Layer|Filtered|Search|CoreRoads|BuiltIn|Localised|Verbose|ServiceEntries")
run build-asan -DQNL_SANITIZE=address -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
CTEST_ARGS=(-R "Binding|Verbose|ServiceEntries")
run build-tsan -DQNL_SANITIZE=thread -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
