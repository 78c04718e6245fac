"""Forwarding stubs of the reference back-end.

    reference OUT.cpp BLAS_TABLE LAPACK_TABLE LAPACK_EXT HANDWRITTEN LIBRARY...

Every back-end symbol that the facade's BLAS and LAPACK entries bind gets a
stub here when one of the computational LIBRARYs (the ILP64 OpenBLAS, then its
test-matrix library, in the order of qnl_ref::Library) exports the routine as
`<name>_`:

- an indirect function (IFUNC) where the arguments are exactly those of the
  library's routine: its resolver (qnl_ref_resolve, run when the facade looks
  the symbol up) returns the routine's own address, so the facade's slot leads
  straight into the library and nothing is looked up before it is needed;
- an adapter for complex-valued functions: the facade hands a result address
  first, while the gfortran ABI of OpenBLAS returns the value in registers.

The twins (`qnl_blas_<name>_direct`, `qnl_lapack_ao_<name>`) forward to the
same routine; when the library lacks it but the plain symbol is written by
hand in this back-end, the twin forwards to that symbol instead. Symbols listed
in HANDWRITTEN (one per line) are implemented in the back-end's own sources and
never get a stub; neither does a routine that no library exports.

With --missing, prints the back-end symbols left without any implementation
instead of writing OUT.cpp.
"""
import subprocess
from pathlib import Path

from . import blas, lapack
from .common import banner, write_if_changed

SELF = "self"  # a twin forwarding to a hand-written symbol of the back-end itself
# The complex result types of the tables, as the adapters spell them.
COMPLEX = {"qnl::blas::cfloat": "std::complex<float>", "qnl::blas::cdouble": "std::complex<double>",
           "std::complex<float>": "std::complex<float>", "std::complex<double>": "std::complex<double>"}


def exported(library):
    """Names of the functions a shared library defines in its dynamic symbol table."""
    out = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True)
    return {f[2] for f in (line.split() for line in out.stdout.splitlines()) if len(f) == 3 and f[1] in "TWi"}


def handwritten_names(path):
    names = set()
    for line in Path(path).read_text().splitlines():
        line = line.split("#", 1)[0].strip()
        if line:
            names.add(line)
    return names


def backend_symbols(blas_table, lapack_table, lapack_ext):
    """The back-end symbols that the facade's BLAS and LAPACK entries bind."""
    return blas.family([blas_table]).backends + lapack.family([lapack_table, lapack_ext]).backends


def plan(argv):
    blas_table, lapack_table, lapack_ext, handwritten, *libraries = argv
    hand = handwritten_names(handwritten)
    exports = [exported(lib) for lib in libraries]
    stubs, missing = [], []
    for b in backend_symbols(blas_table, lapack_table, lapack_ext):
        if b.symbol in hand:
            continue
        target = f"{b.routine}_"
        library = next((k for k, names in enumerate(exports) if target in names), None)
        if library is None and b.plain in hand:
            target, library = b.plain, SELF
        if library is None:
            missing.append(b.symbol)
            continue
        stubs.append((b.symbol, target, library, b.complex_result, b.params))
    return sorted(stubs), sorted(missing), libraries


def adapter(k, sym, cplx, params):
    """A complex-valued function: the library returns in registers, the facade wants the value stored."""
    ctype = COMPLEX[cplx]
    rest = ["size_t" if t == "size_t" else "int32_t" if t == "int32_t" else "void*" for t in params[1:]]
    decl = ", ".join(["void* result"] + [f"{t} a{i}" for i, t in enumerate(rest)])
    call = ", ".join(f"a{i}" for i in range(len(rest)))
    return (f"extern \"C\" QNL_REF_EXPORT void {sym}({decl}) {{\n"
            f"  store_result<{', '.join([ctype] + rest)}>(result, {k}, {call});\n}}\n")


def main(argv):
    if argv and argv[0] == "--missing":
        for sym in plan(argv[1:])[1]:
            print(sym)
        return
    out, *rest = argv
    stubs, _, libraries = plan(rest)
    asm = ["  .text\n"]
    data = ["  .data\n  .balign 8\n  .globl qnl_ref_targets\n  .hidden qnl_ref_targets\nqnl_ref_targets:\n"]
    adapters, names = [], []
    for k, (sym, target, library, cplx, params) in enumerate(stubs):
        if cplx:
            adapters.append(adapter(k, sym, cplx, params))
        else:
            asm.append(f"  .globl {sym}\n  .type {sym},@gnu_indirect_function\n{sym}:\n  movl ${k}, %edi\n"
                       f"  jmp qnl_ref_resolve\n  .size {sym},.-{sym}\n")
        # A routine that no library has resolves to a report naming it.
        asm.append(f"qnl_ref_missing_{k}:\n  movl ${k}, %edi\n  jmp qnl_ref_missing\n")
        data.append(f"  .quad qnl_ref_missing_{k}\n")
        lib = "kSelf" if library == SELF else str(library)
        names.append(f"    {{\"{target}\", {lib}}},\n")
    sources = " ".join(Path(p).name for p in rest[:4])
    text = (banner(sources) + f"// computational libraries: {' '.join(libraries)}\n"
            "#include <complex>\n#include <cstddef>\n#include <cstdint>\n\n#include \"forward.h\"\n\n"
            f"namespace qnl_ref {{\nconst Target kTargets[] = {{\n{''.join(names)}}};\n"
            f"const int kTargetCount = {len(stubs)};\n}}  // namespace qnl_ref\n\n"
            "using qnl_ref::store_result;\n\n" + "".join(adapters) +
            '\nasm(R"(\n' + "".join(asm) + "".join(data) + '  .text\n)");\n')
    write_if_changed(out, text)
