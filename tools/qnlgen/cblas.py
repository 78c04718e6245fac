"""cblas.sig -> the CBLAS entries: an LP64 and an ILP64 body of each routine behind a
C-layer selector, both ending in the library's own Fortran entry."""
from dataclasses import dataclass, field, replace
from pathlib import Path

from .common import table_rows
from .model import TWIN, Entry, Family, Param

CODES = set("LTUGSDKijareywvNAC")
ELEMENT = {"s": "float", "d": "double", "c": "qnl::blas::cfloat", "z": "qnl::blas::cdouble"}
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}
C_ELEMENT = {"s": "float", "d": "double", "c": "void", "z": "void"}
ENUMS = {"L": "CBLAS_LAYOUT", "T": "CBLAS_TRANSPOSE", "U": "CBLAS_UPLO", "G": "CBLAS_DIAG", "S": "CBLAS_SIDE",
         "D": "CBLAS_IDENTIFIER", "K": "int"}


@dataclass
class Routine:
    line: int
    name: str  # without cblas_
    letter: str  # element type letter
    result: str
    shape: str
    args: list  # (name, code)
    fortran: str = ""
    also: str = ""
    flags: set = field(default_factory=set)

    @property
    def export(self):
        return "cblas_" + self.name


def element_letter(prefix):
    for p in prefix:
        if p in "cz":
            return p
    return prefix[0]


def expand(pattern, prefixes):
    if prefixes == "-":
        return [(pattern, pattern[0])]
    parts = prefixes.split(",") if "," in prefixes else list(prefixes)
    return [(pattern.replace("?", p), element_letter(p)) for p in parts]


def load(table):
    routines, seen = [], set()
    for line, f in table_rows(table):
        where = f"{table}:{line}"
        if len(f) < 4:
            raise SystemExit(f"{where}: malformed row")
        pattern, prefixes, res, shape = f[:4]
        args, flags, opts = [], set(), {}
        for tok in f[4:]:
            if tok.startswith("+"):
                key, _, value = tok[1:].partition("=")
                if value:
                    opts[key] = value
                else:
                    flags.add(key)
                continue
            name, _, code = tok.partition(":")
            if code not in CODES or len(code) != 1:
                raise SystemExit(f"{where}: argument {tok} has no known code")
            args.append((name, code))
        if res not in ("-", "R", "d", "Z", "P"):
            raise SystemExit(f"{where}: unknown result {res}")
        parts = prefixes.split(",") if "," in prefixes else list(prefixes)
        for (name, letter), prefix in zip(expand(pattern, prefixes), parts if prefixes != "-" else [""]):
            if name in seen:
                raise SystemExit(f"{where}: {name} listed twice")
            seen.add(name)

            def target(key, default):
                v = opts.get(key, default)
                return v.replace("?", prefix) if v else ""

            routines.append(Routine(line, name, letter, res, shape, args, target("fortran", "" if "here" in flags
                                                                                   else name),
                                    target("also", ""), flags))
    return routines


def c_type(code, letter, width):
    e = C_ELEMENT[letter]
    real = REAL[letter]
    if code in ENUMS:
        return ENUMS[code]
    return {
        "i": width,
        "j": f"const {width}*",
        "a": real if letter in "sd" else "const void*",
        "r": real,
        "w": f"{real}*",
        "e": f"const {e}*",
        "y": f"{e}*",
        "v": "const void*",
        "N": "const CBLAS_TRANSPOSE*",
        "A": f"const {e}**",
        "C": f"{e}**",
    }[code]


def result_type(r):
    return {"-": "void", "R": REAL[r.letter], "d": "double", "Z": "size_t", "P": f"{C_ELEMENT[r.letter]}*"}[r.result]


def traits(r, label):
    out = [f"// {label}:{r.line} cblas_{r.name}\n", f"struct C_{r.name} {{\n",
           f"  using E = {ELEMENT[r.letter]};\n",
           f"  static constexpr char name[] = \"{r.export}\";\n"]
    if r.fortran:
        out.append(f"  static constexpr auto fortran = &qnl_body_{r.fortran};\n")
    if r.also:
        out.append(f"  static constexpr auto also = &qnl_body_{r.also};\n")
    out.append("};\n")
    return "".join(out)


def entry(r, label):
    """Twin bodies from the shape's template, exported through a selector; a routine without
    integers has one body that both layers reach."""
    params = [Param(name, c_type(code, r.letter, "{I}"), code, "value", TWIN if code in "ij" else "")
              for name, code in r.args]
    names = ", ".join(f"a{i}" for i in range(len(r.args)))
    e = Entry(r.name, result_type(r), params, [r.export], symbol=f"qnl_cblas_{r.name}", selector=True, data=r,
              width_exports="widths" in r.flags, prelude=traits(r, label),
              call=f"  return qnl::cblas::{r.shape}<{{I}}, C_{r.name}>({names});\n")
    if r.shape == "gemm" and r.letter in "sd":
        # the real gemm bodies have a road of their own (cblas_gemm_road.h)
        e.result = f"__attribute__((naked)) {e.result}"
        e.params = [replace(p, cname="") for p in e.params]
        e.call = f"  QNL_CBLAS_GEMM_ROAD(C_{r.name}, {{I}});\n"
    # The header is the contract: the LP64 body has the type its prototype declares.
    e.after = f"static_assert(std::is_same_v<decltype({r.export}), decltype({e.twin_body('lp64')})>);\n"
    return e


def family(tables):
    table, = tables
    routines = load(table)
    label = Path(table).name
    return Family(
        "cblas", table, [entry(r, label) for r in routines],
        head='#include <cstddef>\n#include <cstdint>\n#include <type_traits>\n\n'
             '#include "cblas.h"\n#include "cblas_bodies.h"\n',
        header_head='#include <cstddef>\n#include <cstdint>\n\n#include "cblas.h"\n#include "entry.h"\n\n'
                    "// The LP64 and ILP64 bodies of the CBLAS entries.\n",
        cases=lambda: cases(routines))


def cases(routines):
    out = ["#pragma once\n// Every CBLAS entry, as the tests walk them.\n#include <cstdint>\n#include <cstring>\n\n"
           "#include \"cblas.h\"\n\n",
           "struct CblasCase {\n  const char* name;\n  char type;\n  const char* codes;\n  const char* args;\n"
           "  char result;\n  const char* shape;\n  const char* fortran;\n};\n\n",
           "static const CblasCase kCblasCases[] = {\n"]
    for r in routines:
        codes = "".join(c for _, c in r.args)
        out.append(f"    {{\"{r.export}\", '{r.letter}', \"{codes}\", \"{','.join(a for a, _ in r.args)}\", "
                   f"'{r.result}', \"{r.shape}\", \"{r.fortran}\"}},\n")
    out.append("};\n\n")
    # Typed calls of every export at the width I: the harness G supplies the entry's address
    # (g.entry), each argument by position and type (g.arg<T>(k)) and turns the result into
    # bits (g.call).
    out.append("template <class I, class G>\nuint64_t cblas_call(const char* name, G& g) {\n")
    for r in routines:
        types = [c_type(code, r.letter, "I") for _, code in r.args]
        args = ", ".join(f"g.template arg<{t}>({k})" for k, t in enumerate(types))
        out.append(f"  if (std::strcmp(name, \"{r.export}\") == 0) {{\n"
                   f"    using F = {result_type(r)} (*)({', '.join(types)});\n"
                   f"    return g.call(reinterpret_cast<F>(g.entry(name)){', ' if args else ''}{args});\n  }}\n")
    out.append("  ADD_FAILURE() << \"no CBLAS entry \" << name;\n  return 0;\n}\n")
    return "".join(out)
