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

from .common import banner, split_top, write_if_changed

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
ARG_RE = re.compile(r"^(\w+):(c|e|i|o|I|f|s@\w|r@\w!?|[WF]\[.*?\]@\w|v\[.*?\]@\w/\w+!?|(\w\w)\[(.*?)\]@(\w)/(\w+)(!\w*)?)$")


class Arg:
    def __init__(self, name, code):
        self.name, self.code = name, code
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


def cxx_expr(expr, index):
    """A length expression over argument names -> C++ over the twin's lapack_int values."""
    def name(m):
        w = m.group(0)
        if w in ("max", "min"):
            return "qnl::lapacke::g" + w
        if w.isdigit():
            return f"lapack_int({w})"
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
        m = re.match(r"W\[(\w+)\]", a.code)
        if m:
            lengths.add(m.group(1))
    body, slot = [], 0
    high_names = set()
    hpos = 1
    for a in r.args:
        if a.code.startswith(("W", "F")) or a.name in lengths:
            continue
        hpos += 1
        a.hpos = hpos
        high_names.add(a.name)

    def slot_for(expr, high_only):
        nonlocal slot
        if high_only:
            for w in re.findall(r"[a-z_]\w*", expr):
                if w not in ("max", "min") and w not in high_names:
                    raise ValueError(f"length of a high-level array uses {w}")
        body.append(f"  d[{slot}] = {cxx_expr(expr, index)};")
        slot += 1
        return slot - 1

    for a in r.args:
        c = a.code
        if c == "c":
            a.kind = "kChar"
        elif c == "e":
            a.kind = "kCharPtr"
        elif c == "i":
            a.kind = "kInt"
        elif c in ("o", "I", "f") or c.startswith("s@"):
            a.kind = "kOutPtr"
        elif c.startswith("r@"):
            a.kind, a.type = "kScalar", c[2]
            if c.endswith("!"):
                a.nan = "qnl::lapacke::kScalar"
        elif c.startswith("W["):
            m = re.match(r"W\[(\w+)\]@(\w)", c)
            a.kind, a.type, a.ld = "kWork", m.group(2), index[m.group(1)]
        elif c.startswith("F["):
            m = re.match(r"F\[(.*)\]@(\w)$", c)
            a.kind, a.type = "kFixed", m.group(2)
            a.dims = [slot_for(m.group(1), True)]
        elif c.startswith("v["):
            m = re.match(r"v\[(.*)\]@(\w)/(\w+)(!?)$", c)
            a.kind, a.type = "kVector", m.group(2)
            a.dir = {"i": 1, "o": 2, "io": 3}[m.group(3)]
            if m.group(4):
                a.dims = [slot_for(m.group(1), True)]
                a.nan = "qnl::lapacke::kVector"
        else:
            m = re.match(r"(\w\w)\[(.*)\]@(\w)/(\w+)(!\w*)?(?:\?(\w+)=(\w+))?$", c)
            shape, params, ty, direction, nan, job, letters = m.groups()
            if job:
                a.cond, a.letters = index[job], letters
            a.kind, a.type = SHAPES[shape], ty
            a.dir = {"i": 1, "o": 2, "io": 3}[direction]
            vals = split_top(params)
            roles = SHAPE_PARAMS[shape]
            if len(vals) != len(roles):
                raise ValueError(f"{a.name}: {shape} takes {len(roles)} parameters")
            for v, role in zip(vals, roles):
                if role == "ld":
                    a.ld = index[v]
                elif role.startswith("r"):
                    a.refs[int(role[1])] = index[v] if not v.startswith("'") else -1
                else:
                    s = slot_for(v, True)
                    if not a.dims:
                        a.dims = [s]
            if nan:
                other = nan[1:]
                a.nan = "qnl::lapacke::" + (SHAPES[other] if other else SHAPES[shape])
                if other == "sy":
                    a.refs[0] = index["uplo"]
    return body


def c_param(a):
    c = a.code
    if c == "c":
        return f"char {a.name}"
    if c == "e":
        return f"char* {a.name}"
    if c == "i":
        return f"lapack_int {a.name}"
    if c == "o":
        return f"lapack_int* {a.name}"
    if c == "I":
        return f"lapack_int* {a.name}"
    if c == "f":
        return None  # the callback's type comes from the header
    if c.startswith("r@"):
        return f"{TYPES[c[2]]} {a.name}"
    if c.startswith("s@"):
        return f"{TYPES[c[2]]}* {a.name}"
    ty = c.split("@")[1][0]
    const = "const " if a.kind not in ("kWork", "kFixed") and a.dir == 1 else ""
    return f"{const}{TYPES[ty]}* {a.name}"


def address(a):
    c = a.code
    if c in ("c", "i") or c.startswith("r@"):
        return f"&{a.name}"
    if c == "f":
        return f"reinterpret_cast<void*>({a.name})"
    return f"const_cast<void*>(static_cast<const void*>({a.name}))"


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


def emit_routine(r, header):
    body = classify(r)
    ident = r.name
    hi_name, wk_name = f"LAPACKE_{ident}", f"LAPACKE_{ident}_work"
    rows = []
    for a in r.args:
        refs = ", ".join(str(x) for x in a.refs)
        d = a.dims[0] if a.dims else 0
        rows.append(f"{{qnl::lapacke::{a.kind}, '{a.type}', {a.dir}, {a.nan}, {a.ld}, {{{refs}}}, {d}, {a.hpos}, "
                    f"{a.cond}, \"{a.letters}\"}}")
    out = [f"// lapacke.sig:{r.line}\n"]
    out.append(f"static const qnl::lapacke::Arg A_{ident}[] = {{\n    {', '.join(rows)}}};\n")
    out.append(f"static void D_{ident}(void* const* p, lapack_int* d) {{\n  (void)p;\n  (void)d;\n"
               + "".join(line + "\n" for line in body) + "}\n")
    # A routine without info (?lacpy, ?laset) gets the arguments alone; the frame's info stays 0.
    nq = len(r.args) + (1 if r.has_info else 0)
    qs = ", ".join(f"qnl::lapack::Any{{q[{k}]}}" for k in range(nq))
    call = f"qnl_lapack_body_{ident}({qs});\n  (void)res;"
    out.append(f"static void F_{ident}(void* const* q, void* res) {{\n  {call}\n}}\n")
    flags = " | ".join(["qnl::lapacke::kNoCopy"] if "+nocopy" in r.flags else []) or "0"
    out.append(f"static const qnl::lapacke::Routine<lapack_int> R_{ident} = {{\"{hi_name}\", \"{wk_name}\", "
               f"A_{ident}, {len(r.args)}, {flags}, D_{ident}, F_{ident}}};\n")
    hparams, wparams, haddr, waddr = [], [], [], []
    htypes = header[hi_name][1][1:]
    wtypes = header[wk_name][1][1:]
    hk = 0
    for k, a in enumerate(r.args):
        p = with_header_const(c_param(a), wtypes[k])
        if p is None:
            p = f"{wtypes[k].rsplit(' ', 1)[0]} {a.name}"
        wparams.append(p)
        waddr.append(address(a))
        if a.hpos:
            hparams.append(p)
            haddr.append(address(a))
            hk += 1
        else:
            haddr.append("nullptr")
    if hk != len(htypes):
        raise ValueError(f"{ident}: the high level has {len(htypes)} arguments in the header, {hk} in the table")
    res = "lapack_int" if r.result == "i" else {"s": "float", "d": "double"}[r.result]
    for nm, params, addrs, fn in ((hi_name, hparams, haddr, "high"), (wk_name, wparams, waddr, "middle")):
        out.append(f"extern \"C\" QNL_HIDDEN decltype({nm}) QNL_TWIN({nm});\n"
                   f"{res} QNL_TWIN({nm})(int matrix_layout, {', '.join(params)}) {{\n"
                   f"  void* const qnl_args[] = {{{', '.join(addrs)}}};\n"
                   f"  return qnl::lapacke::{fn}(R_{ident}, matrix_layout, qnl_args);\n}}\n")
    return "".join(out) + "\n"


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
    args = [p.rsplit(" ", 1)[1].lstrip("*") for p in params]
    if op == "transc":
        return f"qnl::lapacke::trans_ge<lapack_int>({', '.join(args)}, true)"
    fn = "nan" if op == "nancheck" else "trans"
    return f"qnl::lapacke::{fn}_{shape}<lapack_int>({', '.join(args)})"


def selector(name):
    """The exported name: a jump to the twin of the interface layer, arguments untouched."""
    return (f"extern \"C\" QNL_HIDDEN void qnl_lp64_{name}();\nextern \"C\" QNL_HIDDEN void qnl_ilp64_{name}();\n"
            f"QNL_C_SELECTOR({name}, qnl_lp64_{name}, qnl_ilp64_{name})\n")


def main(argv):
    table, lapack_sig, lapack_ext, utils_h, lapacke_h, outdir, count = argv
    out = Path(outdir)
    routines = parse(table)
    fortran = fortran_names(lapack_sig, lapack_ext)
    header = header_types(Path(lapacke_h).read_text())
    kit = header_types(Path(utils_h).read_text())
    emitted, status = [], []
    for r in routines:
        if r.skip is None and r.result != "i":
            r.skip = "function-valued"
        if r.skip is None:
            f = fortran.get(r.name)
            if f is None:
                r.skip = "no Fortran entry"
            elif f[1] not in (len(r.args), len(r.args) + 1):
                r.skip = "Fortran entry has other arguments"
            else:
                r.has_info = f[1] == len(r.args) + 1
        if r.skip is None:
            try:
                text = emit_routine(r, header)
            except (ValueError, KeyError) as e:
                r.skip = f"table row: {e}"
        if r.skip:
            status.append(f"{r.name} skipped: {r.skip}")
            continue
        status.append(f"{r.name} template")
        emitted.append((r, text))
    count = int(count)
    per = -(-len(emitted) // count)
    src = f"{table}"
    pre = ("#include <cstdint>\n\n#ifdef LAPACK_ILP64\n#define QNL_TWIN(x) qnl_ilp64_##x\n#else\n"
           "#define QNL_TWIN(x) qnl_lp64_##x\n#endif\n#include \"lapacke.h\"\n#include \"lapacke_utils.h\"\n"
           "#include \"lapack_frame.h\"\n#include \"lapack_gen.h\"\n#include \"lapacke_frame.h\"\n"
           "#include \"lapacke_kit.h\"\n\n"
           "#define V(k) (*static_cast<const lapack_int*>(p[k]))\n")
    for k in range(count):
        part = emitted[k * per:(k + 1) * per]
        text = [banner(src), pre, "\n"] + [t for _, t in part]
        if k == 0:
            text.append(kit_bodies(kit))
        write_if_changed(out / f"lapacke_entries_{k}.inc", "".join(text))
        # Each shard is built twice: the LP64 twin, and the ILP64 twin with 64-bit lapack_int.
        for width, define in (("lp64", ""), ("ilp64", "#define LAPACK_ILP64\n")):
            write_if_changed(out / f"lapacke_{width}_{k}.cpp",
                             f"{banner(src)}{define}#define LAPACK_COMPLEX_CPP\n"
                             f"#include \"lapacke_entries_{k}.inc\"\n")
    sel = [banner(src), "#include \"c_select.h\"\n#include \"entry.h\"\n\n"]
    names = []
    for r, _ in emitted:
        for nm in (f"LAPACKE_{r.name}", f"LAPACKE_{r.name}_work"):
            sel.append(selector(nm))
            names.append(nm)
    for nm, (res, params) in kit.items():
        if kit_call(nm, params[0:]) or nm in ("LAPACKE_xerbla", "LAPACKE_lsame"):
            sel.append(selector(nm))
            names.append(nm)
    for nm in ("LAPACKE_get_nancheck", "LAPACKE_set_nancheck"):
        sel.append(selector(nm))
        names.append(nm)
    write_if_changed(out / "lapacke_select.cpp", "".join(sel))
    names.append("LAPACKE_ilaver")
    write_if_changed(out / "lapacke.names", "\n".join(names) + "\n")
    write_if_changed(out / "lapacke_routines.txt", "\n".join(status) + "\n")


def kit_bodies(kit):
    out = ["// The layout kit, the error printer, the character compare and the NaN flag.\n"]
    for nm, (res, params) in kit.items():
        call = kit_call(nm, params)
        if nm == "LAPACKE_xerbla":
            call = "qnl::lapacke::xerbla<lapack_int>(name, info)"
        elif nm == "LAPACKE_lsame":
            call = "qnl::lapacke::lsame(ca, cb)"
        if call is None:
            continue
        ret = "return " if res != "void" else ""
        out.append(f"extern \"C\" QNL_HIDDEN decltype({nm}) QNL_TWIN({nm});\n"
                   f"{res} QNL_TWIN({nm})({', '.join(params)}) {{\n  {ret}{call};\n}}\n")
    out.append("extern \"C\" QNL_HIDDEN decltype(LAPACKE_get_nancheck) QNL_TWIN(LAPACKE_get_nancheck);\n"
               "int QNL_TWIN(LAPACKE_get_nancheck)(void) { return qnl::lapacke::get_nancheck<lapack_int>(); }\n"
               "extern \"C\" QNL_HIDDEN decltype(LAPACKE_set_nancheck) QNL_TWIN(LAPACKE_set_nancheck);\n"
               "void QNL_TWIN(LAPACKE_set_nancheck)(int flag) { qnl::lapacke::set_nancheck<lapack_int>(flag); }\n")
    return "".join(out)
