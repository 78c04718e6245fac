"""messages.tbl -> messages_table.cpp"""
from pathlib import Path

from .common import banner, write_if_changed


def main(argv):
    table, outdir = argv
    rows = []
    for line in Path(table).read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        number, severity, text = line.split("\t", 2)
        rows.append((int(number), int(severity), text))
    if [r[0] for r in rows] != list(range(len(rows))):
        raise SystemExit(f"{table}: rows must be numbered 0, 1, 2, ... in order")
    out = [banner(table), '#include "messages.h"\n', "namespace qnl::messages {\n",
           f"static_assert(kRowCount == {len(rows)});\n", "const Row kRows[kRowCount] = {\n"]
    for number, severity, text in rows:
        literal = '"' + text.replace("\\", "\\\\").replace("\\\\n", "\\n").replace('"', '\\"') + '"'
        out.append(f"    {{{number}, {severity}, {literal}}},\n")
    out.append("};\n}  // namespace qnl::messages\n")
    write_if_changed(Path(outdir) / "messages_table.cpp", "".join(out))
