#!/usr/bin/env python3
"""Build-time generator: turns the routine tables into C++ sources in the build tree.

    gen.py family NAME OUTDIR SHARDS TABLE...          entries, hidden header, names, back-end header
    gen.py probe NAME OUTDIR SHARDS [--skip FILE] TABLE...   the probe back-end's stand-ins
    gen.py cases NAME OUT TABLE...                     the tests' cases
    gen.py messages TABLE OUTDIR
    gen.py lapacke-diff TABLE OUT                      the differential harness's cases
    gen.py exports OUT NAMEFILE...
    gen.py reference OUT BLAS_TABLE LAPACK_TABLE LAPACK_EXT HANDWRITTEN LIBRARY...

A family NAME is the module qnlgen/NAME.py; see qnlgen/model.py.
"""
import importlib
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from qnlgen import exports, lapacke_diff, messages, model, reference  # noqa: E402


def load(name, tables):
    """The family that the parser module qnlgen/<name>.py reads from its tables."""
    return importlib.import_module(f"qnlgen.{name}").family(tables)


def family(argv):
    name, outdir, shards, *tables = argv
    model.generate(load(name, tables), outdir, shards)


def probe(argv):
    name, outdir, shards, *tables = argv
    skip = set()
    if tables[:1] == ["--skip"]:
        skip = set(Path(tables[1]).read_text().split())
        tables = tables[2:]
    model.generate_probe(load(name, tables), outdir, shards, skip)


def cases(argv):
    name, out, *tables = argv
    model.generate_cases(load(name, tables), out)


COMMANDS = {
    "family": family,
    "probe": probe,
    "cases": cases,
    "messages": messages.main,
    "lapacke-diff": lapacke_diff.main,
    "exports": exports.main,
    "reference": reference.main,
}

if __name__ == "__main__":
    if len(sys.argv) < 2 or sys.argv[1] not in COMMANDS:
        sys.exit(__doc__)
    COMMANDS[sys.argv[1]](sys.argv[2:])
