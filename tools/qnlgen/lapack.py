"""lapack.sig + lapack_ext.sig -> the Fortran LAPACK entries and their test cases.

Each entry is data (a Routine record of argument classes, conditions and
length programs) plus a call thunk; the frame that reads the data is the
hand-written src/lapack/frame.cpp.
"""
import re
from dataclasses import dataclass, field
from pathlib import Path

from .common import TextPool, split_top, table_rows
from .model import WIDE, Backend, Entry, Family, Param, by_address, data_letter

CLASS_RE = re.compile(r"^(c|i|o|f[123]|io|ii|iio|iw|ix|lw|[eyrw](?:\.[sdcz])?)"
                      r"(?:\[([^\]]*)\])?(?:<=([^?]+))?(?:\?(.*))?$")
ARRAYS = {"io", "ii", "iio", "iw", "ix", "lw"}
CLS_CODE = {"c": "kChar", "i": "kIn", "o": "kOut", "p": "kPtr", "f": "kFunc", "io": "kPivOut", "ii": "kPivIn",
            "iio": "kInOut", "iw": "kQueryWork", "ix": "kFixedWork", "lw": "kLogicalWork"}
RESULTS = {"-": "void", "i": "int64_t", "l": "int64_t", "s": "float", "d": "double",
           "c": "std::complex<float>", "z": "std::complex<double>", "a": "char"}
ROUTES = {"big": 1, "potrf": 2, "npi": 3, "spffrt": 4}
CHECKS = {"getrf", "potrf", "geqrf", "gelqf", "geqlf", "gebrd", "gehrd", "orghr", "sytrd", "sygst", "syrdb",
          "syevd", "heevd", "hegvd", "gesvd", "geev_real", "geev_complex", "orgqr", "ormqr", "ormlq", "ormql",
          "ormrq", "dtsvb", "dttrfb"}
MAX_ARGS = 40
MAX_ARRAYS = 8
# class -> type in the body's prototype; data letters and callbacks take the routine's types
BODY_TYPE = {"c": "const char*", "i": "const QnlLayerInt*", "o": "QnlLayerInt*",
             "io": "QnlLayerInt*", "ii": "const QnlLayerInt*", "iio": "QnlLayerInt*", "iw": "QnlLayerInt*",
             "ix": "QnlLayerInt*", "lw": "QnlLayerInt*"}
ELEMENT = {"s": "float", "d": "double", "c": "std::complex<float>", "z": "std::complex<double>"}


# ---------------------------------------------------------------- expressions

def tokens(text):
    for num, name, op in re.findall(r"\s*(?:(\d+)|([a-z_]\w*)|(.))", text):
        if num:
            yield ("num", int(num))
        elif name:
            yield ("name", name)
        elif op.strip():
            yield ("op", op)


class Parser:
    """Length expressions: + - * /, max(..), min(..), abs(x), log2(x) over argument names."""

    def __init__(self, text):
        self.t = list(tokens(text))
        self.i = 0
        self.text = text

    def peek(self):
        return self.t[self.i] if self.i < len(self.t) else (None, None)

    def take(self, kind=None, value=None):
        tok = self.peek()
        if tok[0] is None or (kind and tok[0] != kind) or (value and tok[1] != value):
            raise SystemExit(f"bad length expression {self.text!r}")
        self.i += 1
        return tok

    def parse(self):
        e = self.sum()
        if self.i != len(self.t):
            raise SystemExit(f"bad length expression {self.text!r}")
        return e

    def sum(self):
        e = self.product()
        while self.peek() in (("op", "+"), ("op", "-")):
            op = self.take()[1]
            e = (op, e, self.product())
        return e

    def product(self):
        e = self.atom()
        while self.peek() in (("op", "*"), ("op", "/")):
            op = self.take()[1]
            e = (op, e, self.atom())
        return e

    def atom(self):
        kind, v = self.take()
        if kind == "num":
            return ("num", v)
        if kind == "op" and v == "(":
            e = self.sum()
            self.take("op", ")")
            return e
        if kind == "op" and v == "-":
            return ("-", ("num", 0), self.atom())
        if kind == "name" and self.peek() == ("op", "("):
            self.take()
            args = [self.sum()]
            while self.peek() == ("op", ","):
                self.take()
                args.append(self.sum())
            self.take("op", ")")
            if v not in ("max", "min", "abs", "log2") or (v in ("abs", "log2")) != (len(args) == 1):
                raise SystemExit(f"unknown function {v} in {self.text!r}")
            return (v, *args)
        if kind == "name":
            return ("arg", v)
        raise SystemExit(f"bad length expression {self.text!r}")


def substitute(e, name, repl):
    if e[0] == "arg" and e[1] == name:
        return repl
    if e[0] in ("num", "arg"):
        return e
    return (e[0], *(substitute(x, name, repl) for x in e[1:]))


def names_in(e):
    if e[0] == "arg":
        return {e[1]}
    if e[0] == "num":
        return set()
    return set().union(*(names_in(x) for x in e[1:]))


INT64_MAX = (1 << 63) - 1
INT64_MIN = -(1 << 63)


def clamp(v):
    return max(INT64_MIN, min(INT64_MAX, v))


def evaluate(e, values):
    """The frame's arithmetic: 64-bit, saturating, division truncating toward zero (0 by 0)."""
    k = e[0]
    if k == "num":
        return e[1]
    if k == "arg":
        return values[e[1]]
    a = [evaluate(x, values) for x in e[1:]]
    if k == "+":
        return clamp(a[0] + a[1])
    if k == "-":
        return clamp(a[0] - a[1])
    if k == "*":
        return clamp(a[0] * a[1])
    if k == "/":
        if a[1] == 0:
            return 0
        q = abs(a[0]) // abs(a[1])
        return clamp(q if (a[0] < 0) == (a[1] < 0) else -q)
    if k == "max":
        return max(a)
    if k == "min":
        return min(a)
    if k == "abs":
        return clamp(abs(a[0]))
    if k == "log2":
        return a[0].bit_length() - 1 if a[0] >= 1 else 0
    raise AssertionError(k)


# Program opcodes of lapack_frame.h; operands follow their opcode.
OP = {"end": 0, "arg": 1, "num": 2, "+": 3, "-": 4, "*": 5, "/": 6, "max": 7, "min": 8, "abs": 9, "log2": 10}


def compile_expr(e, index):
    k = e[0]
    if k == "num":
        return [OP["num"], e[1]]
    if k == "arg":
        return [OP["arg"], index[e[1]]]
    code = []
    for x in e[1:]:
        code += compile_expr(x, index)
    if k in ("max", "min"):
        return code + [OP[k], len(e) - 1]
    return code + [OP[k]]


# ---------------------------------------------------------------- table

@dataclass
class Arg:
    name: str
    cls: str
    length: tuple = None      # parsed allocation length
    keep: tuple = None        # parsed copy-back length, when it differs
    bound: str = None         # o<=X
    cond: list = field(default_factory=list)  # [(arg, op, value)]
    word: str = ""            # the table's letter of a data argument or callback (cls p, f)


@dataclass
class Routine:
    name: str
    result: str
    args: list
    source: str
    short: bool = False
    check: str = None
    route: str = None

    @property
    def stem(self):
        return self.name[4:] if self.name.startswith("qnl_") else self.name

    @property
    def symbol(self):
        return ("qnl_lapack_ps_" if self.short else "qnl_lapack_") + self.stem

    @property
    def ao_symbol(self):
        return "qnl_lapack_ao_" + self.stem if self.route else None

    @property
    def spellings(self):
        return [self.name, self.name + "_", self.name.upper()]

    @property
    def result_arg(self):
        """Complex and character results travel through an address put before the arguments."""
        return self.result in ("c", "z", "a")

    def call_args(self):
        """The arguments as the back-end and the trace see them, result address first."""
        return ([Arg("result", "p")] if self.result_arg else []) + self.args

    def info(self):
        for k, a in enumerate(self.call_args()):
            if a.name == "info" and a.cls == "o":
                return k
        return -1


def parse_cond(text, names, where):
    out = []
    for part in text.split("&"):
        m = re.match(r"^([a-z]\w*)(!=|=)(\w+)$", part)
        if not m or m.group(1) not in names:
            raise SystemExit(f"{where}: bad condition {text}")
        arg, op, val = m.groups()
        out.append((arg, op, val))
    return out


def parse_row(fields, where):
    if len(fields) < 3 or fields[2] != ":" or fields[1] not in RESULTS:
        raise SystemExit(f"{where}: malformed row")
    name, result = fields[0], fields[1]
    raw = []
    for f in fields[3:]:
        aname, _, cls = f.partition(":")
        m = CLASS_RE.match(cls)
        if not m:
            raise SystemExit(f"{where}: bad class {f}")
        raw.append((aname, m))
    names = {a for a, _ in raw}
    args = []
    bounds = {}
    for aname, m in raw:
        word, length, bound, cond = m.groups()
        cls = word if word in CLS_CODE else "f" if word[0] == "f" else "p"
        if cls == "p":
            data_letter(word, f"{where}: {aname}")
        a = Arg(aname, cls, bound=bound, word=word)
        if bound:
            bounds[aname] = Parser(bound).parse()
        if cond:
            a.cond = parse_cond(cond, names, where)
        if cls in ARRAYS:
            if not length:
                raise SystemExit(f"{where}: array {aname} without a length")
            parts = [Parser(x).parse() for x in split_top(length)]
            a.length = parts[0]
            if len(parts) > 1:
                a.keep = parts[1]
        elif length:
            raise SystemExit(f"{where}: scalar {aname} with a length")
        args.append(a)
    scalars = {a.name for a in args if a.cls in ("i", "o")}
    for a in args:
        if a.length is None:
            continue
        for n in names_in(a.length) | (names_in(a.keep) if a.keep else set()):
            if n not in scalars:
                raise SystemExit(f"{where}: length of {a.name} uses {n}, not an integer scalar")
        # A length over a bounded output is allocated with the bound and copied
        # back with the value the routine returned.
        used = [n for n in names_in(a.length) if n in bounds]
        if used:
            if a.keep is None:
                a.keep = a.length
            for n in used:
                a.length = substitute(a.length, n, bounds[n])
    return Routine(name, result, args, where)


def load(table, ext):
    routines = {}
    for path in (table, ext):
        for line, f in table_rows(path):
            where = f"{Path(path).name}:{line}"
            if f[0] == "@":
                continue
            r = parse_row(f, where)
            if r.name in routines:
                raise SystemExit(f"{where}: {r.name} twice")
            routines[r.name] = r
    for line, f in table_rows(ext):
        if f[0] != "@":
            continue
        where = f"{Path(ext).name}:{line}"
        if len(f) < 3 or f[1] not in routines:
            raise SystemExit(f"{where}: option line for an unknown routine")
        r = routines[f[1]]
        for opt in f[2:]:
            key, _, val = opt.partition("=")
            if key == "short" and not val:
                r.short = True
            elif key == "check" and val in CHECKS:
                r.check = val
            elif key == "route" and val in ROUTES:
                r.route = val
            else:
                raise SystemExit(f"{where}: unknown option {opt}")
    out = [routines[n] for n in sorted(routines)]
    for r in out:
        args = r.call_args()
        if len(args) > MAX_ARGS or sum(a.cls in ARRAYS for a in args) > MAX_ARRAYS:
            raise SystemExit(f"{r.source}: {r.name} exceeds the frame's limits")
    return out


def is_work_length(a):
    return a.cls in ("i", "o") and re.fullmatch(r"l\w*work", a.name) is not None


def answers_query(a, args):
    """An integer array the routine writes whose length is a workspace length
    (?gesvdq's iwork: a permutation out, and the answer of a size query)."""
    def names(e):
        return {e[1]} if e[0] == "arg" else set() if e[0] == "num" else set().union(*map(names, e[1:]))

    lengths = {x.name for x in args if is_work_length(x)}
    return a.cls == "io" and a.length is not None and bool(lengths & names(a.length))


def zero_start(r, a):
    """Outputs that the routine only writes start at 0: info, and every
    argument of an enquiry without inputs (ilaver)."""
    return a.cls == "o" and (a.name == "info" or all(x.cls == "o" for x in r.args))


def trace_format(r):
    conv = {"c": "%c", "i": "%d", "o": "%d"}
    return r.name.upper() + "(" + ",".join(conv.get(a.cls, "%p") for a in r.call_args()) + ")"


# ---------------------------------------------------------------- facade

def c_type(a, backend):
    """Parameter type of an argument at the back-end."""
    if a.cls == "c":
        return "const char*"
    if a.cls == "i":
        return "const int64_t*"
    if a.cls in ("o", "io", "iio", "iw", "ix", "lw"):
        return "int64_t*"
    if a.cls == "ii":
        return "const int64_t*"
    return "void*"


def backend_params(r):
    params = []
    args = r.call_args()
    for k, a in enumerate(args):
        if k == 0 and r.result_arg:
            params.append("char*" if r.result == "a" else RESULTS[r.result] + "*")
            if r.result == "a":
                params.append("size_t")
        else:
            params.append(c_type(a, True))
    params += ["size_t"] * sum(a.cls == "c" for a in r.args)
    return params


def backend_result(r):
    return "void" if r.result_arg else RESULTS[r.result]


def body_type(r, a):
    """The C type of an argument in the body's prototype: a data letter in the routine's
    precision (the first letter of its stem) unless it names one; a callback is a LOGICAL
    function of that many element addresses."""
    own = r.stem[0]
    if a.cls == "f":
        return f"QnlLayerInt (*)({', '.join([f'const {ELEMENT[own]}*'] * int(a.word[1]))})"
    if a.cls == "p":
        letter, precision = data_letter(a.word, r.source)
        if (precision or own) not in ELEMENT:
            raise SystemExit(f"{r.source}: {a.name} needs a precision")
        return by_address(letter, precision or own, ELEMENT)
    return BODY_TYPE[a.cls]


class Pools:
    """The shared arrays the routine records point into by offset: texts, argument
    rows, length programs and conditions (lapack_frame.h). A sequence that an
    earlier routine already put in a pool is shared."""

    def __init__(self):
        self.text = TextPool()
        self.lists = {"args": [], "program": [], "conds": [], "sets": []}
        self.seen = {}

    def add(self, kind, items):
        """Offset of the sequence `items` in the pool `kind`."""
        key = (kind, tuple(items))
        if key not in self.seen:
            self.seen[key] = len(self.lists[kind])
            self.lists[kind] += items
        return self.seen[key]

    def source(self):
        def rows(items, per_line):
            lines = [", ".join(items[k:k + per_line]) for k in range(0, len(items), per_line)]
            return "".join(f"    {line},\n" for line in lines) or "    {},\n"
        checks = ", ".join(["nullptr"] + [f"&kCheck_{c}" for c in sorted(CHECKS)])
        return ('#include "lapack_frame.h"\n\nnamespace qnl::lapack {\n'
                f"const char kText[] =\n{self.text.literal()};\n"
                f"const Arg kArgPool[] = {{\n{rows(self.lists['args'], 4)}}};\n"
                f"const int16_t kProgramPool[] = {{\n{rows([str(x) for x in self.lists['program']], 24)}}};\n"
                f"const Cond kCondPool[] = {{\n{rows(self.lists['conds'], 4)}}};\n"
                f"const ArgSets kSetPool[] = {{\n{rows(self.lists['sets'], 1)}}};\n"
                f"const CheckPair* const kChecks[] = {{{checks}}};\n"
                "}  // namespace qnl::lapack\n")


def check_index(name):
    return 1 + sorted(CHECKS).index(name) if name else 0


def emit_routine(r, pools):
    ident = r.name
    args = r.call_args()
    index = {a.name: k for k, a in enumerate(args)}
    prog, conds, arg_rows = [], [], []
    arrays = 0
    # Argument sets of the LP64 frame's passes (lapack_frame.h, ArgSets).
    sets = dict.fromkeys(("scalars", "reads", "outs", "conditional", "lengths", "arrays"), 0)
    for k, a in enumerate(args):
        flags = []
        if zero_start(r, a):
            flags.append("kZeroStart")
        if is_work_length(a):
            flags.append("kWorkLength")
        if answers_query(a, args):
            flags.append("kAnswersQuery")
        cond = 0
        if a.cond:
            cond = len(conds) + 1
            for j, (cname, op, val) in enumerate(a.cond):
                target = args[index[cname]]
                more = "true" if j + 1 < len(a.cond) else "false"
                if target.cls == "c":
                    code = "kLetterIn" if op == "=" else "kLetterNotIn"
                    conds.append(f"{{{index[cname]}, {code}, {more}, 0, {pools.text.add(val.upper())}}}")
                else:
                    code = "kValueIs" if op == "=" else "kValueIsNot"
                    conds.append(f"{{{index[cname]}, {code}, {more}, {int(val)}, 0}}")
        length = keep = -1
        if a.length is not None:
            arrays += 1
            length = len(prog)
            prog += compile_expr(a.length, index) + [OP["end"]]
            if a.keep is not None:
                keep = len(prog)
                prog += compile_expr(a.keep, index) + [OP["end"]]
        arg_rows.append(f"{{{CLS_CODE[a.cls]}, {'|'.join(flags) or 0}, {cond}, {length}, {keep}}}")
        bit = 1 << k
        if a.cls in ("i", "o"):
            sets["scalars"] |= bit
            if a.cond:
                sets["conditional"] |= bit
            elif "kZeroStart" not in flags:
                sets["reads"] |= bit
            if a.cls == "o":
                sets["outs"] |= bit
        if "kWorkLength" in flags:
            sets["lengths"] |= bit
        if a.cls in ARRAYS:
            sets["arrays"] |= bit
    has_iw = any(a.cls == "iw" for a in args)
    out = [f"// {r.source}\n"]
    # The call thunk: the marshalled addresses in order, then a length 1 per character.
    nchar = sum(a.cls == "c" for a in r.args)
    pass_args = []
    for k in range(len(args)):
        pass_args.append(f"qnl::lapack::Any{{p[{k}]}}")
        if k == 0 and r.result == "a":
            pass_args.append("1")
    pass_args += ["1"] * nchar
    call = f"reinterpret_cast<decltype(&{r.symbol})>(f)({', '.join(pass_args)})"
    res = backend_result(r)
    body_call = f"*static_cast<{res}*>(r) = {call};" if res != "void" else f"{call};\n  (void)r;"
    out.append(f"static void X_{ident}(void* f, void* const* p, void* r) {{\n  {body_call}\n}}\n")
    result_kind = {"-": "kNone", "i": "kInteger", "l": "kInteger", "s": "kReal", "d": "kReal",
                   "c": "kNone", "z": "kNone", "a": "kNone"}[r.result]
    text = pools.text
    fmt = 0 if r.short else text.add(trace_format(r))
    ao = text.add(r.ao_symbol) if r.ao_symbol else 0
    # The record holds offsets into the pools (no addresses): it needs no relocation.
    out.append(
        f"static qnl::lapack::Entry E_{ident};\n"
        f"static const qnl::lapack::Routine R_{ident} = {{{text.add(r.name.upper())}, {text.add(r.symbol)}, "
        f"{ao}, {fmt}, {pools.add('args', arg_rows)}, {pools.add('program', prog)}, {pools.add('conds', conds)}, "
        f"{pools.add('sets', ['{' + ', '.join(f'{v:#x}u' for v in sets.values()) + '}'])}, "
        f"{check_index(r.check)}, {len(args)}, {r.info()}, {ROUTES.get(r.route, 0)}, qnl::lapack::{result_kind}, "
        f"{'true' if r.short else 'false'}, {'true' if has_iw else 'false'}}};\n")
    # The exported body: every argument arrives as an address; hidden lengths are not read.
    params = [Param(a.name, body_type(r, a), a.word if a.cls == "f" else a.word[:1] if a.cls == "p" else a.cls,
                    "ref", WIDE if a.cls in ("i", "o") else "") for a in r.args]
    ptrs = [f"qnl::vp(a{k})" for k in range(len(r.args))]
    ret = RESULTS[r.result] if r.result not in ("a",) else "void"
    pre = ""
    if r.result in ("c", "z"):
        pre = f"  {ret} v{{}};\n"
        ptrs = ["&v"] + ptrs
    elif r.result == "a":
        params = [Param("result", "char*", cname="res"), Param("length", "size_t", "n", "value", cname="")] + params
        ptrs = ["res"] + [f"qnl::vp(a{k})" for k in range(2, len(params))]
    elif r.result != "-":
        pre = f"  {ret} v = 0;\n"
    call_result = "&v" if r.result not in ("-", "a", "c", "z") else "nullptr"
    plist = ", ".join(ptrs) if ptrs else "nullptr"
    call = (f"{pre}  void* const p[] = {{{plist}}};\n"
            f"  qnl::lapack::enter(R_{ident}, E_{ident}, X_{ident}, p, {call_result});\n"
            + ("  return v;\n" if ret != "void" else ""))
    return Entry(ident, ret, params, r.spellings, call, source=r.source, symbol=f"qnl_lapack_body_{ident}",
                 before="".join(out), data=r)


def backends(routines):
    out = []
    for r in routines:
        cplx = RESULTS[r.result] if r.result in ("c", "z") else None
        out.append(Backend(r.symbol, backend_result(r), backend_params(r), r.stem, complex_result=cplx))
        if r.ao_symbol:
            out.append(Backend(r.ao_symbol, backend_result(r), backend_params(r), r.stem, plain=r.symbol))
    return out


def family(tables):
    table, ext = tables
    routines = load(table, ext)
    pools = Pools()
    entries = [emit_routine(r, pools) for r in routines]
    return Family(
        "lapack", f"{table} and {ext}", entries, backends(routines),
        head='#include <complex>\n#include <cstddef>\n#include <cstdint>\n\n'
             '#include "backend_lapack.h"\n#include "lapack_frame.h"\n',
        header_head='#include <complex>\n#include <cstddef>\n#include <cstdint>\n\n#include "entry.h"\n\n'
                    "// Hidden bodies of the LAPACK entries, for the library's own C layers.\n",
        backend_head="#include <complex>\n#include <cstddef>\n#include <cstdint>\n\n"
                     "// What a back-end exports for the LAPACK entries: 64-bit integers by\n"
                     "// address, a length after the arguments for each character argument.\n",
        files={"lapack_pools.cpp": pools.source()},
        cases=lambda: "".join(case(r) for r in routines))


# ---------------------------------------------------------------- test cases

# Values the tests put in the integer scalars (their low halves): small enough
# that most arrays fit the frame and some do not; a workspace length is large.
# Checked routines get values their checks accept.
WRITTEN_HIGH = 0x5A5A5A5A  # high half the test's back-end writes into outputs


def test_values(r):
    """Low halves the test puts in the integer scalars: sizes small enough that
    most arrays fit the frame and some do not; negative where no length, bound
    or check reads them, to show the sign extension; workspace lengths large.
    Checked routines get values their checks accept."""
    sized = set()
    for a in r.args:
        for e in (a.length, a.keep):
            if e is not None:
                sized |= names_in(e)
        if a.bound:
            sized |= names_in(Parser(a.bound).parse())
    vals = {}
    for k, a in enumerate(r.args):
        if a.cls not in ("i", "o"):
            continue
        if is_work_length(a):
            v = 3000
        elif r.check:
            v = {"itype": 1, "ilo": 1}.get(a.name, 5)
        elif r.route or a.name in sized:
            v = 3 + k % 5
        else:
            v = -(3 + k % 5)
        vals[a.name] = v
    return vals


LETTERS = {"uplo": "u", "side": "l", "trans": "n", "jobz": "v", "jobu": "a", "jobvt": "a", "jobvl": "v",
           "jobvr": "v", "compz": "n"}


def letters(r, truth):
    """One letter per character argument: every condition on it holds (truth) or fails."""
    out = {}
    for a in r.args:
        if a.cls != "c":
            continue
        conds = [(op, val) for x in r.args for (n, op, val) in x.cond if n == a.name]
        ch = LETTERS.get(a.name, "n")
        if conds:
            op, val = conds[0]
            want_in = (op == "=") == truth
            if want_in:
                ch = val[0]
            else:
                ch = next(c for c in "QNVAIUS" if c not in val.upper())
        out[a.name] = ch.lower() if truth else ch.upper()
    return out


def cond_holds(a, vals, lets):
    for name, op, val in a.cond:
        if name in lets:
            hit = lets[name].upper() in val.upper()
        else:
            hit = vals[name] == int(val)
        if hit != (op == "="):
            return False
    return True


# Configurations of a case: conditions hold (letters in lower case), conditions
# fail, and a size query (the first workspace length -1).
CONFIGS = ("holds", "fails", "query")


def case(r):
    args = r.call_args()
    off = 1 if r.result_arg else 0
    base = test_values(r)
    work = [a.name for a in r.args if is_work_length(a)]
    has_iw = any(a.cls == "iw" for a in r.args)
    configs = []
    for cfg in CONFIGS:
        lets = letters(r, cfg != "fails")
        caller = dict(base)
        query = cfg == "query" and bool(work)
        if query:
            caller[work[0]] = -1
        v = dict(caller)
        for a in r.args:
            if a.cls == "i" and a.cond and not cond_holds(a, caller, lets):
                v[a.name] = 0
            if a.cls == "o" and zero_start(r, a):
                v[a.name] = 0
        if query and has_iw:
            for w in work:
                v[w] = -1
        after = dict(v)
        for k, a in enumerate(r.args):
            if a.cls == "o":
                after[a.name] = (WRITTEN_HIGH << 32) | (k + 1)
        configs.append((lets, caller, v, after, query))
    rows = []
    for k, a in enumerate(r.args):
        per = []
        for lets, caller, v, after, query in configs:
            holds = cond_holds(a, v, lets) if a.cond else True
            if a.cls in ARRAYS and query and a.cls not in ("iw", "ii") and not answers_query(a, r.args):
                holds = False
            length = keep = 0
            if a.length is not None:
                length = evaluate(a.length, v)
                keep = length
                if a.keep is not None:
                    keep = max(min(evaluate(a.keep, after), length), 0)
            per.append("{%s, %d, %d, %d, %d, '%s'}" % (
                "true" if holds else "false", caller.get(a.name, 0), v.get(a.name, 0), length, keep,
                lets.get(a.name, "\\0")))
        flags = ("z" if zero_start(r, a) else "") + ("w" if is_work_length(a) else "") + ("c" if a.cond else "")
        flags += "q" if answers_query(a, r.args) else ""
        rows.append(f"{{\"{a.cls}\", \"{flags}\", {{{', '.join(per)}}}}}")
    ao = f'"{r.ao_symbol}"' if r.ao_symbol else "nullptr"
    fmt = f'"{trace_format(r)}"' if not r.short else "nullptr"
    return (f"  {{\"{r.name}\", \"{r.symbol}\", {ao}, {fmt}, '{r.result}', {'true' if r.short else 'false'}, "
            f"{'true' if r.check else 'false'}, {'true' if work else 'false'}, {len(r.args)}, {off}, "
            f"{{{', '.join(rows)}}}}},\n")
