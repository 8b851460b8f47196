"""Where measurements are written: each between its own marks in a document, so that it can be measured again."""
import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
PERFORMANCE = ROOT / "docs/performance.md"


def marks(part):
    return f"<!-- bench/{part} -->", f"<!-- end of bench/{part} -->"


def write(part, text, document=PERFORMANCE):
    """Replaces what stands between the marks of the part. Raises ValueError where the document has none."""
    begin, end = marks(part)
    old = document.read_text()
    if begin not in old or end not in old:
        raise ValueError(f"{document} has no place for bench/{part}")
    head, rest = old.split(begin, 1)
    document.write_text(f"{head}{begin}\n{text.strip()}\n{end}{rest.split(end, 1)[1]}")
