"""lapacke.sig -> the LAPACKE entries: per routine a record of its arguments for the
template of src/lapack/lapacke_frame.h, the twin bodies of both levels, the kit's twin
bodies, the exported selectors and the export list.

    lapacke TABLE LAPACK_SIG LAPACK_EXT UTILS_H OUTDIR SHARDS
        lapacke_entries_<k>.inc   twin bodies, compiled twice through lapacke_lp64_<k>.cpp and
                                  lapacke_ilp64_<k>.cpp (LAPACK_ILP64), against include/lapacke.h,
                                  so a row that disagrees with the header does not build
        lapacke_select.cpp        the exported names: selectors to the twin of the layer
        lapacke.names             export list
        lapacke_routines.txt      routine name, kind (template / skipped: reason), one per line
"""
import re
from pathlib import Path

from .common import split_top
from .model import LETTERS, TWIN, WORDS, Entry, Family, Param

TYPES = {"s": "float", "d": "double", "c": "lapack_complex_float", "z": "lapack_complex_double",
         "i": "lapack_int", "l": "lapack_logical"}
SHAPES = {"ge": "kGe", "sy": "kSy", "tr": "kTr", "gb": "kGb", "sb": "kSb", "tb": "kTb", "sp": "kSp",
          "tp": "kTp", "pf": "kPf", "tf": "kTf"}
# Dimension slots and option letters of each shape, in its bracket's order.
SHAPE_PARAMS = {
    "ge": ("d", "d", "ld"), "sy": ("r0", "d", "ld"), "tr": ("r0", "r1", "d", "ld"),
    "gb": ("d", "d", "d", "d", "ld"), "sb": ("r0", "d", "d", "ld"), "tb": ("r0", "r1", "d", "d", "ld"),
    "sp": ("r0", "d"), "tp": ("r0", "r1", "d"), "pf": ("r0", "r1", "d"), "tf": ("r0", "r1", "r2", "d"),
}


# name:word[.T][[extents]][/direction][!shape][?job=LETTERS], the words of model.py's VOCABULARY.
# "@name" after the extents: a fixed workspace's length argument, or the workspace an
# own output of the high level is copied from ("@work+1": from its second element on).
TOKEN = re.compile(r"(?P<word>[a-z]+\*?)(?:\.(?P<prec>[sdcz]))?(?:\[(?P<extents>.*?)\])?"
                   r"(?:@(?P<src>\w+)(?:\+(?P<off>\d+))?)?(?:/(?P<dir>io|i|o))?"
                   r"(?P<nan>!\w*)?(?:\?(?P<job>\w+)=(?P<letters>\w+))?$")
QUERY = ("yw", "iw")  # workspaces sized by a workspace query
WORKSPACES = QUERY + ("yx", "ix", "lw")
INT_ARRAYS = ("ii", "iio")
OWN = "ow"  # an output of the high level alone, copied from a workspace after the call


class Arg:
    def __init__(self, name, code):
        self.name = name
        m = TOKEN.match(code)
        if not m or (m.group("word") not in LETTERS and m.group("word") not in WORDS):
            raise SystemExit(f"argument {name}: {code} is not in the vocabulary")
        self.word, self.extents, self.direction = m.group("word"), m.group("extents"), m.group("dir")
        self.job, self.job_letters, self.nanmark = m.group("job"), m.group("letters"), m.group("nan")
        self.src, self.off = m.group("src"), int(m.group("off") or 0)
        # The element's type letter: its precision, or lapack_int for the integer workspaces.
        self.prec = m.group("prec") or ("i" if self.word in WORKSPACES else None)
        self.kind = None
        self.type = "0"
        self.dir = 0
        self.nan = "0"
        self.ld = -1
        self.refs = [-1, -1, -1]
        self.dims = []
        self.hpos = 0
        self.cond = -1  # a letter argument that must be one of `letters` for the matrix to be used
        self.letters = ""


class Routine:
    def __init__(self, name, result, flags, args, line):
        self.name, self.result, self.flags, self.args, self.line = name, result, flags, args, line
        self.skip = None
        self.has_info = True


FUNCS = ("max", "min", "abs", "byrange", "byside", "bytrans", "byvect", "ifset", "sddu", "sddvt", "bysvd", "svjv", "pivrows",
         "tsqrblocks")
# Record kinds of the words without extents; a.T scalars, workspaces and arrays are told apart below.
SIMPLE = {"c": "kChar", "c*": "kCharPtr", "i": "kInt", "o": "kOutPtr", "ii": "kOutPtr", "iio": "kOutPtr",
          "f": "kOutPtr", "y": "kOutPtr"}
DIRECTIONS = {"i": 1, "o": 2, "io": 3}


def cxx_expr(expr, index, letters=(), arrays=()):
    """A length expression over argument names -> C++ over the twin's lapack_int values
    (V), option letters (L) and integer arrays (P)."""
    def name(m):
        w = m.group(0)
        if w in FUNCS:
            return "qnl::lapacke::g" + w
        if w in letters:
            return f"L({index[w]})"
        if w in arrays:
            return f"P({index[w]})"
        if w.isdigit():
            return f"I({w})"
        if w not in index:
            raise KeyError(w)
        return f"V({index[w]})"
    return re.sub(r"[A-Za-z_]\w*|\d+", name, expr)


def parse(table):
    routines = []
    for line_no, line in enumerate(Path(table).read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        head, _, rest = line.partition(" : ")
        parts = head.split()
        name, result, flags = parts[0], parts[1], parts[2:]
        r = Routine(name, result, flags, [], line_no)
        skip = [f for f in flags if f.startswith("+skip=")]
        if skip:
            r.skip = skip[0][6:].replace("_", " ")
            routines.append(r)
            continue
        for tok in rest.split():
            n, _, code = tok.partition(":")
            r.args.append(Arg(n, code))
        routines.append(r)
    return routines


def classify(r):
    """Fills each argument's record fields; returns the dims function body lines."""
    index = {a.name: k for k, a in enumerate(r.args)}
    lengths = set()
    for a in r.args:
        if a.word in QUERY and a.extents:
            lengths.add(a.extents)
        elif a.word in WORKSPACES and a.src:  # a fixed length the high level passes on
            lengths.add(a.src)
    own_outputs(r)
    body, slot = [], 0
    arrays = {a.name for a in r.args if a.word in INT_ARRAYS}
    high_names = set()
    hpos = 0 if "+nolayout" in r.flags else 1
    for a in r.args:
        if a.word in WORKSPACES or a.name in lengths:
            continue
        hpos += 1
        a.hpos = hpos
        high_names.add(a.name)

    def slot_for(expr, high_only):
        nonlocal slot
        if high_only:
            for w in re.findall(r"[a-z_]\w*", expr):
                if w not in FUNCS and w not in high_names:
                    raise ValueError(f"length of a high-level array uses {w}")
        body.append(f"  d[{slot}] = {cxx_expr(expr, index, {a.name for a in r.args if a.word == 'c'}, arrays)};")
        slot += 1
        return slot - 1

    for a in r.args:
        w = a.word
        if w in SIMPLE:
            a.kind = SIMPLE[w]
        elif w == "a":
            a.kind, a.type = "kScalar", a.prec
            if a.nanmark:
                a.nan = "qnl::lapacke::kScalar"
        elif w in QUERY:  # without a length argument ([]): sized by its own query answer
            a.kind, a.type, a.ld = "kWork", a.prec, index[a.extents] if a.extents else -1
        elif w in WORKSPACES:
            a.kind, a.type = "kFixed", a.prec
            a.dims = [slot_for(a.extents, True)]
            if a.src:
                a.ld = index[a.src]
            if a.job:  # allocated only when that letter argument asks for it
                a.cond, a.letters = index[a.job], a.job_letters
        elif w == OWN:  # of the workspace's type, at an element offset kept in refs[0]
            src = r.args[index[a.src]]
            a.prec = src.prec
            a.kind, a.type, a.ld, a.dir = "kOwn", src.prec, index[a.src], DIRECTIONS[a.direction]
            a.refs[0] = a.off
            a.dims = [slot_for(a.extents, True)]
        elif w == "vec":
            a.kind, a.type = "kVector", a.prec
            a.dir = DIRECTIONS[a.direction]
            # [length] or [length,stride]: the stride is an integer argument the NaN gate steps by.
            length, *stride = split_top(a.extents)
            if stride:
                a.refs[0] = index[stride[0]]
            if a.nanmark:
                a.dims = [slot_for(length, True)]
                a.nan = "qnl::lapacke::kVector"
        elif w in SHAPES:
            if a.job:
                a.cond, a.letters = index[a.job], a.job_letters
            a.kind, a.type = SHAPES[w], a.prec
            a.dir = DIRECTIONS[a.direction]
            vals = split_top(a.extents)
            roles = SHAPE_PARAMS[w]
            if len(vals) != len(roles):
                raise ValueError(f"{a.name}: {w} takes {len(roles)} parameters")
            for v, role in zip(vals, roles):
                if role == "ld":
                    a.ld = index[v]
                elif role.startswith("r"):
                    a.refs[int(role[1])] = index[v] if not v.startswith("'") else -1
                else:
                    s = slot_for(v, True)
                    if not a.dims:
                        a.dims = [s]
            if a.nanmark:
                other = a.nanmark[1:]
                a.nan = "qnl::lapacke::" + (SHAPES[other] if other else SHAPES[w])
                if other == "sy":
                    a.refs[0] = index["uplo"]
        else:
            raise ValueError(f"{a.name}: {w} is not an argument word of this table")
    return body


def own_outputs(r):
    """Checks the high level's own outputs (word `ow`): they follow every argument of the
    Fortran routine, and copy from a workspace the high level allocates."""
    ws = {a.name for a in r.args if a.word in WORKSPACES}
    seen = False
    for a in r.args:
        if a.word == OWN:
            seen = True
            if a.src not in ws or not a.direction:
                raise ValueError(f"{a.name}: an own output copies from a workspace, with a direction")
        elif seen:
            raise ValueError(f"{a.name}: arguments of the routine come before the own outputs")


def fortran_args(r):
    """The arguments of the Fortran routine (and of the middle level), in order."""
    return [a for a in r.args if a.word != OWN]


C_PARAMS = {"c": "char", "c*": "char*", "i": "lapack_int", "o": "lapack_int*", "ii": "lapack_int*",
            "iio": "lapack_int*"}


def c_param(a):
    w = a.word
    if w in C_PARAMS:
        return f"{C_PARAMS[w]} {a.name}"
    if w == "f":
        return None  # the callback's type comes from the header
    if w == "a":
        return f"{TYPES[a.prec]} {a.name}"
    const = "const " if a.kind not in ("kWork", "kFixed") and a.dir == 1 else ""
    return f"{const}{TYPES[a.prec]}* {a.name}"


def address(a):
    if a.word in ("c", "i", "a"):
        return f"&{a.name}"
    if a.word == "f":
        return f"reinterpret_cast<void*>({a.name})"
    return f"const_cast<void*>(static_cast<const void*>({a.name}))"


FLAGS = {"+nocopy": "kNoCopy", "+nolayout": "kNoLayout", "+pack": "kPack", "+normswap": "kNormSwap"}
CALLBACKS = {"s": ("LAPACK_S_SELECT2", "LAPACK_S_SELECT3"), "d": ("LAPACK_D_SELECT2", "LAPACK_D_SELECT3"),
             "c": ("LAPACK_C_SELECT1", "LAPACK_C_SELECT2"), "z": ("LAPACK_Z_SELECT1", "LAPACK_Z_SELECT2")}


def header_types(header_text):
    """{LAPACKE name: [param types]} from the declarations of the public header."""
    out = {}
    for m in re.finditer(r"^([\w ]+?\**)\s*\b(LAPACKE_\w+)\((.*?)\);", header_text, re.M):
        result, name, params = m.groups()
        plist = [] if params.strip() == "void" else [p.strip() for p in params.split(",")]
        out[name] = (result.strip(), plist)
    return out


def fortran_names(*tables):
    names = {}
    for t in tables:
        for line in Path(t).read_text().splitlines():
            if line.startswith("#") or " : " not in line:
                continue
            head, _, rest = line.partition(" : ")
            names[head.split()[0]] = (head.split()[1], len(rest.split()))
    return names


def with_header_const(p, htype):
    """The table's element type with the header's const-ness (the table records direction, not const)."""
    if p is None or "*" not in p:
        return p
    const = htype.startswith("const ")
    bare = p[6:] if p.startswith("const ") else p
    return ("const " if const else "") + bare


# Twin spellings of the header's types: lapack_int and lapack_logical at the layer's width.
TWIN_TYPES = {"lapack_int": "{I}", "lapack_logical": "{I}", "lapack_complex_float": "std::complex<float>",
              "lapack_complex_double": "std::complex<double>"}
CALLBACK_TYPES = {"S_SELECT2": ("float", 2), "S_SELECT3": ("float", 3), "D_SELECT2": ("double", 2),
                  "D_SELECT3": ("double", 3), "C_SELECT1": ("std::complex<float>", 1),
                  "C_SELECT2": ("std::complex<float>", 2), "Z_SELECT1": ("std::complex<double>", 1),
                  "Z_SELECT2": ("std::complex<double>", 2)}


def twin_type(ctype):
    m = re.match(r"LAPACK_(\w_SELECT\d)$", ctype)
    if m:
        elem, count = CALLBACK_TYPES[m.group(1)]
        return f"qnl::lapacke::Callback<{{I}}{f', const {elem}*' * count}>"
    return re.sub(r"\b\w+\b", lambda w: TWIN_TYPES.get(w.group(0), w.group(0)), ctype)


def split_param(text):
    """'const double* a' -> ('const double*', 'a')."""
    m = re.match(r"(.*?)(\w+)$", text.strip())
    return m.group(1).strip(), m.group(2)


def twin_param(text, role="p"):
    ctype, name = split_param(text)
    return Param(name, twin_type(ctype), role, "value", TWIN, cname=name)


def twin_entry(name, result, params, call, **kw):
    """A C entry with an LP64 and an ILP64 body behind its selector."""
    return Entry(name, twin_type(result), params, [name], call=call, symbol="qnl_" + name, selector=True,
                 layered=True, **kw)


def header_check(name):
    # The LP64 body against the public header: a table that disagrees with it does not build.
    return f"static_assert(std::is_same_v<decltype(&{name}), decltype(&qnl_lp64_{name})>);\n"


def mask(args, test):
    """The bit set of the arguments that pass `test`, bit k for argument k."""
    return sum(1 << k for k, a in enumerate(args) if test(a))


def routine_entries(r, header):
    """The two levels of one routine: its record in the shard's prelude, two twin entries."""
    body = classify(r)
    ident = r.name
    hi_name, wk_name = f"LAPACKE_{ident}", f"LAPACKE_{ident}_work"
    # The packing extensions report under the plain routine name ("LAPACKE_dtppack").
    said = hi_name.replace("qnl_", "") if "+pack" in r.flags else hi_name
    res = "lapack_int" if r.result == "i" else {"s": "float", "d": "double"}[r.result]
    rows = []
    for a in r.args:
        refs = ", ".join(str(x) for x in a.refs)
        d = a.dims[0] if a.dims else 0
        rows.append(f"{{qnl::lapacke::{a.kind}, '{a.type}', {a.dir}, {a.nan}, {a.ld}, {{{refs}}}, {d}, {a.hpos}, "
                    f"{a.cond}, \"{a.letters}\"}}")
    # A routine without info (?lacpy, ?laset) gets the arguments alone; the frame's info stays 0.
    nf = len(fortran_args(r))
    nq = nf + (1 if r.has_info else 0)
    qs = ", ".join(f"qnl::lapack::Any{{q[{k}]}}" for k in range(nq))
    call = f"qnl_lapack_body_{ident}({qs});\n  (void)res;"
    if r.result != "i":  # a function: its value goes to `res`
        call = f"*static_cast<{res}*>(res) = qnl_lapack_body_{ident}({qs});"
    flags = " | ".join(f"qnl::lapacke::{FLAGS[f]}" for f in r.flags if f in FLAGS) or "0"
    masks = ", ".join(f"{mask(r.args, test):#x}u" for test in (
        lambda a: a.nan != "0", lambda a: a.kind in SHAPES.values(), lambda a: a.kind in ("kWork", "kFixed")))
    prelude = (f"// lapacke.sig:{r.line}\n"
               f"const qnl::lapacke::Arg A_{ident}[] = {{\n    {', '.join(rows)}}};\n"
               f"template <class I>\nvoid D_{ident}(void* const* p, I* d) {{\n  (void)p;\n  (void)d;\n"
               + "".join(line + "\n" for line in body) + "}\n"
               f"void F_{ident}(void* const* q, void* res) {{\n  {call}\n}}\n"
               # Built on the caller's stack from immediates: a record held in memory would
               # carry five addresses for the dynamic linker to write at every start.
               f"template <class I>\ninline qnl::lapacke::Routine<I> R_{ident}() {{\n"
               f"  return {{\"{said}\", \"{said}_work\", A_{ident}, {nf}, {flags}, {masks}, D_{ident}<I>, "
               f"F_{ident}, {len(r.args) - nf}}};\n}}\n")
    layout = "+nolayout" not in r.flags
    htypes = header[hi_name][1][layout:]
    wtypes = header[wk_name][1][layout:]
    wparams, hparams, haddr, waddr = [], [], [], []
    for k, a in enumerate(r.args):
        if a.word == OWN:  # the high level's alone
            hparams.append(twin_param(with_header_const(c_param(a), htypes[len(hparams)])))
            haddr.append(address(a))
            continue
        p = with_header_const(c_param(a), wtypes[k])
        if p is None:
            p = f"{wtypes[k].rsplit(' ', 1)[0]} {a.name}"
        wparams.append(twin_param(p))
        waddr.append(address(a))
        if a.hpos:
            hparams.append(twin_param(p))
            haddr.append(address(a))
        else:
            haddr.append("nullptr")
    if len(hparams) != len(htypes):
        raise ValueError(f"{ident}: the high level has {len(htypes)} arguments in the header, "
                         f"{len(hparams)} in the table")
    # Routines without a matrix have no layout argument: the frame sees column-major.
    lead = [Param("matrix_layout", "int", "L", "value", TWIN, cname="matrix_layout")] if layout else []
    lay = "matrix_layout" if layout else "qnl::lapacke::kColMajor"
    value = "" if r.result == "i" else f"_value<{res}>"
    out = []
    for nm, params, addrs, fn in ((hi_name, hparams, haddr, "high"), (wk_name, wparams, waddr, "middle")):
        call = (f"  void* const qnl_args[] = {{{', '.join(addrs)}}};\n"
                f"  return qnl::lapacke::{fn}{value}(R_{ident}<{{I}}>(), {lay}, qnl_args);\n")
        out.append(twin_entry(nm, res, lead + params, call, prelude=prelude, after=header_check(nm),
                              source=f"lapacke.sig:{r.line}"))
    return out


# Kit routine -> (template, [argument names in the template's order]) by its storage letters.
KIT_SHAPE = {"ge": "ge", "gg": "ge", "tr": "tr", "sy": "sy", "he": "sy", "po": "sy", "gb": "gb", "tb": "tb",
             "sb": "sb", "hb": "sb", "pb": "sb", "tp": "tp", "sp": "sp", "hp": "sp", "pp": "sp", "tf": "tf",
             "hs": "hs", "gt": "gt", "pt": "pt", "st": "pt", "": "vec"}


def kit_call(name, params):
    m = re.match(r"LAPACKE_([sdcz])(\w*?)_(nancheck|trans|transc)$", name)
    if not m:
        return None
    _, cc, op = m.groups()
    # The symmetric RFP shape is scanned as a vector, and transposed as triangular RFP.
    shape = ("sp" if op == "nancheck" else "pf") if cc == "pf" else KIT_SHAPE[cc]
    args = [split_param(p)[1] for p in params]
    if op == "transc":
        return f"qnl::lapacke::trans_ge<{{I}}>({', '.join(args)}, true)"
    fn = "nan" if op == "nancheck" else "trans"
    return f"qnl::lapacke::{fn}_{shape}<{{I}}>({', '.join(args)})"


def kit_entries(kit):
    """The layout kit, the error printer, the character compare and the NaN flag."""
    calls = {"LAPACKE_xerbla": "qnl::lapacke::xerbla<{I}>(name, info)", "LAPACKE_lsame": "qnl::lapacke::lsame(ca, cb)",
             "LAPACKE_get_nancheck": "qnl::lapacke::get_nancheck<{I}>()",
             "LAPACKE_set_nancheck": "qnl::lapacke::set_nancheck<{I}>(flag)"}
    out = []
    for nm, (res, params) in kit.items():
        call = calls.get(nm) or kit_call(nm, params)
        if call is None:
            continue
        ret = "return " if res != "void" else ""
        out.append(twin_entry(nm, res, [twin_param(p) for p in params], f"  {ret}{call};\n", after=header_check(nm)))
    return out


HEAD = ("#define LAPACK_COMPLEX_CPP\n#include <complex>\n#include <type_traits>\n\n"
        "#include \"c_select.h\"\n#include \"lapacke.h\"\n#include \"lapacke_utils.h\"\n"
        "#include \"lapack_frame.h\"\n#include \"lapack_gen.h\"\n#include \"lapacke_frame.h\"\n"
        "#include \"lapacke_kit.h\"\n#include \"lapacke_sizes.h\"\n\n#define V(k) (*static_cast<const I*>(p[k]))\n"
        "#define L(k) (*static_cast<const char*>(p[k]))\n#define P(k) (static_cast<const I*>(p[k]))\n")


def family(tables):
    """lapacke.sig (with the Fortran tables, lapacke_utils.h and lapacke.h) -> the LAPACKE
    entries: both levels of every routine of the template and the kit, as twin bodies
    behind selectors, and LAPACKE_ilaver (one hand-written body for both layers). The rows
    that break the template carry their reason in the table (+skip=); any other row that
    cannot be built stops the generator."""
    table, lapack_sig, lapack_ext, utils_h, lapacke_h = tables
    fortran = fortran_names(lapack_sig, lapack_ext)
    header = header_types(Path(lapacke_h).read_text())
    kit = header_types(Path(utils_h).read_text())
    kit.update({n: header[n] for n in ("LAPACKE_get_nancheck", "LAPACKE_set_nancheck")})
    entries = []
    for r in (r for r in parse(table) if r.skip is None):
        f = fortran.get(r.name)
        try:
            nf = len(fortran_args(r))
            if f is None or f[1] not in (nf, nf + 1):
                raise ValueError("no Fortran entry of these arguments")
            r.has_info = f[1] == nf + 1
            entries += routine_entries(r, header)
        except (ValueError, KeyError) as e:
            raise SystemExit(f"{table}:{r.line}: {r.name}: {e}")
    entries += kit_entries(kit)
    entries.append(Entry("LAPACKE_ilaver", "void", [], ["LAPACKE_ilaver"], hidden=False, header=False))
    return Family("lapacke", table, entries, head=HEAD,
                  header_head='#include <complex>\n\n#include "lapacke_frame.h"\n')
