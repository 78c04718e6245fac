#!/usr/bin/env bash
# The main job: build the facade and the reference back-end, then run the
# examples through libqnl_rt.so: quiet, and with QNL_VERBOSE=1, which prints
# one trace line per BLAS or LAPACK call.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -G Ninja -DQNL_TESTS=OFF -DQNL_BENCH=OFF >/dev/null
cmake --build build
echo "== services_demo (quiet)"
build/bin/services_demo
echo "== services_demo (QNL_THREADING_LAYER=sequential)"
QNL_THREADING_LAYER=sequential build/bin/services_demo
for example in linear_algebra_c linear_algebra_f lapacke_rowmajor; do
  echo "== $example (quiet)"
  build/bin/$example
  echo "== $example (QNL_VERBOSE=1)"
  QNL_VERBOSE=1 build/bin/$example
done
# Vector math, transforms and random numbers. Only quiet: with tracing on, the vector-math
# kernel libraries are looked for in the executable's folder, not beside the
# facade, and build/bin holds none.
for example in signal random_numbers; do
  echo "== $example (quiet)"
  build/bin/$example
done
