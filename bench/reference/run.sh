#!/bin/sh
# Facade against direct OpenBLAS calls, LP64 and ILP64 callers, from one build.
#   bench/reference/run.sh BUILD_DIR [N]
set -eu
BIN=${1:-build}/bin/facade_vs_openblas
for layer in lp64 ilp64; do
  "$BIN" $layer ${2:-2000}
  echo
done
