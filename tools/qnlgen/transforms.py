"""The transforms family: hand-written frames (src/transforms), so this module only
gathers their exported spellings from the tables the frames themselves are built
from, in the order of the qnl_family call:

    qnl_dfti.h           the C entries: every `Dfti...(` prototype of the public header
    dfti_fortran.def     QNL_DFTI_F(lower, UPPER, body): lower, UPPER and lower_
    fftw3/api.inc        QNL_EXPORT ... QNL_NAME(stem): fftw_stem and fftwf_stem
    fftw3.h              the plan layer's shared record: its `extern struct ... name;`
"""
import re
from pathlib import Path

from .model import Entry, Family

PATTERNS = (
    (re.compile(r"^(?:long|char\*) (Dfti\w+)\(", re.M), lambda m: [m[1]]),
    (re.compile(r"^QNL_DFTI_F\((\w+), (\w+),", re.M), lambda m: [m[1], m[2], m[1] + "_"]),
    (re.compile(r"^QNL_EXPORT .*?QNL_NAME\((\w+)\)", re.M), lambda m: ["fftw_" + m[1], "fftwf_" + m[1]]),
    (re.compile(r"^extern struct \w+ (\w+);", re.M), lambda m: [m[1]]),
)


def family(tables):
    if len(tables) != len(PATTERNS):
        raise SystemExit(f"transforms: {len(PATTERNS)} tables expected, got {len(tables)}")
    entries = []
    for table, (pattern, spellings) in zip(tables, PATTERNS):
        found = [Entry(m[1], "void", [], exports=spellings(m), hidden=False, header=False)
                 for m in pattern.finditer(Path(table).read_text())]
        if not found:
            raise SystemExit(f"{table}: no exported names found")
        entries += found
    return Family("transforms", " ".join(Path(t).name for t in tables), entries)
