"""Forwarding stubs of the reference back-end.

    reference OUT.cpp LAPACK_TABLE

Each back-end symbol whose arguments are exactly those of a routine of the
ILP64 OpenBLAS (or of its test-matrix library) is a one-instruction stub that
jumps through a table; the table is filled when the back-end loads. Symbols
that need an adapter (complex-valued functions, routines OpenBLAS lacks) are
written by hand and left out here.
"""
from pathlib import Path

from .common import banner, table_rows, write_if_changed

# Function results that gfortran returns through a hidden address: the facade's
# contract differs from OpenBLAS's there, so these get adapters by hand.
ADAPTED_RESULTS = {"c", "z", "a"}
TEST_MATRIX = ("latm2", "latm3", "latmr")


def lapack_pairs(table):
    for _, f in table_rows(table):
        name, result = f[0], f[1]
        if result in ADAPTED_RESULTS:
            continue
        library = 1 if name[1:] in TEST_MATRIX else 0
        yield f"qnl_lapack_{name}", f"{name}_", library


def main(argv):
    out, lapack = argv
    pairs = sorted(lapack_pairs(lapack))
    asm = ["  .text\n"]
    data = ["  .data\n  .balign 8\n  .globl qnl_ref_targets\n  .hidden qnl_ref_targets\nqnl_ref_targets:\n"]
    for k, (sym, _, _) in enumerate(pairs):
        asm.append(f"  .globl {sym}\n  .type {sym},@function\n{sym}:\n  jmp *qnl_ref_targets+{8 * k}(%rip)\n"
                   f"  .size {sym},.-{sym}\n"
                   f"qnl_ref_missing_{k}:\n  movl ${k}, %edi\n  jmp qnl_ref_missing\n")
        data.append(f"  .quad qnl_ref_missing_{k}\n")
    names = "".join(f"    {{\"{target}\", {lib}}},\n" for _, target, lib in pairs)
    text = (banner(lapack) + '#include "forward.h"\n\n'
            f"namespace qnl_ref {{\nconst Target kTargets[] = {{\n{names}}};\n"
            f"const int kTargetCount = {len(pairs)};\n}}  // namespace qnl_ref\n\n"
            'asm(R"(\n' + "".join(asm) + "".join(data) + '  .text\n)");\n')
    write_if_changed(out, text)
