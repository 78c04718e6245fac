#!/bin/sh
# Overhead of bound quiet BLAS entries against the same probe back-end symbol called
# directly: time ratio from one run, and instructions per call from callgrind
# (Ir of 2N calls minus Ir of N calls, over N).
#   bench/blas/run.sh BUILD_DIR
set -eu
BIN=${1:-build}/bin/blas_overhead
N=${N:-20000}
T=${T:-2000000}
ir() {
  out=$(mktemp)
  valgrind --tool=callgrind --callgrind-out-file="$out" "$BIN" "$@" >/dev/null 2>&1
  sed -n 's/^totals: *\([0-9]*\).*/\1/p;s/^summary: *\([0-9]*\).*/\1/p' "$out" | head -1
  rm -f "$out"
}
printf '%-6s %-6s %10s %10s %7s %12s %12s %8s\n' routine layer facade_ns direct_ns ratio facade_Ir direct_Ir extra_Ir
for r in ddot dgemm; do
  for l in ilp64 lp64; do
    f=$("$BIN" $r $l facade $T | cut -d' ' -f1)
    d=$("$BIN" $r $l backend $T | cut -d' ' -f1)
    fi=$(( ($(ir $r $l facade $((2 * N))) - $(ir $r $l facade $N)) / N ))
    di=$(( ($(ir $r $l backend $((2 * N))) - $(ir $r $l backend $N)) / N ))
    printf '%-6s %-6s %10s %10s %7.2f %12s %12s %8s\n' $r $l "$f" "$d" "$(echo "$f / $d" | bc -l)" $fi $di $((fi - di))
  done
done
