"""Holds docs/errors.md and the sources together: each text for people is on the page, and no text there is of the past.

Usage: messages.py ROOT
"""
import pathlib
import re
import sys

MODULES = ["include", "utils", "mesh", "scene", "scene/nodes", "renderer", "api"]

LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
# A statement that reports something; its literals are texts for people even when they are a single word.
REPORT = re.compile(r"\b(throw\w*|\w*Excep(tion)?|assertThat|fail|cout|cerr|stderr|error)\b")
# What is a text, but isn't said to anybody.
NO_MESSAGES = {
    "Render Settings", "Background Settings", "Tone Mapping",  # names of nodes
    "Rectangle Light", "Parametric Surface", "Displaced Quad", "Section Plane", "Unknown type",  # kinds, shown as <type>
    "Velmar Renderer",  # a folder
    "Unknown error ",  # the runtime's words
    "uv pairs",  # a heading of the text dump
    "outer loop",  # words of an STL text
}


def without_comments(text):
    return re.sub(r'("(?:[^"\\\n]|\\.)*")|//[^\n]*|/\*.*?\*/', lambda match: match.group(1) or "", text, flags=re.S)


def literals_of(file):
    """Pairs of a literal and whether its statement reports something."""
    text = re.sub(r"^\s*#.*", "", without_comments(file.read_text(encoding="utf-8")), flags=re.M)
    text = re.sub(r"\bstatic_assert\(.*?\);", "", text, flags=re.S)
    # Two that are neighbours become one.
    text = re.sub(r'((?:[^"\\]|\\.))"\s+"', r"\1", text)
    begin = 0
    for match in LITERAL.finditer(text):
        begin = max(text.rfind(mark, 0, match.start()) for mark in ";{}") + 1
        end = text.find(";", match.end())
        yield match.group(1).replace("\\n", "").replace('\\"', '"'), bool(REPORT.search(text[begin:end]))


def is_for_people(literal, reported):
    if literal in NO_MESSAGES or not re.search("[A-Za-z]{2}", literal) or literal.startswith("<"):
        return False
    return reported or " " in literal


def said(literal):
    """The texts between the places of a printf format."""
    return [piece for piece in re.split(r"%[sdu]", literal) if re.search("[A-Za-z]", piece)]


def is_said(piece, everything):
    """Whether the sources hold it, at most in two parts that are joined when it is said."""
    return any(piece[:cut] in everything and piece[cut:] in everything for cut in range(len(piece) + 1))


def main():
    root = pathlib.Path(sys.argv[1])
    page = (root / "docs" / "errors.md").read_text(encoding="utf-8")
    # A message may be wrapped.
    prose = re.sub(r"\s*\n\s*", " ", page)
    files = [f for m in MODULES for f in sorted((root / m).glob("*")) if f.suffix in {".h", ".cpp"}]
    wrong, everything = [], ""
    for file in files:
        for literal, reported in literals_of(file):
            everything += literal + "\n"
            if is_for_people(literal, reported):
                wrong += [f"{file.relative_to(root)}: \"{piece}\" isn't in docs/errors.md"
                          for piece in said(literal) if piece not in prose]
    # The first column of the tables; the other way round.
    for row in re.findall(r"^\| (`.*?`) \| ", page, re.M):
        for message in re.findall(r"`([^`]+)`", row):
            wrong += [f"docs/errors.md: no source says \"{piece}\""
                      for piece in re.split(r"<\w+>", message) if not is_said(piece, everything)]
    print("\n".join(wrong) if wrong else f"{len(files)} files say nothing that isn't on the page")
    return 1 if wrong or not files else 0


sys.exit(main())
