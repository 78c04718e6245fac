"""Helpers shared by the generators."""
from pathlib import Path


def banner(table, tool="tools/gen.py"):
    return f"// generated from {table} by {tool}; do not edit\n"


def write_if_changed(path, text):
    """Writes `text` unless the file already holds it, so builds stay incremental."""
    path = Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_text() != text:
        path.write_text(text)


def table_rows(path):
    """Yields (line number, fields) for each non-blank, non-comment line."""
    for number, line in enumerate(Path(path).read_text().splitlines(), 1):
        line = line.split("#", 1)[0].strip()
        if line:
            yield number, line.split()



def split_top(text):
    """Splits `text` at the commas outside parentheses: "a,b(c,d)" -> ["a", "b(c,d)"]."""
    depth, cur, out = 0, "", []
    for ch in text:
        if ch == "," and depth == 0:
            out.append(cur)
            cur = ""
            continue
        depth += ch == "("
        depth -= ch == ")"
        cur += ch
    return out + [cur]
