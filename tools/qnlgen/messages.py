"""messages.tbl -> messages_table.cpp: the rows hold their texts as offsets into one
character array (see common.TextPool)."""
from pathlib import Path

from .common import TextPool, banner, write_if_changed


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
    pool = TextPool()
    # A backslash followed by n in the table is a line feed; every other character is itself.
    offsets = [pool.add(text.replace("\\n", "\n")) for _, _, text in rows]
    out = [banner(table), '#include "messages.h"\n', "namespace qnl::messages {\n",
           f"static_assert(kRowCount == {len(rows)});\n", "const char kText[] =\n", pool.literal(), ";\n",
           "const Row kRows[kRowCount] = {\n"]
    for (number, severity, _), at in zip(rows, offsets):
        out.append(f"    {{{number}, {severity}, {at}}},\n")
    out.append("};\n}  // namespace qnl::messages\n")
    write_if_changed(Path(outdir) / "messages_table.cpp", "".join(out))
