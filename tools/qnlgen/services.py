"""services.sig -> the service entries: thin bodies that jump to qnl_serv_<symbol>."""
from dataclasses import dataclass

from .common import table_rows
from .model import Backend, Entry, Family, Param

RESULTS = {"-": "void", "i": "int32_t", "l": "int64_t", "d": "double", "s": "float", "p": "void*"}
# argument form -> (type by value, type in a by-reference spelling, read through the pointer there);
# the back-end takes every pointer form as void*
ARGS = {
    "i32": ("int32_t", "const int32_t*", True),
    "u64": ("uint64_t", "const uint64_t*", True),
    "f64": ("double", "const double*", True),
    "ptr": ("void*", "void*", False),
    "ptr*": ("void*", "void* const*", True),
    "i32v": ("int32_t", "int32_t", False),
    "str": ("const char*", "const char*", False),
    "txt": ("char*", "char*", False),
    "i32o": ("int32_t*", "int32_t*", False),
    "u64o": ("uint64_t*", "uint64_t*", False),
}
# Addresses passed on as they are, typed for the facade by what they point at (the public
# header's types); the back-end takes them as void* like every pointer form.
TYPED = {"ver": "QNLVersion*", "exith": "QNLExitHandler", "xerh": "QNLXerblaHandler",
         "progh": "QNLProgressHandler", "pivh": "QNLPardisoPivotHandler", "i32r": "const int32_t*",
         "i64o": "int64_t*", "f64r": "const double*", "f64o": "double*"}
ARGS.update({form: (t, t, False) for form, t in TYPED.items()})
POINTERS = {"str", "txt", "i32o", "u64o", *TYPED}


def backend_type(form):
    return "void*" if form in POINTERS else ARGS[form][0]
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
        """The back-end's parameter list."""
        return ", ".join(backend_type(a) for a in self.args) or "void"


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


def entries(rows):
    """Yields (body name, row, by_reference, exported spellings) for each entry body."""
    for r in rows:
        forms, twin = SPELLINGS[r.kind]
        yield r.upper, r, r.kind not in ("c", "local"), [r.spelling(f) for f in forms if r.spelling(f)]
        if twin and r.mixed:
            yield r.mixed, r, False, [r.mixed]


# Slots that other frames read (entry.h declares them): the BLAS checkers call the bound
# letter compare through its slot.
SHARED_SLOTS = {"qnl_serv_lsame": "qnl::lsame_slot"}


def entry(name, row, by_ref, spellings, label):
    """A thin entry: bound address first, then the by-reference reads, then the jump."""
    params, values = [], []
    for i, a in enumerate(row.args):
        value_t, ref_t, deref = ARGS[a]
        params.append(Param(f"a{i}", ref_t if by_ref else value_t, a, "ref" if by_ref else "value"))
        values.append(f"*a{i}" if by_ref and deref else f"qnl::vp(a{i})" if a in POINTERS else f"a{i}")
    ret = RESULTS[row.result]
    fn = f"{ret}({row.by_value()})"
    slot = SHARED_SLOTS.get(name, f"s_{name}")
    e = Entry(name, ret, params, spellings, source=f"{label}:{row.line}", data=row,
              hidden=row.kind not in ("local", "custom"), header=row.kind != "local",
              before=f"// {label}:{row.line}\n" + (f"qnl::Slot {slot};\n" if name in SHARED_SLOTS else
                                                      f"static qnl::Slot {slot};\n"),
              call=(f"  return qnl::thin<{fn}>({slot}, \"{row.backend}\",\n"
                    f"                        [=](auto* f) {{ return f({', '.join(values)}); }});\n"))
    return e


def family(tables):
    table, = tables
    rows = load(table)
    items = [entry(*item, table) for item in entries(rows)]
    # A custom body is hand-written; its file expands this macro beside it.
    custom = "".join(f"#define QNL_SERVICE_ALIASES_{e.name} "
                     + "".join(f"QNL_ALIAS(qnl_body_{e.name}, {s}) " for s in e.exports) + "\n"
                     for e in items if e.data.kind == "custom")
    backends = [Backend(sym, RESULTS[res], [] if params == "void" else params.split(", "))
                for sym, (res, params) in sorted(backend_symbols(rows).items())]
    return Family(
        "services", table, items, backends,
        # the public declarations meet the aliases' types here: a mismatch stops the build
        head='#include <cstdint>\n#include "entry.h"\n#include "qnl_service.h"\n',
        header_head="#include <cstdint>\n\n#include \"entry.h\"\n#include \"qnl_service.h\"\n\n"
                    "// Hidden bodies of the service entries, for the library's own frames.\n",
        header_tail=custom,
        backend_head="#include <cstdint>\n\n// What a back-end exports for the service entries.\n",
        cases=lambda: tests(rows))


# Sentinel arrays the generated cases draw from; each form has its own, and the
# test fills them with values whose high bits are set.
SENTINEL = {"i32": "I32", "u64": "U64", "f64": "F64", "ptr": "PTR", "ptr*": "PTR", "i32v": "I32V",
            **{form: "PTR" for form in POINTERS}}


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
        elif a in POINTERS:
            params.append(value_t)
            args.append(f"reinterpret_cast<{value_t}>({src})")
        else:
            params.append(ref_t if by_ref else value_t)
            args.append(f"static_cast<{ref_t if by_ref else value_t}>({src})")
        words.append(f"qnl_probe::word({src})" if a in POINTERS else
                     f"qnl_probe::word(static_cast<{value_t}>({src}))")
    ret = RESULTS[row.result]
    sig = f"{ret} (*)({', '.join(params)})"
    return (f"  {{\"{spelling}\", \"{row.backend}\", '{row.result}', {len(row.args)},\n"
            f"   [](void* fn, uint64_t* out) {{\n"
            f"     auto f = reinterpret_cast<{sig}>(fn);\n"
            + (f"     f({', '.join(args)});\n     (void)out;\n" if ret == "void" else
               f"     *out = qnl_probe::word(f({', '.join(args)}));\n")
            + f"   }},\n   [] {{ return std::vector<uint64_t>{{{', '.join(words)}}}; }}}},\n")


def tests(rows):
    cases = []
    for name, row, by_ref, spellings in entries(rows):
        if row.kind in ("local", "custom"):
            continue
        for s in spellings:
            cases.append(case(s, row, by_ref))
    return "".join(cases)
