#!/usr/bin/env bash
# Builds everything and runs all tests: the normal build with the real programs
# of tests/programs (sampled when CI=true) and the install check, then ASan+UBSan
# and TSan builds of just the tests their suites run. Prints the time of each stage.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
jobs=$(nproc)
# A compiler cache where one is installed; CI keeps it in the build tree.
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER:-ccache}
  export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-ccache}
  if [[ ${CI:-} == true ]]; then export CCACHE_DIR=${CCACHE_DIR:-$PWD/build/.ccache}; fi
fi
begin=$SECONDS
# stage NAME COMMAND...: runs the command and prints its wall and processor time
# (on a shared machine the processor time is the steadier measure).
stage() {
  local TIMEFORMAT="== $1: %0R s wall, %0U s user, %0S s sys"
  shift
  time "$@"
  echo "== total so far: $((SECONDS - begin)) s" >&2
}
# run BUILD_DIR "TARGETS" "CTEST ARGS" [cmake args...]
run() {
  local dir=$1 targets=$2 filter=$3
  shift 3
  cmake -S . -B "$dir" -G Ninja -DQNL_WERROR=ON "$@" >/dev/null
  # shellcheck disable=SC2086
  stage "$dir build" cmake --build "$dir" ${targets:+--target $targets}
  # shellcheck disable=SC2086
  stage "$dir tests" ctest --test-dir "$dir" -j"$jobs" --output-on-failure $filter
}
run build "" "" -DQNL_TESTS=ON -DQNL_BENCH=ON
# Real programs on libqnl_rt.so against the same programs on Debian's OpenBLAS.
stage "real programs" tests/programs/run_programs.py build
# The installed tree, used by a separate project through find_package and pkg-config.
stage "install and consumer" tests/consumer/run.sh build
# The tests on the probe back-end (label probe); the reference back-end opens
# OpenBLAS with RTLD_DEEPBIND, which ASan does not support.
run build-asan qnl_probe_tests "-L probe" -DQNL_SANITIZE=address -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
run build-tsan "test_runtime_facade test_runtime_internal" "-R Binding|Verbose|ServiceEntries" \
  -DQNL_SANITIZE=thread -DQNL_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
