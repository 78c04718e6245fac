#!/bin/sh
# Added cost of libqnl_rt.so on its reference back-end against direct calls of
# the same OpenBLAS build, deterministic: instructions per call from callgrind
# ((Ir of 2N calls - Ir of N calls) / N), then process start to first result
# (median of K starts, pinned, against a program linked to OpenBLAS directly).
#   bench/cost/run.sh [BUILD_DIR] [N] [K]
set -eu
B=${1:-build}
N=${2:-20000}
K=${3:-101}
cmake --build "$B" --target call_cost first_ddot_facade first_ddot_direct startup qnl_reference >/dev/null
BIN=$B/bin
ir() {
  out=$(mktemp)
  valgrind --tool=callgrind --callgrind-out-file="$out" "$@" >/dev/null 2>&1
  sed -n 's/^totals: *\([0-9]*\).*/\1/p;s/^summary: *\([0-9]*\).*/\1/p' "$out" | head -1
  rm -f "$out"
}
per_call() { echo $(( ($(ir "$BIN/call_cost" "$1" "$2" $((2 * N))) - $(ir "$BIN/call_cost" "$1" "$2" "$N")) / N )); }
# Every road must compute the same thing before its instructions are counted.
for c in ddot dgemm cblas_ddot cblas_dgemm dpotrf; do
  want=$("$BIN/call_cost" direct64 $c 3)
  for r in facade-lp64 facade-ilp64 direct32; do
    got=$("$BIN/call_cost" $r $c 3)
    [ "$got" = "$want" ] || { echo "$r $c gives $got, direct64 $want" >&2; exit 1; }
  done
done
echo "Instructions per call (Ir, callgrind, N=$N): the facade, the same ILP64 OpenBLAS called directly,"
echo "and for LP64 callers Debian's LP64 OpenBLAS; 'added' is the facade's count minus the direct one."
echo
printf '| %-30s | %-6s | %9s | %10s | %7s | %10s | %7s |\n' call layer facade "direct64" added "direct32" added
echo '|---|---|---|---|---|---|---|'
for c in ddot dgemm cblas_ddot cblas_dgemm dpotrf; do
  d64=$(per_call direct64 $c)
  d32=$(per_call direct32 $c)
  case $c in
    ddot) label='`ddot_` n=1' ;;
    dgemm) label='`dgemm_` 2x2x2' ;;
    cblas_ddot) label='`cblas_ddot` n=1' ;;
    cblas_dgemm) label='`cblas_dgemm` 2x2x2 row-major' ;;
    dpotrf) label='`dpotrf_` n=1 (LAPACK frame)' ;;
  esac
  for l in lp64 ilp64; do
    f=$(per_call facade-$l $c)
    if [ $l = lp64 ]; then
      printf '| %-30s | %-6s | %9s | %10s | %+7d | %10s | %+7d |\n' "$label" LP64 $f $d64 $((f - d64)) $d32 $((f - d32))
    else
      printf '| %-30s | %-6s | %9s | %10s | %+7d | %10s | %7s |\n' "$label" ILP64 $f $d64 $((f - d64)) - -
    fi
  done
done
echo
# Start-up: the whole process under callgrind (deterministic), then wall time.
export QNL_THREADING_LAYER=sequential
fi=$(ir "$BIN/first_ddot_facade")
di=$(ir "$BIN/first_ddot_direct")
echo "start to first ddot, instructions: facade $fi, direct $di, ratio $(echo "scale=2; $fi / $di" | bc)"
cpu=$(taskset -pc $$ | sed 's/.*: *\([0-9]*\).*/\1/')
taskset -c "$cpu" "$BIN/startup" "$BIN/first_ddot_facade" "$BIN/first_ddot_direct" "$K"
# What the wall time of a start mostly pays for beyond instructions: minor page
# faults, of which the relocations the dynamic linker writes into the library's
# pages are a share (median of 9 starts each).
faults() { for i in 1 2 3 4 5 6 7 8 9; do /usr/bin/time -f %R "$@" 2>&1 >/dev/null | tail -1; done | sort -n | sed -n 5p; }
relocs=$(readelf -rW "$B/lib/libqnl_rt.so" | sed -n '/relr/d;s/.* contains \([0-9]*\) entries.*/\1/p;s/^ *\([0-9]*\) offsets$/\1/p' |
  awk '{ s += $1 } END { print s }')
echo "page faults from start to first ddot: facade $(faults "$BIN/first_ddot_facade"), direct $(faults "$BIN/first_ddot_direct");" \
  "relocations of libqnl_rt.so at load: $relocs"
