"""services.sig -> the service entries, their back-end prototypes and the probe's stand-ins.

    services TABLE OUTDIR          services_entries.cpp, services_gen.h, services.names,
                                   backend_services.h
    probe-services TABLE OUT SKIP  probe_services.cpp, leaving out the symbols named in SKIP
"""
from dataclasses import dataclass
from pathlib import Path

from .common import banner, table_rows, write_if_changed

RESULTS = {"v": "void", "i": "int32_t", "l": "int64_t", "d": "double", "f": "float", "p": "void*"}
# argument form -> (type by value, type in a by-reference spelling, read through the pointer there)
ARGS = {
    "i32": ("int32_t", "const int32_t*", True),
    "u64": ("uint64_t", "const uint64_t*", True),
    "f64": ("double", "const double*", True),
    "ptr": ("void*", "void*", False),
    "ptr*": ("void*", "void* const*", True),
    "i32v": ("int32_t", "int32_t", False),
}
# kind -> (spellings of the by-reference body, whether Mixed is a separate by-value body)
SPELLINGS = {
    "twin": (("UPPER", "lower", "lower_"), True),
    "alias": (("UPPER", "Mixed", "lower", "lower_"), False),
    "custom": (("UPPER", "Mixed", "lower", "lower_"), False),
    "fortran": (("UPPER", "lower", "lower_"), False),
    "hook": (("UPPER", "lower", "lower_", "UPPER_"), False),
    "c": (("UPPER",), False),
    "local": (("UPPER",), False),
}


@dataclass
class Row:
    line: int
    kind: str
    upper: str
    mixed: str
    result: str
    args: list
    symbol: str

    def spelling(self, form):
        return {"UPPER": self.upper, "Mixed": self.mixed, "lower": self.upper.lower(),
                "lower_": self.upper.lower() + "_", "UPPER_": self.upper + "_"}[form]

    @property
    def backend(self):
        return "qnl_serv_" + self.symbol

    def by_value(self):
        return ", ".join(ARGS[a][0] for a in self.args) or "void"


def load(table):
    rows = []
    for line, f in table_rows(table):
        if len(f) != 6 or f[0] not in SPELLINGS or f[3] not in RESULTS:
            raise SystemExit(f"{table}:{line}: malformed row")
        args = [] if f[4] == "-" else f[4].split(",")
        for a in args:
            if a not in ARGS:
                raise SystemExit(f"{table}:{line}: unknown argument form {a}")
        rows.append(Row(line, f[0], f[1], None if f[2] == "-" else f[2], f[3], args, f[5]))
    return rows


def backend_symbols(rows):
    """Distinct back-end symbols with their by-value signature; one symbol, one signature."""
    seen = {}
    for r in rows:
        if r.kind == "local":
            continue
        sig = (r.result, r.by_value())
        if seen.setdefault(r.backend, sig) != sig:
            raise SystemExit(f"line {r.line}: {r.backend} has two signatures")
    return seen


def body(name, row, by_reference, table):
    """A thin entry: bound address first, then the by-reference reads, then the jump."""
    params, values = [], []
    for i, a in enumerate(row.args):
        value_t, ref_t, deref = ARGS[a]
        params.append(f"{ref_t if by_reference else value_t} a{i}")
        values.append(f"*a{i}" if by_reference and deref else f"a{i}")
    ret = RESULTS[row.result]
    fn = f"{ret}({row.by_value()})"
    return (f"// {table}:{row.line}\n"
            f"static qnl::Slot s_{name};\n"
            f"extern \"C\" QNL_HIDDEN {ret} qnl_body_{name}({', '.join(params) or 'void'}) {{\n"
            f"  return qnl::thin<{fn}>(s_{name}, \"{row.backend}\",\n"
            f"                        [=](auto* f) {{ return f({', '.join(values)}); }});\n"
            f"}}\n")


def entries(rows, table):
    """Yields (body name, row, by_reference, exported spellings) for each entry body."""
    for r in rows:
        forms, twin = SPELLINGS[r.kind]
        yield r.upper, r, r.kind not in ("c", "local"), [r.spelling(f) for f in forms if r.spelling(f)]
        if twin and r.mixed:
            yield r.mixed, r, False, [r.mixed]


def main(argv):
    if argv and argv[0] == "--probe":
        return probe(argv[1:])
    if argv and argv[0] == "--tests":
        return tests(argv[1:])
    table, outdir = argv
    rows = load(table)
    out = Path(outdir)
    cpp = [banner(table), '#include <cstdint>\n#include "entry.h"\n#include "services_gen.h"\n\n']
    hdr = [banner(table), "#pragma once\n#include <cstdint>\n\n#include \"entry.h\"\n\n",
           "// Hidden bodies of the service entries, for the library's own frames.\n"]
    names = []
    for name, row, by_ref, spellings in entries(rows, table):
        names += spellings
        if row.kind == "local":
            continue
        aliases = "".join(f"QNL_ALIAS(qnl_body_{name}, {s})\n" for s in spellings)
        params = ", ".join(ARGS[a][1] if by_ref else ARGS[a][0] for a in row.args) or "void"
        hdr.append(f"extern \"C\" QNL_HIDDEN {RESULTS[row.result]} qnl_body_{name}({params});\n")
        if row.kind == "custom":
            # The body is hand-written; its file expands this macro beside it.
            hdr.append(f"#define QNL_SERVICE_ALIASES_{name} " + aliases.replace("\n", " ") + "\n")
        else:
            cpp.append(body(name, row, by_ref, table) + aliases + "\n")
    write_if_changed(out / "services_entries.cpp", "".join(cpp))
    write_if_changed(out / "services_gen.h", "".join(hdr))
    write_if_changed(out / "services.names", "\n".join(names) + "\n")
    protos = [banner(table), "#pragma once\n#include <cstdint>\n\n",
              "// What a back-end exports for the service entries.\nextern \"C\" {\n"]
    for sym, (res, params) in sorted(backend_symbols(rows).items()):
        protos.append(f"{RESULTS[res]} {sym}({params});\n")
    protos.append("}\n")
    write_if_changed(out / "backend_services.h", "".join(protos))


def probe(argv):
    table, out, skip_file = argv
    skip = set(Path(skip_file).read_text().split())
    rows = load(table)
    cpp = [banner(table), '#include "probe_backend.h"\n#include "backend_services.h"\n\n']
    for sym, (res, params) in sorted(backend_symbols(rows).items()):
        if sym in skip:
            continue
        types = [] if params == "void" else params.split(", ")
        decl = ", ".join(f"{t} a{i}" for i, t in enumerate(types)) or "void"
        words = ", ".join(f"qnl_probe::word(a{i})" for i in range(len(types)))
        cpp.append(f"{RESULTS[res]} {sym}({decl}) {{\n"
                   f"  const uint64_t w[] = {{{words or '0'}}};\n"
                   f"  return qnl_probe::answer<{RESULTS[res]}>(\"{sym}\", w, {len(types)});\n}}\n")
    write_if_changed(out, "".join(cpp))


# Sentinel arrays the generated cases draw from; each form has its own, and the
# test fills them with values whose high bits are set.
SENTINEL = {"i32": "I32", "u64": "U64", "f64": "F64", "ptr": "PTR", "ptr*": "PTR", "i32v": "I32V"}


def case(spelling, row, by_ref):
    """One test case: call `spelling` with sentinels, expect the words at the back-end."""
    params, args, words = [], [], []
    for i, a in enumerate(row.args):
        value_t, ref_t, deref = ARGS[a]
        src = f"{SENTINEL[a]}[{i}]"
        if by_ref and deref:
            # By-reference integers point at 64-bit cells: only the low half may be read.
            params.append(ref_t)
            args.append(f"reinterpret_cast<{ref_t}>(&{src})")
        else:
            params.append(ref_t if by_ref else value_t)
            args.append(f"static_cast<{ref_t if by_ref else value_t}>({src})")
        words.append(f"qnl_probe::word(static_cast<{value_t}>({src}))")
    ret = RESULTS[row.result]
    sig = f"{ret} (*)({', '.join(params)})"
    return (f"  {{\"{spelling}\", \"{row.backend}\", '{row.result}', {len(row.args)},\n"
            f"   [](void* fn, uint64_t* out) {{\n"
            f"     auto f = reinterpret_cast<{sig}>(fn);\n"
            + (f"     f({', '.join(args)});\n     (void)out;\n" if ret == "void" else
               f"     *out = qnl_probe::word(f({', '.join(args)}));\n")
            + f"   }},\n   [] {{ return std::vector<uint64_t>{{{', '.join(words)}}}; }}}},\n")


def tests(argv):
    table, out = argv
    rows = load(table)
    cases = [banner(table)]
    for name, row, by_ref, spellings in entries(rows, table):
        if row.kind in ("local", "custom"):
            continue
        for s in spellings:
            cases.append(case(s, row, by_ref))
    write_if_changed(out, "".join(cases))
