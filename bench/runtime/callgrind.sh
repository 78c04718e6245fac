#!/usr/bin/env bash
# Instructions per call of a bound thin entry and of the direct call, from
# callgrind totals of N and 2N calls: (Ir(2N) - Ir(N)) / N is free of start-up.
set -euo pipefail
exe=${1:-build/bin/thin_entry}
n=${2:-200000}
ir() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null "$exe" "$1" "$2" 2>&1 |
    sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}
per_call() { echo $(( ($(ir $((2 * n)) "$1") - $(ir "$n" "$1")) / n )); }
d=$(per_call direct)
f=$(per_call facade)
r=$(per_call facade_ref)
echo "instructions per call: direct $d; by value $f (added $((f - d))); by reference $r (added $((r - d)))"
