"""blas.sig -> the Fortran BLAS entries (and their _direct twins), forwarding to
qnl_blas_<routine> through the frame of src/blas/frame.h."""
import re
from dataclasses import dataclass, field, replace
from pathlib import Path

from .common import table_rows
from .model import WIDE, Backend, Entry, Family, Param, by_address, data_letter

ROLES = {"c": "%c", "i": "%d", "x": "%p", "p": "%p"}
REAL = {"s": "float", "c": "float", "d": "double", "z": "double"}
ELEMENT = {"s": "float", "d": "double", "c": "qnl::blas::cfloat", "z": "qnl::blas::cdouble"}
# result type in C++, and its one-letter code in the tests' case table
CODES = {"void": "v", "float": "f", "double": "d", "qnl::blas::cfloat": "c", "qnl::blas::cdouble": "z",
         "int64_t": "l", "void*": "p"}
# role -> type in the body's prototype; a data letter's type follows the element
BODY_TYPE = {"c": "const char*", "i": "const QnlLayerInt*", "x": "const QnlLayerInt*"}
SHAPES = {"gemm", "gemv", "gbmv", "symv", "sbmv", "spmv", "trmv", "tbmv", "tpmv", "ger", "syr", "spr",
          "syr2", "spr2", "symm", "syrk", "syr2k", "trmm", "ptrmm", "gemmt", "gem2v", "gemm_batch",
          "gemm_alloc", "gemm_pack", "gemm_compute"}


@dataclass
class Routine:
    line: int
    name: str
    letter: str
    result: str
    shape: str
    trans: str
    args: list  # (name, role): the frame's role, p for every data letter
    words: list  # the table's letter of each argument ("e", "y.s", "i", ...)
    flags: set = field(default_factory=set)

    def body_types(self):
        return [BODY_TYPE[w] if w in BODY_TYPE else by_address(*data_type(w, self.letter), ELEMENT)
                for w in self.words]

    @property
    def upper(self):
        return self.name.upper()

    @property
    def roles(self):
        return "".join(r for _, r in self.args)

    @property
    def complex_result(self):
        return self.result in ("qnl::blas::cfloat", "qnl::blas::cdouble")

    @property
    def format(self):
        conv = (["%p"] if self.complex_result else []) + [ROLES[r] for _, r in self.args]
        return f"{self.upper}({','.join(conv)})"

    @property
    def field(self):
        """The name a checker reports under, and its length."""
        if "ext" in self.flags:
            text = self.upper + " "
        else:
            text = self.upper.ljust(6)
        return text, len(text)

    def index(self, role):
        return next((i for i, (_, r) in enumerate(self.args) if r == role), -1)


@dataclass
class Direct:
    line: int
    base: Routine
    flag: bool
    test: str

    @property
    def name(self):
        return self.base.name + "_direct"


def expand(pattern, prefixes):
    """(name, element letter) per prefix; a two-letter prefix's element is its complex letter."""
    if prefixes == "-":
        return [(pattern, pattern.lstrip("i")[0])]
    parts = prefixes.split(",") if "," in prefixes else list(prefixes)
    return [(pattern.replace("?", p), next((c for c in p if c in "cz"), p[0])) for p in parts]


def data_type(word, letter):
    """(letter, precision) of a data argument: the routine's element unless the word names one."""
    kind, precision = data_letter(word, word)
    return kind, precision or letter


def result_type(code, letter):
    return {"-": "void", "R": REAL[letter], "T": ELEMENT[letter], "l": "int64_t", "p": "void*"}[code]


def load(table):
    routines, directs, seen = [], [], {}
    for line, f in table_rows(table):
        where = f"{table}:{line}"
        if f[0] == "direct":
            if len(f) != 5 or f[3] not in ("flag", "noflag"):
                raise SystemExit(f"{where}: malformed direct row")
            for name, _ in expand(f[1], f[2]):
                if name not in seen:
                    raise SystemExit(f"{where}: direct entry of unknown routine {name}")
                directs.append(Direct(line, seen[name], f[3] == "flag", f[4]))
            continue
        if len(f) < 5:
            raise SystemExit(f"{where}: malformed row")
        pattern, prefixes, res, check = f[:4]
        args, words, flags = [], [], set()
        for tok in f[4:]:
            if tok.startswith("+"):
                flags.add(tok[1:])
                continue
            name, _, word = tok.partition(":")
            if word not in BODY_TYPE:
                data_letter(word, f"{where}: argument {name}")
            args.append((name, word if word in BODY_TYPE else "p"))
            words.append(word)
        shape, _, trans = check.partition(".")
        if shape != "-" and shape not in SHAPES:
            raise SystemExit(f"{where}: unknown checker shape {shape}")
        if res not in ("-", "R", "T", "l", "p"):
            raise SystemExit(f"{where}: unknown result {res}")
        for name, letter in expand(pattern, prefixes):
            if name in seen:
                raise SystemExit(f"{where}: {name} listed twice")
            r = Routine(line, name, letter, result_type(res, letter), shape, trans or "NTC", args, words, flags)
            if r.index("x") >= 0 and r.args[0] != ("nz", "i"):
                raise SystemExit(f"{where}: an index array needs nz as the first argument")
            seen[name] = r
            routines.append(r)
    return routines, directs


def params(n, typ="void*"):
    return ", ".join(f"{typ} a{i}" for i in range(n))


def names_of(n):
    return ", ".join(f"a{i}" for i in range(n))


def c_str(s):
    return '"' + s + '"'


def routine_traits(r, table):
    text, length = r.field
    n = len(r.args)
    out = [f"// {table}:{r.line} {r.name}\n",
           f"struct D_{r.name} {{\n",
           f"  using Result = {r.result};\n",
           f"  static constexpr char roles[] = {c_str(r.roles)};\n",
           f"  static constexpr char symbol[] = \"qnl_blas_{r.name}\";\n",
           f"  static constexpr char format[] = {c_str(r.format)};\n",
           f"  static constexpr char name[] = {c_str(r.upper)};\n",
           f"  static constexpr int32_t name_len = {len(r.upper)};\n",
           f"  static constexpr char field[] = {c_str(text)};\n",
           f"  static constexpr int32_t field_len = {length};\n",
           f"  static constexpr char trans[] = {c_str(r.trans)};\n",
           f"  static constexpr bool batch = {'true' if 'batch' in r.flags else 'false'};\n",
           f"  static constexpr int index_arg = {r.index('x')};\n",
           f"  static constexpr bool checked = {'false' if r.shape == '-' else 'true'};\n"]
    if r.shape != "-":
        out.append(f"  template <class I, class P> QNL_CHECKER static I check({params(n, 'P')}) {{\n"
                   f"    return qnl::blas::check::{r.shape}<I, D_{r.name}>({names_of(n)});\n  }}\n")
    out.append("  static qnl::Slot slot;\n  static qnl::verbose::Site site;\n};\n"
               f"qnl::Slot D_{r.name}::slot;\nqnl::verbose::Site D_{r.name}::site;\n")
    return "".join(out)


def direct_traits(d, table):
    r = d.base
    used = set(re.findall(r"[A-Za-z_]\w*", d.test))
    ints = {name: i for i, (name, role) in enumerate(r.args) if role == "i"}
    if not used <= set(ints):
        raise SystemExit(f"{table}:{d.line}: size test names {sorted(used - set(ints))}, not integers of {r.name}")
    reads = "".join(f"    const I {name} = *static_cast<const I*>(v[{ints[name]}]);\n"
                    for name in sorted(used, key=lambda x: ints[x]))
    return (f"// {table}:{d.line} {d.name}\n"
            f"struct D_{d.name} {{\n"
            f"  using Result = {r.result};\n"
            f"  static constexpr char roles[] = {c_str(r.roles)};\n"
            f"  static constexpr char symbol[] = \"qnl_blas_{r.name}\";\n"
            f"  static constexpr char direct_symbol[] = \"qnl_blas_{r.name}_direct\";\n"
            f"  static constexpr bool flag = {'true' if d.flag else 'false'};\n"
            f"  static constexpr bool batch = false;\n"
            f"  template <class I> static bool small(void* const* v) {{\n{reads}"
            f"    return {d.test};\n  }}\n"
            f"  static qnl::Slot plain_slot;\n  static qnl::Slot direct_slot;\n}};\n"
            f"qnl::Slot D_{d.name}::plain_slot;\nqnl::Slot D_{d.name}::direct_slot;\n")


def spellings(name):
    return [name, name.upper(), name + "_"]


def body_params(r, flag=False):
    """The body's typed parameters: the routine's arguments, then a _direct entry's flag."""
    out = [Param(name, t, w.partition(".")[0], "ref", WIDE if w in "ix" else "")
           for (name, _), w, t in zip(r.args, r.words, r.body_types())]
    return out + ([Param("flag", "const QnlLayerInt*")] if flag else [])


def entry(name, result, params, template, traits, r):
    addresses = ", ".join(f"qnl::vp(a{i})" for i in range(len(params)))
    return Entry(name, result, params, spellings(name), prelude=traits, data=r,
                 call=f"  return qnl::blas::{template}<D_{name}>({addresses});\n")


def checked_road(e, r):
    """A checked entry whose back-end call needs stack arguments takes the road of its own
    (frame.h, CheckedRoad): a naked body, its parameters unnamed."""
    if r.shape == "-" or "batch" in r.flags or r.index("x") >= 0 or r.complex_result \
            or len(r.args) + r.roles.count("c") <= 6 or r.shape.startswith("gemm_"):
        return e
    e.result = f"__attribute__((naked)) {e.result}"
    e.params = [replace(p, cname="") for p in e.params]
    # the gemm shape has a road of its own, with the checker's tests written out (QNL_GEMM_ROAD)
    e.call = f"  QNL_GEMM_ROAD(D_{r.name});\n" if r.shape == "gemm" else \
        f"  QNL_CHECKED_ROAD(D_{r.name}, {len(r.args)});\n"
    return e


def plain_road(e, r):
    """An unchecked entry whose arguments all come in registers, with integers to widen and
    nothing else for the frame to do, takes the road of its own (frame.h, PlainRoad)."""
    if r.shape != "-" or "batch" in r.flags or r.complex_result or len(r.args) > 6 \
            or "i" not in r.roles or set(r.roles) & {"c", "x"}:
        return e
    e.result = f"__attribute__((naked)) {e.result}"
    e.params = [replace(p, cname="") for p in e.params]
    e.call = f"  QNL_PLAIN_ROAD(D_{r.name}, {len(r.args)});\n"
    return e


def wide_body(r):
    """qnl_wide_<routine>: the entry for the library's C layer, 64-bit integers at either layer
    (frame.h, enter_wide); none for the routines whose index copy or batch word needs the layer.
    Returns the definition and the header's declaration with its wide_of mapping."""
    if r.index("x") >= 0 or "batch" in r.flags:
        return "", ""
    types = [t.replace("QnlLayerInt", "int64_t") for t in r.body_types()]
    decl = ", ".join(f"{t} a{i}" for i, t in enumerate(types))
    addresses = ", ".join(f"qnl::vp(a{i})" for i in range(len(types)))
    sym = f"qnl_wide_{r.name}"
    n = len(types)
    if not r.complex_result and len(types) + r.roles.count("c") > 6:
        # stack arguments at the back-end: the caller passes the hidden lengths, and the
        # road is a jump (frame.h, QNL_WIDE_ROAD)
        types += ["size_t"] * r.roles.count("c")
        body = (f"extern \"C\" QNL_HIDDEN __attribute__((naked)) {r.result} {sym}({', '.join(types)}) {{\n"
                f"  QNL_WIDE_ROAD(D_{r.name}, {n});\n}}\n")
    else:
        body = (f"extern \"C\" QNL_HIDDEN {r.result} {sym}({decl}) {{\n"
                f"  return qnl::blas::enter_wide<D_{r.name}>({addresses});\n}}\n")
    return (body,
            f"extern \"C\" QNL_HIDDEN {r.result} {sym}({', '.join(types)});\n"
            f"template <> struct qnl::blas::wide_of<&qnl_body_{r.name}> {{\n"
            f"  static constexpr auto fn = &{sym};\n}};\n")


def backend_params(r):
    """Typed parameters of qnl_blas_<routine>: integers 64-bit by reference, hidden lengths last."""
    types = ["void*"] if r.complex_result else []
    types += [{"c": "const char*", "i": "const int64_t*", "x": "const int64_t*", "p": "void*"}[role]
              for _, role in r.args]
    if "batch" in r.flags:
        types.append("int32_t")
    types += ["size_t"] * r.roles.count("c")
    return types


def backend_result(r):
    return "void" if r.complex_result else r.result


def backends(routines, directs):
    syms = [Backend(f"qnl_blas_{r.name}", backend_result(r), backend_params(r), r.name,
                    complex_result=r.result if r.complex_result else None) for r in routines]
    syms += [Backend(f"qnl_blas_{d.name}", backend_result(d.base), backend_params(d.base), d.base.name,
                     plain=f"qnl_blas_{d.base.name}") for d in directs]
    return sorted(syms, key=lambda b: b.symbol)


def family(tables):
    table, = tables
    routines, directs = load(table)
    label = Path(table).name
    by_name = {r.name: r for r in routines}
    entries = [plain_road(checked_road(entry(r.name, r.result, body_params(r), "enter", routine_traits(r, label), r),
                                       r), r)
               for r in routines]
    for e, r in zip(entries, routines):
        e.after = wide_body(r)[0]
    entries += [entry(d.name, d.base.result, body_params(d.base, d.flag), "direct", direct_traits(d, label), d)
                for d in directs]
    return Family(
        "blas", table, entries, backends(routines, directs),
        head='#include <cstddef>\n#include <cstdint>\n\n#include "frame.h"\n#include "checks.h"\n\n'
             "// A naked body (frame.h, CheckedRoad) is nothrow, its aliases are declared from its type.\n"
             '#pragma GCC diagnostic ignored "-Wmissing-attributes"\n',
        header_head='#include <cstdint>\n\n#include "entry.h"\n#include "frame.h"\n\n'
                    "// Hidden bodies of the BLAS entries, for the library's own C layers.\n",
        header_tail="\n// The entries at 64-bit integers for a C layer that checked first (frame.h, enter_wide).\n"
                    + "".join(wide_body(r)[1] for r in routines),
        backend_head="#include <cstddef>\n#include <cstdint>\n\n"
                     "// What a back-end exports for the BLAS entries: integers are 64-bit and by reference,\n"
                     "// a complex result comes through the pointer ahead of the arguments, and every\n"
                     "// character argument is followed at the end by a hidden length.\n",
        probe_head="using qnl_probe::word;\n\n",
        standin=lambda b: standin(b, by_name[b.routine]),
        cases=lambda: cases(routines, directs))


def cases(routines, directs):
    out = ["#pragma once\n// Every BLAS entry, as the tests walk them.\n\n",
           "struct BlasCase {\n  const char* name;\n  const char* roles;\n  const char* args;\n"
           "  char result;\n  const char* shape;\n  const char* field;\n  int field_len;\n  bool batch;\n};\n\n",
           "struct DirectCase {\n  const char* name;\n  const char* base;\n  const char* roles;\n"
           "  const char* args;\n  char result;\n  bool flag;\n};\n\n",
           "static const BlasCase kBlasCases[] = {\n"]
    for r in routines:
        text, length = r.field
        out.append(f"    {{\"{r.name}\", \"{r.roles}\", \"{','.join(a for a, _ in r.args)}\", "
                   f"'{CODES[r.result]}', \"{r.shape}\", \"{text}\", {length}, "
                   f"{'true' if 'batch' in r.flags else 'false'}}},\n")
    out.append("};\n\nstatic const DirectCase kDirectCases[] = {\n")
    for d in directs:
        r = d.base
        out.append(f"    {{\"{d.name}\", \"{r.name}\", \"{r.roles}\", \"{','.join(a for a, _ in r.args)}\", "
                   f"'{CODES[r.result]}', {'true' if d.flag else 'false'}}},\n")
    out.append("};\n")
    return "".join(out)


def standin(b, r):
    """Records every word it receives, then the 64-bit value behind each integer argument,
    then (sparse routines) the first indices of the index array."""
    sym, types = b.symbol, b.params
    shift = 1 if r.complex_result else 0
    decl = ", ".join(f"{t} a{i}" for i, t in enumerate(types))
    words = [f"word(a{i})" for i in range(len(types))]
    # the values behind the integer arguments, read while the caller's frame still holds them
    words += [f"a{i + shift} ? word(*a{i + shift}) : 0" for i, (_, role) in enumerate(r.args) if role == "i"]
    res = b.result
    body = [f"{res} {sym}({decl}) {{\n"]
    x = r.index("x")
    if x >= 0:
        body.append(f"  uint64_t w[] = {{{', '.join(words)}, 0, 0, 0, 0}};\n"
                    f"  const int64_t nz = a{shift} ? *a{shift} : 0;\n"
                    f"  int n = {len(words)};\n"
                    f"  for (int64_t i = 0; i < nz && i < 4; ++i) w[n++] = static_cast<uint64_t>(a{x + shift}[i]);\n")
    else:
        body.append(f"  const uint64_t w[] = {{{', '.join(words)}}};\n  const int n = {len(words)};\n")
    if r.complex_result:
        body.append(f"  qnl_probe::answer<void>(\"{sym}\", w, n);\n"
                    f"  const uint64_t bits = qnl_probe_result_bits(\"{sym}\");\n"
                    f"  std::memcpy(a0, &bits, sizeof bits);\n")
        if r.result.endswith("cdouble"):
            body.append("  const uint64_t high = ~bits;\n"
                        "  std::memcpy(static_cast<char*>(a0) + 8, &high, sizeof high);\n")
        body.append("}\n")
    else:
        body.append(f"  return qnl_probe::answer<{res}>(\"{sym}\", w, n);\n}}\n")
    return "".join(body)
