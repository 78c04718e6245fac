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


class TextPool:
    """Strings packed into one character array, each ending in a zero byte and named
    by its byte offset: a record that holds offsets rather than pointers needs no
    relocation when the library loads, so its page stays shared and clean. Equal
    strings share one offset; offset 0 is the empty string, which records may use
    for "none"."""

    def __init__(self):
        self.data = bytearray(b"\0")
        self.at = {"": 0}

    def add(self, text):
        if text not in self.at:
            self.at[text] = len(self.data)
            self.data += text.encode() + b"\0"
        return self.at[text]

    def literal(self, per_line=100):
        """The pool as C string literals, one piece per line; bytes outside printable
        ASCII (and the quote and backslash) as three-digit octal escapes, so that no
        escape runs into the character after it."""
        pieces, cur = [], ""
        for b in self.data:
            cur += chr(b) if 32 <= b < 127 and b not in (34, 92) else f"\\{b:03o}"
            if len(cur) >= per_line or b == 0 and len(cur) >= per_line // 2:
                pieces.append(f'    "{cur}"\n')
                cur = ""
        if cur:
            pieces.append(f'    "{cur}"\n')
        return "".join(pieces)
