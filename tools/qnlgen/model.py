"""The entry model every family shares, and the emitters that turn it into sources.

A family is one table (`src/<area>/<family>.sig`), one parser module
(`tools/qnlgen/<family>.py`) and one CMake call (`qnl_family(...)`, cmake/QnlFamily.cmake).

The parser module defines

    def family(tables) -> Family

that reads its tables (the paths given in the CMake call, in order) and returns a
`Family`: the entries it exports (`Entry`, each with typed `Param`s), the back-end
symbols they bind (`Backend`), and the few texts only the family knows (the includes
of its sources, the frame call in each body, its test cases). Everything else comes
from here:

    <name>_entries_<k>.cpp   the entry bodies, spread by `shard()` over SHARDS files
    <name>_gen.h             typed prototypes of every hidden body
    <name>.names             the exported spellings (merged into the version script)
    backend_<name>.h         what a back-end exports for the family
    probe_<name>_<k>.cpp     the probe back-end's stand-ins (when the call says PROBE)
    <name>_cases.inc         the tests' cases (when the call says CASES)
    FILES                    other files the family's sources or back-ends include

To add a family: write the table with the letters of VOCABULARY below, write the module
tools/qnlgen/<name>.py (tools/gen.py finds it by the family's name), and call in
src/CMakeLists.txt (or a cmake file it includes)

    qnl_family(NAME lapacke TABLES ${CMAKE_CURRENT_SOURCE_DIR}/lapacke/lapacke.sig
               SHARDS 2 SOURCES lapacke/lapacke_frame.cpp INCLUDES lapacke PROBE CASES)

The bodies and SOURCES are compiled into the facade, the names exported, the stand-ins
built into every probe back-end and the cases generated for the tests (a test includes
"<name>_cases.inc"); nothing else changes. The family's sources include its own hidden
header; other families' bodies are reached through theirs (blas_gen.h, lapack_gen.h).

The smallest module (see matcopy.py, services.py):

    def family(tables):
        table, = tables
        rows = ...                                    # parse with common.table_rows
        entries = [Entry(name, "void", [Param("n", "const QnlLayerInt*", "i", "ref", WIDE), ...],
                         exports=[name, name + "_"], call="  return frame<D_x>(qnl::vp(a0));\n",
                         prelude="struct D_x {...};\n") for ... in rows]
        backends = [Backend("qnl_x_" + name, "void", ["const int64_t*"]) for ...]
        return Family("x", table, entries, backends, head='#include "x_frame.h"\n',
                      cases=lambda: "...")

A body's parameters are a0, a1, ... (Param.cname overrides); the call gets them by those
names. Entries, back-end symbols and stand-ins are spread over the CMake call's SHARDS
(PROBE_SHARDS) files, at most MAX_SHARD each: the generator stops with a message when
the count is too small.

An entry whose parameters have the `twin` width rule gets two bodies, one per interface
layer (`qnl_lp64_<name>`, `qnl_ilp64_<name>` for a `symbol` qnl_<name>; "{I}" in a
parameter's C type and in the call is the layer's integer). With `selector` set, each
exported spelling is a C-layer selector (QNL_C_SELECTOR, src/runtime/c_select.h, which
the family's sources must include) that settles the interface layer on first use and
jumps to the body of the layer in force, every argument register untouched; an entry
without twin parameters has one body that both layers reach. See cblas.py.
"""
from dataclasses import dataclass, field
from pathlib import Path

from .common import banner, write_if_changed

MAX_SHARD = 500  # entries in one generated source at most

# VOCABULARY
# Argument letters, the same in every table:
#   c  character option (Fortran: by reference, a hidden length 1 at the back-end;
#      C: a char by value)
#   i  integer scalar at the interface layer's width (Fortran: by reference, widened
#      into a 64-bit local on LP64; C: by value, one body per width, or one body that
#      reads the layer's half of the register)
#   o  integer scalar the routine writes (Fortran, by reference)
#   n  dimension or stride as size_t (C); read at the layer's width in Fortran
#   a  scalar of the routine's element type (C: by value when real; complex as
#      const void* in CBLAS, by value in the matrix copies; Fortran: by address, read)
#   r  real value of the element's precision (C: a scalar by value, an array by
#      address; Fortran: a scalar or an array by address, read)
#   w  real value the routine writes, by address (a scalar or an array)
#   x  integer index array, read (copied to 64-bit indices on LP64)
#   j  const integer array at the body's width
#   e  element data the routine reads (an array; in Fortran also a scalar by address)
#   y  element data the routine writes (likewise)
#   v  const void*                   f  function pointer
#   p  anything else, passed on as it is
#   L layout   T transposition   U triangle   G diagonal   S side   D identifier
#   K transposition of a packed operand (int)   N const array of transpositions
#   A const array of element pointers            C array of element pointers
# A data letter (a e y r w A C) may end in ".s" ".d" ".c" ".z": the element is then of
# that precision rather than the routine's ("x:e.s" in dsdot, "swork:y.s" in dsgesv).
# LAPACK callbacks are f1 f2 f3: a LOGICAL function of that many element addresses.
# LAPACK integer arrays take two- and three-letter words (io ii iio iw ix lw: see
# lapack.sig); the services spell sized forms as words (i32 u64 f64 ptr ptr* i32v str txt
# i32o u64o: see services.sig).
#   c*  a character by address that the routine reads and may write (C: char*; LAPACKE's equed)
# Words of the C interface of LAPACK (lapacke.sig), where an array carries its precision
# (".T"), its extents in brackets and its direction (/i /o /io):
#   yw.T[len] yx.T[expr]  element workspace sized by a workspace query (len: its length
#      argument) or of a fixed length (like iw and ix for integers)
#   yx.T[expr]@len  a fixed length that the high level also passes as argument len
#   iw[] yw.T[]  sized by the answer its own query leaves in it, without a length argument
#   ow[len]@work+k/o  an output of the high level alone (after every argument of the
#      routine): len elements of workspace `work` from element k, copied out after the
#      call (/io: also in before it)
#   vec.T[len]  vector        ge sy tr gb sb tb sp tp pf tf  matrix of that storage shape
#      (general, symmetric, triangular, general band, symmetric band, triangular band,
#      symmetric packed, triangular packed, symmetric RFP, triangular RFP)
# Result letters:
#   -  none   s float   d double   c complex float   z complex double
#   i  integer: int32 (services), a Fortran INTEGER of the layer's width (LAPACK)
#   l  64-bit integer (a LOGICAL function in LAPACK)   a character   p pointer
#   R  real type of the prefix   T element type of the prefix
#   P  pointer to the element type   Z CBLAS_INDEX (size_t)
LETTERS = set("cionarwxjeyvfpLTUGSDKNAC")
WORDS = {"io", "ii", "iio", "iw", "ix", "lw", "f1", "f2", "f3", "i32", "u64", "f64", "ptr", "ptr*", "i32v",
         "str", "txt", "i32o", "u64o", "ver", "exith", "xerh", "progh", "pivh", "i32r", "i64o", "f64r", "f64o",
         "c*", "yw", "yx", "ow", "vec", "ge", "sy", "tr", "gb", "sb", "tb", "sp", "tp", "pf", "tf"}
PRECISIONS = "sdcz"
REAL_OF = {"s": "s", "d": "d", "c": "s", "z": "d"}
# C type of a data letter at a Fortran entry, where every argument comes by address:
# {T} is the element type, {R} its real type.
BY_ADDRESS = {"e": "const {T}*", "a": "const {T}*", "y": "{T}*", "r": "const {R}*", "w": "{R}*",
              "j": "const QnlLayerInt*", "A": "const {T}* const*", "C": "{T}* const*"}

# width rules of a parameter
WIDE = "widen"     # read at the layer's width, widened into a 64-bit local
TWIN = "twin"      # one body per layer, the parameter at the layer's width
NARROW = "narrow"  # a 64-bit value narrowed to the back-end's 32 bits
PIECES = "pieces"  # a 64-bit count cut into 32-bit pieces for the back-end
WIDTHS = (("lp64", "int32_t"), ("ilp64", "int64_t"))


@dataclass
class Param:
    name: str
    ctype: str             # type in the body's prototype; "{I}" is the layer's integer
    role: str = "p"        # a VOCABULARY letter or word
    passing: str = "ref"   # "ref" (an address) or "value"
    width: str = ""        # one of the width rules, "" when the width is fixed
    cname: str = None      # name in the prototype: a<k> unless given ("" for none)

    def __post_init__(self):
        if self.role not in LETTERS and self.role not in WORDS:
            raise SystemExit(f"parameter {self.name}: {self.role} is not a letter of the vocabulary")

    def typed(self, integer="int64_t"):
        return self.ctype.replace("{I}", integer)


@dataclass
class Entry:
    name: str              # hidden body qnl_body_<name> unless `symbol` says otherwise
    result: str            # C type of the result
    params: list
    exports: list          # exported spellings, aliases of the body (selectors for twins)
    call: str = ""         # statements of the body; "{I}" is the layer's integer in twins
    source: str = ""       # "table:line" of the row, for the family's comments and messages
    prelude: str = ""      # code for the shard's unnamed namespace
    before: str = ""       # file-scope code ahead of the body
    after: str = ""        # file-scope code after the aliases (twins: before the selectors)
    symbol: str = None
    selector: bool = False  # the exports are C-layer selectors (also without twin bodies)
    hidden: bool = True    # generated here; False for a hand-written body
    header: bool = True    # declared in <name>_gen.h
    width_exports: bool = False  # twins: the bodies are also exported as <export>_lp64/_ilp64
    layered: bool = False  # twin bodies even without a twin parameter (state kept per layer)
    data: object = None    # the family's own record

    @property
    def body(self):
        return self.symbol or "qnl_body_" + self.name

    @property
    def twin(self):
        return self.layered or any(p.width == TWIN for p in self.params)

    def twin_body(self, width):
        """The body of a layer: its own for a twin, the one body otherwise."""
        return self.body.replace("qnl_", f"qnl_{width}_", 1) if self.twin else self.body

    def bodies(self):
        """(symbol, layer's integer, layer or None) of each body."""
        if self.twin:
            return [(self.twin_body(w), integer, w) for w, integer in WIDTHS]
        return [(self.body, "int64_t", None)]

    def names(self):
        out = list(self.exports)
        if self.width_exports:
            out += [f"{e}_{w}" for e in self.exports for w, _ in WIDTHS]
        return out

    def prototype(self, integer="int64_t", named=True):
        if not self.params:
            return "void"
        if not named:
            return ", ".join(p.typed(integer) for p in self.params)
        return ", ".join(decl(p.typed(integer), f"a{k}" if p.cname is None else p.cname)
                         for k, p in enumerate(self.params))

    def definitions(self):
        """The body (or twin bodies), their aliases, and the selectors of a C layer."""
        out = [self.before]
        for sym, integer, width in self.bodies():
            result = self.result.replace("{I}", integer)
            out.append(f"extern \"C\" QNL_HIDDEN {result} {sym}({self.prototype(integer)}) {{\n"
                       f"{self.call.replace('{I}', integer)}}}\n")
            if self.width_exports and width:
                out += [f"QNL_ALIAS({sym}, {s}_{width})\n" for s in self.exports]
            if not self.selector:
                out += [f"QNL_ALIAS({sym}, {s})\n" for s in self.exports]
        out.append(self.after)
        if self.selector:
            out += [f"QNL_C_SELECTOR({s}, {self.twin_body('lp64')}, {self.twin_body('ilp64')})\n"
                    for s in self.exports]
        return "".join(out) + "\n"

    def declarations(self):
        return [f"extern \"C\" QNL_HIDDEN {self.result.replace('{I}', integer)} {sym}"
                f"({self.prototype(integer, named=False)});\n"
                for sym, integer, _ in self.bodies()]


@dataclass
class Backend:
    """A symbol a back-end exports; `routine` is the library routine it stands for,
    `plain` the symbol a twin (_direct, _ao_) may fall back on."""
    symbol: str
    result: str
    params: list           # C types
    routine: str = None
    plain: str = None
    complex_result: str = None  # the result type a result address stands for

    def prototype(self):
        return f"{self.result} {self.symbol}({', '.join(self.params) or 'void'});\n"


@dataclass
class Family:
    name: str
    label: str             # the tables, for the banner
    entries: list
    backends: list = field(default_factory=list)
    head: str = ""         # includes of every entry shard
    header_head: str = ""  # includes and comment of <name>_gen.h
    header_tail: str = ""
    backend_head: str = ""  # includes and comment of backend_<name>.h, ahead of extern "C"
    probe_head: str = ""   # includes of the probe's stand-ins
    standin: object = None  # Backend -> stand-in text; plain word recorder if None
    cases: object = None   # () -> the tests' case text
    files: dict = field(default_factory=dict)  # name -> text of the call's FILES


def data_letter(word, where):
    """("e", None) for "e", ("e", "s") for "e.s": a data letter and the precision it names."""
    letter, _, precision = word.partition(".")
    if letter not in BY_ADDRESS or (precision and precision not in PRECISIONS):
        raise SystemExit(f"{where}: {word} is not a data letter of the vocabulary")
    return letter, precision or None


def by_address(letter, precision, elements):
    """The C type of a Fortran data argument; `elements` names the type of each precision."""
    return (BY_ADDRESS[letter].replace("{T}", elements[precision])
            .replace("{R}", elements[REAL_OF[precision]]))


def decl(ctype, name):
    if name and "(*)" in ctype:  # a function pointer names its parameter inside
        return ctype.replace("(*)", f"(*{name})", 1)
    return f"{ctype} {name}" if name else ctype


def shard(items, count):
    """Spreads items evenly over `count` files; a file holds MAX_SHARD at most."""
    count = int(count)
    size = max(1, -(-len(items) // count))
    if size > MAX_SHARD:
        raise SystemExit(f"{len(items)} entries need more than {count} shards of {MAX_SHARD}")
    return [items[k * size:(k + 1) * size] for k in range(count)]


def entry_source(family, part):
    # Each shard sees the prototypes of its own bodies: a definition that strays fails to build.
    text = [banner(family.label), family.head, f'#include "{family.name}_gen.h"\n\n']
    # Entries may share a prelude (the two levels of one routine): it appears once.
    preludes = list(dict.fromkeys(e.prelude for e in part if e.prelude))
    if preludes:
        # Traits stay in an unnamed namespace; the bodies are extern "C" and hidden.
        text += ["namespace {\n"] + preludes + ["}  // namespace\n\n"]
    text += [e.definitions() for e in part if e.hidden]
    return "".join(text)


def hidden_header(family):
    hdr = [banner(family.label), "#pragma once\n", family.header_head]
    for e in family.entries:
        if e.header:
            hdr += e.declarations()
    hdr.append(family.header_tail)
    return "".join(hdr)


def backend_header(family):
    out = [banner(family.label), "#pragma once\n", family.backend_head, 'extern "C" {\n']
    out += [b.prototype() for b in family.backends]
    out.append("}\n")
    return "".join(out)


def names(family):
    return "\n".join(n for e in family.entries for n in e.names()) + "\n"


def word_standin(b):
    """A stand-in that records every argument as a word and answers what the test chose."""
    decls = ", ".join(f"{t} a{i}" for i, t in enumerate(b.params)) or "void"
    words = ", ".join(f"qnl_probe::word(a{i})" for i in range(len(b.params)))
    return (f"{b.result} {b.symbol}({decls}) {{\n"
            f"  const uint64_t w[] = {{{words or '0'}}};\n"
            f"  return qnl_probe::answer<{b.result}>(\"{b.symbol}\", w, {len(b.params)});\n}}\n")


def generate(family, outdir, shards):
    out = Path(outdir)
    for k, part in enumerate(shard(family.entries, shards)):
        write_if_changed(out / f"{family.name}_entries_{k}.cpp", entry_source(family, part))
    write_if_changed(out / f"{family.name}_gen.h", hidden_header(family))
    write_if_changed(out / f"{family.name}.names", names(family))
    write_if_changed(out / f"backend_{family.name}.h", backend_header(family))
    for name, text in family.files.items():
        write_if_changed(out / name, banner(family.label) + text)


def generate_probe(family, outdir, shards, skip=()):
    standin = family.standin or word_standin
    syms = sorted((b for b in family.backends if b.symbol not in skip), key=lambda b: b.symbol)
    head = banner(family.label) + '#include "probe_backend.h"\n' + f'#include "backend_{family.name}.h"\n\n'
    for k, part in enumerate(shard(syms, shards)):
        text = [head, family.probe_head] + [standin(b) for b in part]
        write_if_changed(Path(outdir) / f"probe_{family.name}_{k}.cpp", "".join(text))


def generate_cases(family, out):
    write_if_changed(out, banner(family.label) + (family.cases() if family.cases else ""))
