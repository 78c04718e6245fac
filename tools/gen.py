#!/usr/bin/env python3
"""Build-time generator: turns the routine tables into C++ sources in the build tree.

    gen.py messages TABLE OUTDIR
    gen.py services TABLE OUTDIR
    gen.py lapack TABLE EXT OUTDIR SHARDS   (also --probe, --tests: see qnlgen/lapack.py)
    gen.py exports OUT NAMEFILE...
"""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from qnlgen import exports, lapack, messages, services  # noqa: E402

COMMANDS = {"messages": messages.main, "services": services.main, "exports": exports.main,
            "lapack": lapack.main}

if __name__ == "__main__":
    if len(sys.argv) < 2 or sys.argv[1] not in COMMANDS:
        sys.exit(__doc__)
    COMMANDS[sys.argv[1]](sys.argv[2:])
