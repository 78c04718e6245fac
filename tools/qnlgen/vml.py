"""vml.sig -> the vector-math entries: four bodies of eight names per function on the
frame of src/vml/vml_frame.h, the threaders they call, and the function list the
kernel libraries tabulate (vml_functions.inc)."""
from dataclasses import dataclass
from pathlib import Path

from .common import table_rows
from .model import PIECES, REAL_OF, Backend, Entry, Family, Param

ELEMENT = {"s": "float", "d": "double", "c": "QNL_Complex8", "z": "QNL_Complex16"}
# argument letter -> (C type, Fortran type); {T} the element type, {R} its real type.
# Arrays go by address in both; a scalar and an integer by value in C only.
ARGS = {"e": ("const {T}*", "const {T}*"), "y": ("{T}*", "{T}*"), "r": ("const {R}*", "const {R}*"),
        "w": ("{R}*", "{R}*"), "a": ("{T}", "const {T}*"), "i": ("int64_t", "const int64_t*"),
        "j": ("const int64_t*", "const int64_t*")}
ARRAYS = "eyrw"


@dataclass
class Shape:
    name: str
    group: str       # the kernel libraries' group
    types: str       # type letters the threading layer serves
    threader: str    # "{t}_1i_1o"; "-" for a kernel called directly
    args: list       # (name, letter, position reported when null or None)

    def threader_of(self, t):
        return None if self.threader == "-" else self.threader.format(t=t, r=REAL_OF[t])


@dataclass
class Function:
    line: int
    shape: Shape
    letter: str
    stem: str
    warn: bool

    @property
    def name(self):
        return f"v{self.letter}{self.stem}"

    @property
    def key(self):
        return f"{self.letter}{self.stem}"

    def ctype(self, letter, fortran):
        return (ARGS[letter][fortran].replace("{T}", ELEMENT[self.letter])
                .replace("{R}", ELEMENT[REAL_OF[self.letter]]))


def threader_id(name):
    """s_cs_2i_s_1o -> kSCs2iS1o, the frame's name of a threader slot."""
    return "k" + "".join(p[0].upper() + p[1:] for p in name.split("_"))


def parse_shape(where, f):
    name, group, types, threader, *args = f
    parsed = []
    for a in args:
        arg, letter, *pos = a.split(":")
        if letter not in ARGS or len(pos) > 1:
            raise SystemExit(f"{where}: argument {a} is not name:letter[:position] with a letter of {''.join(ARGS)}")
        parsed.append((arg, letter, int(pos[0]) if pos else None))
    return Shape(name, group, types, threader, parsed)


def load(table):
    shapes, functions, services = {}, [], []
    for line, f in table_rows(table):
        where = f"{table}:{line}"
        if f[0] == "shape" and len(f) >= 6:
            shapes[f[1]] = parse_shape(where, f[1:])
        elif f[0] == "service":
            services += f[3:]
        elif f[0] in shapes and len(f) >= 4 and f[2] in ("-", "warn"):
            shape = shapes[f[0]]
            for t in f[1]:
                if shape.threader != "-" and t not in shape.types:
                    raise SystemExit(f"{where}: shape {shape.name} has no threader for type {t}")
                functions += [Function(line, shape, t, s, f[2] == "warn") for s in f[3:]]
        else:
            raise SystemExit(f"{where}: malformed row (a shape must come before its functions)")
    keys = [f.key for f in functions]
    dup = sorted({k for k in keys if keys.count(k) > 1})
    if dup:
        raise SystemExit(f"{table}: functions listed twice: {dup}")
    return list(shapes.values()), sorted(functions, key=lambda f: f.key), services


def threaders(shapes):
    """(symbol, the threader's argument types between the count and the tag) of every
    threader, in binding order: the shapes that every type letter has, first for the real
    letters and then for the complex ones, shape by shape; then the shapes of fewer
    letters, in table order."""
    every = [s for s in shapes if s.threader != "-" and s.types == "sdcz"]
    order = [(s, t) for letters in ("sd", "cz") for s in every for t in letters]
    order += [(s, t) for s in shapes if s.threader != "-" and s not in every for t in s.types]
    out = []
    for s, t in order:
        f = Function(0, s, t, "", False)
        out.append((f"qnl_vml_serv_threader_{s.threader_of(t)}", [f.ctype(letter, False) for _, letter, _ in s.args]))
    return out


def body_call(f, by_ref, mode):
    """The frame call of one body: a0 is the count, the arguments follow, the mode last."""
    count = "count_ref(a0)" if by_ref else "count_value(a0)"
    mode_arg = ("a{}" if by_ref else "&a{}").format(len(f.shape.args) + 1) if mode else "nullptr"
    passed = []
    for k, (_, letter, _) in enumerate(f.shape.args, 1):
        if letter == "i":
            passed.append(f"count_ref(a{k})" if by_ref else f"count_value(a{k})")
        elif letter == "a" and by_ref:
            passed.append(f"ByRef<{ELEMENT[f.letter]}>{{a{k}}}")
        else:
            passed.append(f"a{k}")
    thr = f.shape.threader_of(f.letter)
    if thr is None:
        return f"  call_pack(F_{f.key}, {count}, {mode_arg}, {', '.join(passed)});\n"
    tested = ", ".join(f"{{a{k}, {pos}}}" for k, (_, _, pos) in enumerate(f.shape.args, 1) if pos is not None)
    return (f"  call<{threader_id(thr)}, {str(f.warn).lower()}>(F_{f.key}, {count}, {mode_arg}, {{{tested}}}, "
            f"{', '.join(passed)});\n")


def function_entries(f, label):
    """The four bodies of a function: C and Fortran, each without and with the mode."""
    prelude = (f'// {label}:{f.line}\nFunction F_{f.key}{{"{f.name}", "qnl_vml_kernel_{f.key}_ttab", '
               f'"qnl_vml_kernel_{f.key}_ctab", {{}}, {{}}, {{}}}};\n')
    out = []
    for mode in (False, True):
        c_name = ("vm" if mode else "v") + f.name[1:]
        lo = c_name.lower()
        for by_ref, exports in ((False, [c_name]), (True, [lo.upper(), lo, lo + "_"])):
            passing = "ref" if by_ref else "value"
            params = [Param("n", "const int64_t*" if by_ref else "int64_t", "i", passing, PIECES)]
            params += [Param(name, f.ctype(letter, by_ref), letter, "ref" if letter not in "ai" else passing)
                       for name, letter, _ in f.shape.args]
            if mode:
                params.append(Param("mode", "const int*" if by_ref else "int", "i32", passing))
            out.append(Entry(exports[0], "void", params, exports, call=body_call(f, by_ref, mode), prelude=prelude,
                             data=f))
    return out


def cases(functions, services):
    """One row per function for the tests: its C name, threader ("" for a direct kernel),
    accuracy warning and argument letters after the count."""
    rows = []
    for f in functions:
        thr = f.shape.threader_of(f.letter)
        thr = f"qnl_vml_serv_threader_{thr}" if thr else ""
        letters = "".join(letter for _, letter, _ in f.shape.args)
        rows.append(f'    {{"{f.name}", "{thr}", {str(f.warn).lower()}, "{letters}"}},\n')
    rows = "".join(rows)
    return ("#pragma once\n// Every vector-math function: the C name, the threader it calls (\"\" for a kernel\n"
            "// called directly), whether it warns off the HA table, and the letters of its\n// arguments after n.\n"
            "struct VmlCase {\n  const char* name;\n  const char* threader;\n  bool warn;\n  const char* args;\n};\n"
            f"static const VmlCase kVmlCases[] = {{\n{rows}}};\nconstexpr int kVmlServiceNames = {4 * len(services)};\n")


def standin(b):
    """A probe threader: records every argument, a double complex scalar as two words, and computes nothing."""
    decls = ", ".join(f"{t} a{i}" for i, t in enumerate(b.params))
    args = ", ".join(f"a{i}" for i in range(len(b.params)))
    return f'{b.result} {b.symbol}({decls}) {{ qnl_probe::record_values("{b.symbol}", {args}); }}\n'


def family(tables):
    table, = tables
    shapes, functions, services = load(table)
    label = Path(table).name
    entries = [e for f in functions for e in function_entries(f, label)]
    # The mode, status and callback calls are written by hand (mode.cpp); the table gives their names.
    for s in services:
        lo = ("vml" + s).lower()
        entries.append(Entry("vml" + s, "int", [], ["vml" + s, lo.upper(), lo, lo + "_"], hidden=False, header=False))
    thread_list = threaders(shapes)
    backends = [Backend(sym, "void", ["void*", "int32_t"] + args + ["int32_t", "void*"]) for sym, args in thread_list]
    slots = "".join(f"  {threader_id(s[len('qnl_vml_serv_threader_'):])},\n" for s, _ in thread_list)
    symbols = "".join(f'    "{s}",\n' for s, _ in thread_list)
    functions_inc = "// QNL_VML_FUNCTION(type letter, Stem, group)\n" + "".join(
        f"QNL_VML_FUNCTION({f.letter}, {f.stem}, {f.shape.group})\n" for f in functions)
    return Family(
        "vml", label, entries, backends,
        # The public header with 64-bit counts, the width the bodies read: an exported
        # name whose body disagrees with its declaration there does not build.
        head='#define QNL_VML_INT int64_t\n#include "qnl_vml.h"\n#include "vml_frame.h"\n\nusing namespace qnl::vml;\n\n',
        header_head='#include <cstdint>\n\n#include "entry.h"\n#include "qnl_vml.h"\n\n'
                    "// The bodies of the vector-math functions and the threaders they call.\n",
        header_tail=(f"namespace qnl::vml {{\nconstexpr int kThreaderCount = {len(thread_list)};\n"
                     f"// The threader slots, in binding order.\nenum ThreaderId : int {{\n{slots}}};\n"
                     f"inline constexpr const char* kThreaderNames[kThreaderCount] = {{\n{symbols}}};\n"
                     "}  // namespace qnl::vml\n"),
        backend_head='#include <cstdint>\n\n#include "qnl_vml.h"\n\n',
        standin=standin,
        files={"vml_functions.inc": functions_inc},
        cases=lambda: cases(functions, services))
