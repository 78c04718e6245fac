"""matcopy.sig -> the matrix copy entries, their back-end prototypes, the probe's stand-ins
and the case table of the tests.

    matcopy TABLE OUTDIR           matcopy_entries.cpp, matcopy.names, backend_matcopy.h,
                                   matcopy_cases.h
    matcopy --probe TABLE OUT      probe_matcopy.cpp
"""
from dataclasses import dataclass
from pathlib import Path

from .common import banner, table_rows, write_if_changed

TYPES = "sdcz"
ROLES = "cnap"
ELEMENT = {"s": "float", "d": "double", "c": "qnl::blas::cfloat", "z": "qnl::blas::cdouble"}
# role -> (type in the C spelling, type at the back-end); "a" takes the element type
C_TYPE = {"c": "char", "n": "size_t", "p": "void*"}
BACKEND_TYPE = {"c": "int32_t", "n": "size_t", "p": "void*"}


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
        return "".join(r for _, r in self.args)

    def c_types(self):
        return [ELEMENT[self.letter] if r == "a" else C_TYPE[r] for r in self.roles]

    def backend_types(self):
        return [ELEMENT[self.letter] if r == "a" else BACKEND_TYPE[r] for r in self.roles]


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


def names_of(n):
    return ", ".join(f"a{i}" for i in range(n))


def entries(r, table):
    n = len(r.args)
    fortran = ", ".join(f"void* a{i}" for i in range(n))
    aliases = "".join(f"QNL_ALIAS(qnl_body_{r.fortran}, {s})\n" for s in r.spellings)
    return (f"// {table}:{r.line} {r.name}\n"
            f"namespace {{\nstruct M_{r.name} {{\n"
            f"  using T = {ELEMENT[r.letter]};\n"
            f"  using Backend = void({', '.join(r.backend_types())});\n"
            f"  static constexpr char roles[] = \"{r.roles}\";\n"
            f"  static constexpr char symbol[] = \"{r.symbol}\";\n"
            f"  static qnl::Slot slot;\n}};\nqnl::Slot M_{r.name}::slot;\n}}  // namespace\n"
            f"extern \"C\" QNL_HIDDEN void qnl_body_{r.c_name}({decl(r.c_types())}) {{\n"
            f"  qnl::matcopy::by_value<M_{r.name}>({names_of(n)});\n}}\n"
            f"QNL_ALIAS(qnl_body_{r.c_name}, {r.c_name})\n"
            f"extern \"C\" QNL_HIDDEN void qnl_body_{r.fortran}({fortran}) {{\n"
            f"  qnl::matcopy::by_reference<M_{r.name}>({names_of(n)});\n}}\n{aliases}\n")


def plain_types(types):
    """Prototype types outside the facade: the complex scalars as two-member structs."""
    return [{"qnl::blas::cfloat": "qnl_trans_cfloat", "qnl::blas::cdouble": "qnl_trans_cdouble"}.get(t, t)
            for t in types]


def prototypes(routines, table):
    out = [banner(table), "#pragma once\n#include <cstddef>\n#include <cstdint>\n\n",
           "// What a back-end exports for the matrix copy entries: the C spelling's arguments, each\n"
           "// character option as an int, complex scalars by value.\n",
           "struct qnl_trans_cfloat {\n  float re, im;\n};\nstruct qnl_trans_cdouble {\n  double re, im;\n};\n\n",
           'extern "C" {\n']
    for r in sorted(routines, key=lambda r: r.symbol):
        out.append(f"void {r.symbol}({', '.join(plain_types(r.backend_types()))});\n")
    out.append("}\n")
    return "".join(out)


def cases(routines, table):
    """One row per routine for the tests, with a caller of its C spelling that takes every
    argument from the test's value arrays in order of role."""
    out = [banner(table), "#pragma once\n// Every matrix copy routine, as the tests walk them.\n\n",
           "struct MatcopyCase {\n  const char* name;\n  char letter;\n  const char* roles;\n"
           "  const char* c_name;\n  const char* fortran;\n  const char* symbol;\n"
           "  void (*call_c)(void* fn, const MatcopyValues& v);\n};\n\n",
           "static const MatcopyCase kMatcopyCases[] = {\n"]
    plain = {"s": "float", "d": "double", "c": "matcopy_test::cfloat", "z": "matcopy_test::cdouble"}
    for r in routines:
        counters = {role: 0 for role in ROLES}
        values, types = [], []
        for role in r.roles:
            k = counters[role]
            counters[role] += 1
            if role == "a":
                types.append(plain[r.letter])
                values.append(f"v.scalar<{plain[r.letter]}>({k})")
            else:
                types.append(C_TYPE[role])
                values.append({"c": f"v.option[{k}]", "n": f"v.size[{k}]", "p": f"v.array[{k}]"}[role])
        out.append(f"    {{\"{r.name}\", '{r.letter}', \"{r.roles}\", \"{r.c_name}\", \"{r.fortran}\", "
                   f"\"{r.symbol}\",\n     [](void* fn, const MatcopyValues& v) {{\n"
                   f"       reinterpret_cast<void (*)({', '.join(types)})>(fn)({', '.join(values)});\n"
                   f"     }}}},\n")
    out.append("};\n")
    return "".join(out)


def main(argv):
    if argv and argv[0] == "--probe":
        return probe(argv[1:])
    table, outdir = argv
    routines = load(table)
    out = Path(outdir)
    label = Path(table).name
    text = [banner(table), '#include <cstddef>\n#include <cstdint>\n\n#include "matcopy_frame.h"\n\n']
    text += [entries(r, label) for r in routines]
    write_if_changed(out / "matcopy_entries.cpp", "".join(text))
    names = [s for r in routines for s in [r.c_name] + r.spellings]
    write_if_changed(out / "matcopy.names", "\n".join(names) + "\n")
    write_if_changed(out / "backend_matcopy.h", prototypes(routines, table))
    write_if_changed(out / "matcopy_cases.h", cases(routines, table))


def probe(argv):
    """Stand-ins that record every argument as words: a complex scalar of two floats as one
    word, of two doubles as two."""
    table, outfile = argv
    routines = load(table)
    out = [banner(table), '#include "probe_backend.h"\n#include "backend_matcopy.h"\n\n',
           "using qnl_probe::word;\n\n",
           "namespace {\ninline uint64_t word(qnl_trans_cfloat v) {\n  uint64_t w;\n"
           "  std::memcpy(&w, &v, sizeof w);\n  return w;\n}\n}  // namespace\n\n"]
    for r in sorted(routines, key=lambda r: r.symbol):
        types = plain_types(r.backend_types())
        words = []
        for i, t in enumerate(types):
            words += [f"word(a{i}.re)", f"word(a{i}.im)"] if t == "qnl_trans_cdouble" else [f"word(a{i})"]
        out.append(f"void {r.symbol}({decl(types)}) {{\n"
                   f"  const uint64_t w[] = {{{', '.join(words)}}};\n"
                   f"  qnl_probe::answer<void>(\"{r.symbol}\", w, {len(words)});\n}}\n")
    write_if_changed(outfile, "".join(out))
