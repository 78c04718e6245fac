"""blas.sig -> the Fortran BLAS entries, their back-end prototypes, the probe's stand-ins
and the case table of the tests.

    blas TABLE OUTDIR SHARDS       blas_entries_<k>.cpp (SHARDS files), blas_gen.h, blas.names,
                                   backend_blas.h, blas_cases.h
    blas --probe TABLE OUT         probe_blas.cpp
"""
import re
from dataclasses import dataclass, field
from pathlib import Path

from .common import banner, table_rows, write_if_changed

MAX_SHARD = 500  # entries per generated source file at most

ROLES = {"c": "%c", "i": "%d", "x": "%p", "p": "%p"}
REAL = {"s": "float", "c": "float", "d": "double", "z": "double"}
ELEMENT = {"s": "float", "d": "double", "c": "qnl::blas::cfloat", "z": "qnl::blas::cdouble"}
# result type in C++, and its one-letter code in the tests' case table
CODES = {"void": "v", "float": "f", "double": "d", "qnl::blas::cfloat": "c", "qnl::blas::cdouble": "z",
         "int64_t": "l", "void*": "p"}
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
    args: list  # (name, role)
    flags: set = field(default_factory=set)

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
    if prefixes == "-":
        return [(pattern, pattern.lstrip("i")[0])]
    parts = prefixes.split(",") if "," in prefixes else list(prefixes)
    return [(pattern.replace("?", p), p[0]) for p in parts]


def result_type(code, letter):
    return {"-": "void", "R": REAL[letter], "T": ELEMENT[letter], "I": "int64_t", "P": "void*"}[code]


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
        args, flags = [], set()
        for tok in f[4:]:
            if tok.startswith("+"):
                flags.add(tok[1:])
                continue
            name, _, role = tok.partition(":")
            if role not in ROLES:
                raise SystemExit(f"{where}: argument {tok} has no known role")
            args.append((name, role))
        shape, _, trans = check.partition(".")
        if shape != "-" and shape not in SHAPES:
            raise SystemExit(f"{where}: unknown checker shape {shape}")
        if res not in ("-", "R", "T", "I", "P"):
            raise SystemExit(f"{where}: unknown result {res}")
        for name, letter in expand(pattern, prefixes):
            if name in seen:
                raise SystemExit(f"{where}: {name} listed twice")
            r = Routine(line, name, letter, result_type(res, letter), shape, trans or "NTC", args, flags)
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
        out.append(f"  template <class I> QNL_CHECKER static I check({params(n)}) {{\n"
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


def entry(name, result, n, template):
    aliases = "".join(f"QNL_ALIAS(qnl_body_{name}, {s})\n" for s in spellings(name))
    return (f"extern \"C\" QNL_HIDDEN {result} qnl_body_{name}({params(n) or 'void'}) {{\n"
            f"  return qnl::blas::{template}<D_{name}>({names_of(n)});\n}}\n{aliases}\n")


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


def backend_symbols(routines, directs):
    syms = [(f"qnl_blas_{r.name}", r) for r in routines]
    syms += [(f"qnl_blas_{d.name}", d.base) for d in directs]
    return sorted(syms, key=lambda s: s[0])


def main(argv):
    if argv and argv[0] == "--probe":
        return probe(argv[1:])
    table, outdir, count = argv
    routines, directs = load(table)
    out = Path(outdir)
    label = Path(table).name
    bodies = [(r.name, routine_traits(r, label) + entry(r.name, r.result, len(r.args), "enter"))
              for r in routines]
    bodies += [(d.name, direct_traits(d, label) + entry(d.name, d.base.result, len(d.base.args) + d.flag,
                                                        "direct"))
               for d in directs]
    head = (banner(table) + '#include <cstddef>\n#include <cstdint>\n\n#include "frame.h"\n#include "checks.h"\n\n'
            "namespace {\n")
    # The build lists a fixed number of shards; entries spread evenly over them.
    count = int(count)
    size = -(-len(bodies) // count)
    if size > MAX_SHARD:
        raise SystemExit(f"{len(bodies)} entries need more than {count} shards")
    shards = [bodies[i * size:(i + 1) * size] for i in range(count)]
    for k, shard in enumerate(shards):
        # Traits stay in an unnamed namespace; the bodies are extern "C" and hidden.
        text = [head]
        for _, code in shard:
            traits, _, rest = code.partition('extern "C"')
            text.append(traits)
        text.append("}  // namespace\n\n")
        for _, code in shard:
            text.append('extern "C"' + code.partition('extern "C"')[2])
        write_if_changed(out / f"blas_entries_{k}.cpp", "".join(text))

    hdr = [banner(table), '#pragma once\n#include <cstdint>\n\n#include "entry.h"\n#include "frame.h"\n\n',
           "// Hidden bodies of the BLAS entries, for the library's own C layers.\n"]
    for r in routines:
        hdr.append(f"extern \"C\" QNL_HIDDEN {r.result} qnl_body_{r.name}({params(len(r.args))});\n")
    for d in directs:
        hdr.append(f"extern \"C\" QNL_HIDDEN {d.base.result} qnl_body_{d.name}"
                   f"({params(len(d.base.args) + d.flag)});\n")
    write_if_changed(out / "blas_gen.h", "".join(hdr))

    names = [s for r in routines for s in spellings(r.name)] + [s for d in directs for s in spellings(d.name)]
    write_if_changed(out / "blas.names", "\n".join(names) + "\n")

    protos = [banner(table), "#pragma once\n#include <cstddef>\n#include <cstdint>\n\n",
              "// What a back-end exports for the BLAS entries: integers are 64-bit and by reference,\n"
              "// a complex result comes through the pointer ahead of the arguments, and every\n"
              "// character argument is followed at the end by a hidden length.\n",
              "extern \"C\" {\n"]
    for sym, r in backend_symbols(routines, directs):
        res = backend_result(r)
        protos.append(f"{res} {sym}({', '.join(backend_params(r))});\n")
    protos.append("}\n")
    write_if_changed(out / "backend_blas.h", "".join(protos))
    write_if_changed(out / "blas_cases.h", cases(routines, directs, table))


def cases(routines, directs, table):
    out = [banner(table), "#pragma once\n// Every BLAS entry, as the tests walk them.\n\n",
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


def probe(argv):
    """Stand-ins that record every word they receive, then the 64-bit value behind each
    integer argument, then (sparse routines) the first indices of the index array."""
    table, outfile = argv
    routines, directs = load(table)
    out = [banner(table), '#include "probe_backend.h"\n#include "backend_blas.h"\n\n',
           "using qnl_probe::word;\n\n"]
    for sym, r in backend_symbols(routines, directs):
        types = backend_params(r)
        shift = 1 if r.complex_result else 0
        decl = ", ".join(f"{t} a{i}" for i, t in enumerate(types))
        words = [f"word(a{i})" for i in range(len(types))]
        # the values behind the integer arguments, read while the caller's frame still holds them
        words += [f"a{i + shift} ? word(*a{i + shift}) : 0" for i, (_, role) in enumerate(r.args) if role == "i"]
        res = backend_result(r)
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
        out.append("".join(body))
    write_if_changed(outfile, "".join(out))
