"""matcopy.sig -> the matrix copy entries: a C spelling by value and a Fortran spelling by
reference of each routine, both forwarding to qnl_trans_qnl_<routine>."""
from dataclasses import dataclass
from pathlib import Path

from .common import table_rows
from .model import WIDE, Backend, Entry, Family, Param

TYPES = "sdcz"
ROLES = "cnaey"  # e, y: the matrices read and written; the frame passes both on as addresses
ELEMENT = {"s": "float", "d": "double", "c": "qnl::blas::cfloat", "z": "qnl::blas::cdouble"}
# role -> (type in the C spelling, type at the back-end, type in the Fortran spelling);
# "a" takes the element type, "e" and "y" a pointer to it
C_TYPE = {"c": "char", "n": "size_t", "e": "const {T}*", "y": "{T}*"}
BACKEND_TYPE = {"c": "int32_t", "n": "size_t", "e": "void*", "y": "void*"}
FORTRAN_TYPE = {"c": "const char*", "n": "const QnlLayerInt*", "e": "const {T}*", "y": "{T}*"}
@dataclass
class Routine:
    line: int
    family: str
    letter: str
    args: list  # (name, role)

    @property
    def name(self):
        return self.letter + self.family

    @property
    def c_name(self):
        return "QNL_" + self.letter.upper() + self.family

    @property
    def fortran(self):
        return "qnl_" + self.name

    @property
    def spellings(self):
        return [self.fortran, self.fortran + "_", self.fortran.upper()]

    @property
    def symbol(self):
        return "qnl_trans_qnl_" + self.name

    @property
    def roles(self):
        """The frame's roles: p for a matrix."""
        return "".join("p" if r in "ey" else r for _, r in self.args)

    def types(self, table, scalar):
        t = ELEMENT[self.letter]
        return [scalar.replace("{T}", t) if r == "a" else table[r].replace("{T}", t) for _, r in self.args]

    def c_types(self):
        return self.types(C_TYPE, "{T}")

    def backend_types(self):
        return self.types(BACKEND_TYPE, "{T}")

    def fortran_types(self):
        return self.types(FORTRAN_TYPE, "const {T}*")


def load(table):
    routines = []
    for line, f in table_rows(table):
        if len(f) < 2:
            raise SystemExit(f"{table}:{line}: malformed row")
        args = []
        for tok in f[1:]:
            name, _, role = tok.partition(":")
            if len(role) != 1 or role not in ROLES:
                raise SystemExit(f"{table}:{line}: argument {tok} has no known role")
            args.append((name, role))
        routines += [Routine(line, f[0], t, args) for t in TYPES]
    return routines


def decl(types):
    return ", ".join(f"{t} a{i}" for i, t in enumerate(types))


def entries(r, label):
    """The C spelling and the Fortran spelling of a routine, over one set of traits."""
    n = len(r.args)
    names = ", ".join(f"a{i}" for i in range(n))
    addresses = ", ".join(f"qnl::vp(a{i})" for i in range(n))
    traits = (f"// {label}:{r.line} {r.name}\n"
              f"struct M_{r.name} {{\n"
              f"  using T = {ELEMENT[r.letter]};\n"
              f"  using Backend = void({', '.join(r.backend_types())});\n"
              f"  static constexpr char roles[] = \"{r.roles}\";\n"
              f"  static constexpr char symbol[] = \"{r.symbol}\";\n"
              f"  static qnl::Slot slot;\n}};\nqnl::Slot M_{r.name}::slot;\n")
    by_value = [Param(a, t, role, "value") for (a, role), t in zip(r.args, r.c_types())]
    by_ref = [Param(a, t, role, "ref", WIDE if role == "n" else "")
              for (a, role), t in zip(r.args, r.fortran_types())]
    where = f"{label}:{r.line}"
    return [Entry(r.c_name, "void", by_value, [r.c_name], source=where, prelude=traits, data=r,
                  call=f"  qnl::matcopy::by_value<M_{r.name}>({names});\n"),
            Entry(r.fortran, "void", by_ref, r.spellings, source=where, data=r,
                  call=f"  qnl::matcopy::by_reference<M_{r.name}>({addresses});\n")]


def plain_types(types):
    """Prototype types outside the facade: the complex scalars as two-member structs."""
    return [{"qnl::blas::cfloat": "qnl_trans_cfloat", "qnl::blas::cdouble": "qnl_trans_cdouble"}.get(t, t)
            for t in types]


def standin(b):
    """Records every argument as words: a complex scalar of two floats as one word, of two
    doubles as two."""
    words = []
    for i, t in enumerate(b.params):
        words += [f"word(a{i}.re)", f"word(a{i}.im)"] if t == "qnl_trans_cdouble" else [f"word(a{i})"]
    return (f"void {b.symbol}({decl(b.params)}) {{\n"
            f"  const uint64_t w[] = {{{', '.join(words)}}};\n"
            f"  qnl_probe::answer<void>(\"{b.symbol}\", w, {len(words)});\n}}\n")


def family(tables):
    table, = tables
    routines = load(table)
    label = Path(table).name
    backends = [Backend(r.symbol, "void", plain_types(r.backend_types()))
                for r in sorted(routines, key=lambda r: r.symbol)]
    return Family(
        "matcopy", table, [e for r in routines for e in entries(r, label)], backends,
        head='#include <cstddef>\n#include <cstdint>\n\n#include "matcopy_frame.h"\n',
        header_head='#include <cstddef>\n#include <cstdint>\n\n#include "entry.h"\n#include "frame.h"\n\n'
                    "// Hidden bodies of the matrix copy entries.\n",
        backend_head="#include <cstddef>\n#include <cstdint>\n\n"
                     "// What a back-end exports for the matrix copy entries: the C spelling's arguments, each\n"
                     "// character option as an int, complex scalars by value.\n"
                     "struct qnl_trans_cfloat {\n  float re, im;\n};\nstruct qnl_trans_cdouble {\n  double re, im;\n};\n\n",
        probe_head="using qnl_probe::word;\n\n"
                   "namespace {\ninline uint64_t word(qnl_trans_cfloat v) {\n  uint64_t w;\n"
                   "  std::memcpy(&w, &v, sizeof w);\n  return w;\n}\n}  // namespace\n\n",
        standin=standin)
