#!/usr/bin/env python3
"""Build-time generator: turns the routine tables into C++ sources in the build tree.

    gen.py messages TABLE OUTDIR
    gen.py services TABLE OUTDIR
    gen.py blas TABLE OUTDIR SHARDS
    gen.py blas --probe TABLE OUT
    gen.py cblas TABLE OUTDIR SHARDS
    gen.py matcopy TABLE OUTDIR             (also --probe: see qnlgen/matcopy.py)
    gen.py lapack TABLE EXT OUTDIR SHARDS   (also --probe, --tests: see qnlgen/lapack.py)
    gen.py exports OUT NAMEFILE...
    gen.py vml TABLE OUTDIR SHARDS
    gen.py reference OUT BLAS_TABLE LAPACK_TABLE LAPACK_EXT HANDWRITTEN LIBRARY...
"""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from qnlgen import blas, cblas, exports, lapack, matcopy, messages, reference, services, vml  # noqa: E402

COMMANDS = {
    "blas": blas.main,
    "cblas": cblas.main,
    "lapack": lapack.main,
    "matcopy": matcopy.main,
    "messages": messages.main,
    "services": services.main,
    "exports": exports.main,
    "reference": reference.main,
    "vml": vml.main,
}

if __name__ == "__main__":
    if len(sys.argv) < 2 or sys.argv[1] not in COMMANDS:
        sys.exit(__doc__)
    COMMANDS[sys.argv[1]](sys.argv[2:])
