#!/usr/bin/env bash
# The main job: build the facade and the reference back-end, then run the
# example program through libqnl_rt.so, quiet and with QNL_VERBOSE.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -G Ninja -DQNL_TESTS=OFF -DQNL_BENCH=OFF >/dev/null
cmake --build build
echo "== services_demo (quiet)"
build/bin/services_demo
echo "== services_demo (QNL_THREADING_LAYER=sequential)"
QNL_THREADING_LAYER=sequential build/bin/services_demo
