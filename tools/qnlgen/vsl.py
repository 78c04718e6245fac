"""vsl.sig -> the random-stream entries' names and kernels, and the distribution generators:
an LP64 and an ILP64 C body behind a C-layer selector and one Fortran body of three names
per generator, all on the frame of src/rng/vsl_frame.h."""
from dataclasses import dataclass
from pathlib import Path

from .common import table_rows
from .model import TWIN, Backend, Entry, Family, Param

REAL = {"d": "double", "s": "float", "i": "double"}
RESULT = {"i32": "int", "u32": "unsigned int", "u64": "unsigned long long"}
# kernel argument word -> C type at the kernel (r: the real of the entry's type letter)
KERNEL_ARG = {"ptr": "const void*", "ptr*": "void**", "i32": "int32_t", "u64": "int64_t"}
PARAM_ROLES = ("r", "e", "i32")


@dataclass
class Stream:
    line: int
    name: str  # C name
    bodies: str
    kernel: str
    args: list

    def names(self):
        lo = self.name.lower()
        return [self.name, lo.upper(), lo, lo + "_"]


@dataclass
class Generator:
    line: int
    letter: str
    stem: str
    result: str
    limit: int
    accurate: bool
    params: list  # (name, role)
    tests: list  # (position, rejecting condition)
    kernel: str

    @property
    def name(self):
        return f"v{self.letter}Rng{self.stem}"

    @property
    def upper(self):
        return self.name.upper()

    @property
    def real(self):
        return REAL[self.letter]

    @property
    def element(self):
        return self.real if self.result == "y" else RESULT[self.result]

    def param_type(self, role):
        return {"r": self.real, "e": f"const {self.real}*", "i32": "int"}[role]

    def fortran_type(self, role):
        return {"r": f"const {self.real}*", "e": f"const {self.real}*", "i32": "const int*"}[role]

    def kinds(self):
        """One letter per parameter for the tests: f float, d double, i int, p pointer."""
        return "".join({"r": self.real[0], "e": "p", "i32": "i"}[role] for _, role in self.params)


def load(table):
    streams, generators = [], []
    for line, f in table_rows(table):
        where = f"{table}:{line}"
        if f[0] == "stream" and len(f) >= 5:
            args = [] if f[4:] == ["-"] else f[4:]
            if f[2] not in ("split", "shared") or any(a not in KERNEL_ARG and a != "r" for a in args):
                raise SystemExit(f"{where}: malformed stream row")
            streams.append(Stream(line, f[1], f[2], f[3], args))
        elif f[0] == "dist" and len(f) >= 6:
            stem, types, result, limit, flag = f[1:6]
            if result != "y" and result not in RESULT or flag not in ("-", "accurate"):
                raise SystemExit(f"{where}: malformed generator row")
            params, tests, kernel = [], [], None
            for tok in f[6:]:
                if tok.startswith("+kernel="):
                    kernel = tok.split("=", 1)[1]
                elif tok[0].isdigit():
                    pos, _, cond = tok.partition(":")
                    tests.append((int(pos), cond))
                else:
                    name, _, role = tok.partition(":")
                    if role not in PARAM_ROLES:
                        raise SystemExit(f"{where}: parameter {tok} has no known letter")
                    params.append((name, role))
            for t in types:
                k = kernel or f"_vsl{t}Rng{stem}"
                generators.append(Generator(line, t, stem, result, int(limit), flag == "accurate", params, tests, k))
        else:
            raise SystemExit(f"{where}: malformed row")
    return streams, generators


def traits(g, label):
    """The generator's constants and its parameter tests, in the hidden header."""
    decl = ", ".join(f"{g.param_type(role)} {name}" for name, role in g.params)
    unused = "".join(f"    (void){name};\n" for name, _ in g.params)
    tests = "".join(f"    if ({cond}) return {pos};\n" for pos, cond in g.tests)
    return (f"// {label}:{g.line}\n"
            f"struct G_{g.name} {{\n"
            f"  static constexpr char name[] = \"{g.name}\";\n"
            f"  static constexpr char kernel[] = \"{g.kernel}\";\n"
            f"  static constexpr int32_t limit = {g.limit};\n"
            f"  static constexpr bool accurate = {str(g.accurate).lower()};\n"
            f"  static inline qnl::Slot slot;\n"
            f"  static int32_t reject({decl}) {{\n{unused}{tests}    return 0;\n  }}\n"
            f"}};\n")


def generator_entries(g):
    values = [Param("method", "int", "i32", "value"), Param("stream", "VSLStreamStatePtr", "p", "value"),
              Param("n", "{I}", "i", "value", TWIN), Param("r", f"{g.element}*", "y", "value")]
    values += [Param(name, g.param_type(role), role, "value") for name, role in g.params]
    args = ", ".join(f"a{k}" for k in range(len(values)))
    c = Entry(g.name, "int", values, [g.name], symbol=f"qnl_{g.name}", selector=True, data=g,
              call=f"  return qnl::vsl::generate<qnl::vsl::gen::G_{g.name}>(sizeof({{I}}) == 8, {args});\n")
    c.after = f"static_assert(std::is_same_v<decltype({g.name}), decltype({c.twin_body('lp64')})>);\n"
    refs = [Param("method", "const int*", "i32"), Param("stream", "VSLStreamStatePtr*", "p"),
            Param("n", "const QNL_VSL_INT*", "i"), Param("r", f"{g.element}*", "y", "value")]
    refs += [Param(name, g.fortran_type(role), role, "value" if role == "e" else "ref") for name, role in g.params]
    passed = ", ".join(f"a{k}" if role == "e" else f"*a{k}" for k, (_, role) in enumerate(g.params, 4))
    lo = g.name.lower()
    f = Entry(g.upper, "int", refs, [g.upper, lo, lo + "_"], data=g,
              call=f"  const int64_t n = qnl::vsl::layer_int(a2);\n"
                   f"  return qnl::vsl::generate<qnl::vsl::gen::G_{g.name}>(qnl::layer() == 1, *a0, *a1, n, a3"
                   f"{', ' if passed else ''}{passed});\n")
    return [c, f]


def backends(streams, generators):
    out, seen = [], set()
    for s in streams:
        if s.kernel in seen:
            continue
        seen.add(s.kernel)
        real = {"d": "double", "s": "float"}.get(s.name[3], "double")
        out.append(Backend(s.kernel, "int", [real if a == "r" else KERNEL_ARG[a] for a in s.args], routine=s.name))
    for g in generators:
        params = [{"r": g.real, "e": f"const {g.real}*", "i32": "int32_t"}[role] for _, role in g.params]
        out.append(Backend(g.kernel, "int", ["int32_t", "void*", "int32_t", f"{g.element}*"] + params,
                           routine=g.name))
    return out


def cases(streams, generators):
    out = ["#pragma once\n// Every distribution generator, as the tests walk them.\n#include <cstdint>\n\n",
           "struct VslCase {\n  const char* name;     // C name; the Fortran names are its upper and lower case\n"
           "  const char* kernel;\n  char letter;\n  int element;          // bytes of one result\n"
           "  int limit;\n  bool accurate;\n  const char* kinds;    // parameters: f float, d double, i int, p pointer\n"
           "  int32_t (*reject)(const double* v);  // first failing position of the values, 0 if none\n};\n\n",
           "static const VslCase kVslCases[] = {\n"]
    size = {"double": 8, "float": 4, "int": 4, "unsigned int": 4, "unsigned long long": 8}
    for g in generators:
        # The table's own conditions over the values as the body's types hold them.
        locals_ = "".join(f"const {g.real}* {name} = v[{k}] != 0 ? "
                          f"reinterpret_cast<const {g.real}*>(&v[{k}]) : nullptr; " if role == "e" else
                          f"const {g.param_type(role)} {name} = static_cast<{g.param_type(role)}>(v[{k}]); "
                          for k, (name, role) in enumerate(g.params))
        unused = "".join(f"(void){name}; " for name, _ in g.params)
        tests = "".join(f"if ({cond}) return {pos}; " for pos, cond in g.tests)
        lam = f"[](const double* v) -> int32_t {{ (void)v; {locals_}{unused}{tests}return 0; }}"
        out.append(f"    {{\"{g.name}\", \"{g.kernel}\", '{g.letter}', {size[g.element]}, {g.limit}, "
                   f"{str(g.accurate).lower()}, \"{g.kinds()}\", {lam}}},\n")
    out.append("};\n")
    out.append(f"constexpr int kVslStreamNames = {sum(len(s.names()) for s in streams)};\n")
    return "".join(out)


def family(tables):
    table, = tables
    streams, generators = load(table)
    label = Path(table).name
    entries = []
    for g in generators:
        entries += generator_entries(g)
    # The stream entries are written by hand (vsl_streams.cpp); the table gives their names.
    entries += [Entry(s.name, "int", [], s.names(), hidden=False, header=False, data=s) for s in streams]
    tail = ["namespace qnl::vsl::gen {\n"] + [traits(g, label) for g in generators] + ["}  // namespace qnl::vsl::gen\n"]
    return Family(
        "vsl", table, entries, backends(streams, generators),
        head='#include <type_traits>\n\n#include "c_select.h"\n#include "vsl_frame.h"\n',
        header_head='#include <cstdint>\n\n#include "entry.h"\n#include "qnl_vsl.h"\n\n'
                    "// The bodies of the distribution generators and their traits.\n",
        header_tail="".join(tail),
        backend_head="#include <cstdint>\n\n",
        cases=lambda: cases(streams, generators))
