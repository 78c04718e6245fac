"""vml.sig -> the vector-math entries, their export names, the list of functions the
kernel libraries tabulate, and the case table of the tests.

    vml TABLE OUTDIR SHARDS    vml_entries_<k>.cpp (SHARDS files), vml.names,
                               vml_functions.inc, vml_cases.h
"""
from dataclasses import dataclass
from pathlib import Path

from .common import banner, table_rows, write_if_changed

ELEMENT = {"s": "float", "d": "double", "c": "QNL_Complex8", "z": "QNL_Complex16"}
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}
SIZE = {"s": 4, "d": 8, "c": 8, "z": 16}
# threader by group and type letter, as ThreaderId spells it
THREADERS = ["kS1i1o", "kD1i1o", "kS2i1o", "kD2i1o", "kS1i2o", "kD1i2o", "kSCs2iS1o", "kDCd2iD1o", "kC1i1o",
             "kZ1i1o", "kC2i1o", "kZ2i1o", "kC1i2o", "kZ1i2o", "kCCc2iC1o", "kZCz2iZ1o", "kC1iS1o", "kZ1iD1o",
             "kS1iC1o", "kD1iZ1o", "kS6i1o", "kD6i1o"]
TYPE_SIZE = {"float": 4, "double": 8, "QNL_Complex8": 8, "QNL_Complex16": 16, "QNL_VML_INT": 8}
THREADER = {
    "unary": {"s": "kS1i1o", "d": "kD1i1o", "c": "kC1i1o", "z": "kZ1i1o"},
    "binary": {"s": "kS2i1o", "d": "kD2i1o", "c": "kC2i1o", "z": "kZ2i1o"},
    "tworesult": {"s": "kS1i2o", "d": "kD1i2o"},
    "powx": {"s": "kSCs2iS1o", "d": "kDCd2iD1o", "c": "kCCc2iC1o", "z": "kZCz2iZ1o"},
    "c2r": {"c": "kC1iS1o", "z": "kZ1iD1o"},
    "r2c": {"c": "kS1iC1o", "z": "kD1iZ1o"},
    "linfrac": {"s": "kS6i1o", "d": "kD6i1o"},
}


@dataclass
class Function:
    line: int
    group: str
    letter: str
    stem: str
    warn: bool

    @property
    def name(self):
        return f"v{self.letter}{self.stem}"

    @property
    def key(self):
        return f"{self.letter}{self.stem}"

    def args(self):
        """(name, C type, tested position or None, kind) after n; kind a(rray) s(calar) i(nt) p(ointer)."""
        e, r, t = ELEMENT[self.letter], REAL[self.letter], self.letter
        g = self.group
        if g == "unary":
            return [("a", f"const {e}*", 2, "a"), ("y", f"{e}*", 3, "a")]
        if g == "binary":
            return [("a", f"const {e}*", 2, "a"), ("b", f"const {e}*", 3, "a"), ("y", f"{e}*", 4, "a")]
        if g == "tworesult":
            return [("a", f"const {e}*", 2, "a"), ("y", f"{e}*", 3, "a"), ("z", f"{e}*", 3, "a")]
        if g == "powx":
            return [("a", f"const {e}*", 2, "a"), ("b", e, None, "s"), ("y", f"{e}*", 4, "a")]
        if g == "c2r":
            return [("a", f"const {e}*", 2, "a"), ("y", f"{r}*", 3, "a")]
        if g == "r2c":
            return [("a", f"const {r}*", 2, "a"), ("y", f"{e}*", 3, "a")]
        if g == "linfrac":
            return ([("a", f"const {e}*", 2, "a"), ("b", f"const {e}*", 3, "a")] +
                    [(s, e, None, "s") for s in ("scalea", "shifta", "scaleb", "shiftb")] + [("y", f"{e}*", 8, "a")])
        if g == "pack":
            packing = self.stem.startswith("Pack")
            how = self.stem[-1]
            other = ("inc", "QNL_VML_INT", None, "i") if how == "I" else ("idx", "const QNL_VML_INT*", None, "p")
            if packing:
                return [("a", f"const {e}*", None, "a"), other, ("y", f"{e}*", None, "a")]
            return [("a", f"const {e}*", None, "a"), ("y", f"{e}*", None, "a"), other]
        raise SystemExit(f"vml.sig:{self.line}: unknown group {g}")


def parse(table):
    functions, services = [], []
    for line, fields in table_rows(table):
        group, letters, flags, *stems = fields
        if group == "service":
            services += stems
            continue
        for t in letters:
            for s in stems:
                functions.append(Function(line, group, t, s, flags == "warn"))
    keys = [f.key for f in functions]
    dup = {k for k in keys if keys.count(k) > 1}
    if dup:
        raise SystemExit(f"{table}: functions listed twice: {sorted(dup)}")
    return sorted(functions, key=lambda f: f.key), services


def spellings(f):
    """(name, mode form, by reference) of the eight names; the plain C name first."""
    lo = f.name.lower()
    m = "vm" + f.name[1:]
    return [(f.name, False, False), (m, True, False), (lo.upper(), False, True), (lo, False, True),
            (lo + "_", False, True), (m.upper(), True, True), (m.lower(), True, True), (m.lower() + "_", True, True)]


def names(functions, services):
    out = [n for f in functions for n, _, _ in spellings(f)]
    for s in services:
        out += ["vml" + s, ("vml" + s).upper(), ("vml" + s).lower(), ("vml" + s).lower() + "_"]
    return out


def body(f, name, mode, by_ref):
    args = f.args()
    params = ["const QNL_VML_INT* n" if by_ref else "QNL_VML_INT n"]
    for a, ctype, _, kind in args:
        if by_ref and kind == "s":
            params.append(f"const {ctype}* {a}")
        elif by_ref and kind == "i":
            params.append(f"const QNL_VML_INT* {a}")
        else:
            params.append(f"{ctype} {a}")
    if mode:
        params.append("const int* mode" if by_ref else "int mode")
    count = "count_ref(n)" if by_ref else "count_value(n)"
    mode_arg = ("mode" if by_ref else "&mode") if mode else "nullptr"
    fn = f"F_{f.key}"
    if f.group == "pack":
        passed = []
        for a, _, _, kind in args[1:]:
            if kind == "i":
                passed.append(f"count_ref({a})" if by_ref else f"count_value({a})")
            else:
                passed.append(a)
        call = f"call_pack({fn}, {count}, {mode_arg}, a, {', '.join(passed)})"
    else:
        tested = ", ".join(f"{{{a}, {pos}}}" for a, _, pos, _ in args if pos is not None)
        passed = ", ".join(f"ByRef<{ELEMENT[f.letter]}>{{{a}}}" if by_ref and kind == "s" else a
                           for a, _, _, kind in args)
        warn = "true" if f.warn else "false"
        call = f"call<{THREADER[f.group][f.letter]}, {warn}>({fn}, {count}, {mode_arg}, {{{tested}}}, {passed})"
    return f"QNL_VML_API void {name}({', '.join(params)}) {{ {call}; }}\n"


def entries(functions):
    out = []
    for f in functions:
        out.append(f"// vml.sig:{f.line}\n")
        out.append(f'Function F_{f.key}{{"{f.name}", "qnl_vml_kernel_{f.key}_ttab", '
                   f'"qnl_vml_kernel_{f.key}_ctab", {{}}, {{}}, {{}}}};\n')
        for name, mode, by_ref in spellings(f):
            out.append(body(f, name, mode, by_ref))
    return out


def cases(functions):
    """One row per function for the tests: name, group, letter, threader slot, warn, argument shapes."""
    rows = []
    for f in functions:
        thr = THREADERS.index(THREADER[f.group][f.letter]) if f.group in THREADER else -1
        args = f.args()
        sizes = ", ".join(str(TYPE_SIZE.get(ctype.replace("const ", "").rstrip("*"), 8)) for _, ctype, _, _ in args)
        positions = ", ".join(str(p) if p is not None else "0" for _, _, p, _ in args)
        kinds = "".join(k for _, _, _, k in args)
        rows.append(f'    {{"{f.name}", "{f.group}", \'{f.letter}\', {thr}, {str(f.warn).lower()}, "{kinds}", '
                    f'{{{sizes}}}, {{{positions}}}}},\n')
    return rows


def main(argv):
    table, outdir, shards = argv
    outdir, shards = Path(outdir), int(shards)
    functions, services = parse(table)
    head = (banner(table) + '#include "vml_frame.h"\n#include "qnl_vml.h"\n\nusing namespace qnl::vml;\n'
            '#define QNL_VML_API extern "C" __attribute__((visibility("default")))\n\n')
    per = -(-len(functions) // shards)
    for k in range(shards):
        part = functions[k * per:(k + 1) * per]
        write_if_changed(outdir / f"vml_entries_{k}.cpp", head + "".join(entries(part)))
    write_if_changed(outdir / "vml.names", "\n".join(names(functions, services)) + "\n")
    inc = [banner(table), "// QNL_VML_FUNCTION(type letter, Stem, group)\n"]
    inc += [f"QNL_VML_FUNCTION({f.letter}, {f.stem}, {f.group})\n" for f in functions]
    write_if_changed(outdir / "vml_functions.inc", "".join(inc))
    hdr = [banner(table), "#pragma once\n", "namespace vml_cases {\n",
           "struct Case {\n  const char* name;\n  const char* group;\n  char letter;\n  int threader;\n"
           "  bool warn;\n  const char* kinds;  // per argument after n: a array, s scalar, i integer, p pointer\n"
           "  int size[7];        // bytes of each argument's element (array) or value (scalar)\n"
           "  int position[7];    // position reported for a null array, 0 if untested\n};\n",
           "const Case kCases[] = {\n"] + cases(functions) + ["};\n",
           f"constexpr int kServiceNames = {4 * len(services)};\n", "}  // namespace vml_cases\n"]
    write_if_changed(outdir / "vml_cases.h", "".join(hdr))
