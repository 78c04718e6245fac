"""Merges the name lists of all families into the linker's version script."""
from pathlib import Path

from .common import write_if_changed


def main(argv):
    out, *lists = argv
    names = []
    for path in lists:
        names += [n for n in Path(path).read_text().split() if n]
    dup = sorted({n for n in names if names.count(n) > 1})
    if dup:
        raise SystemExit(f"exported more than once: {' '.join(dup[:20])}")
    body = "".join(f"    {n};\n" for n in sorted(names))
    write_if_changed(out, "{\n  global:\n" + body + "  local: *;\n};\n")
