"""Holds docs/scene-document.md and the writers of nodes together: each element has an example, and each example is XML of
elements that exist.

Usage: elements.py ROOT
"""
import pathlib
import re
import sys
import xml.etree.ElementTree

# The calls that write an element, the tables of options, and the names that a material's kind gives.
WRITERS = [r'\bwrite\w*\((?:[^;()"]|\([^()]*\))*"(\w+)"', r'\{"(\w+)", &Settings::', r'TypeNameInto[^}]*String\("(\w+)"\)',
           r'"<(\w+)>']


def elements_of(root):
    names = set()
    for file in sorted((root / "scene").rglob("*.cpp")):
        text = file.read_text(encoding="utf-8")
        for pattern in WRITERS:
            names.update(re.findall(pattern, text))
    return names


def shown_in(page):
    names, wrong = set(), []
    for example in re.findall(r"^```xml\n(.*?)^```", page, re.M | re.S):
        try:
            # Some are parts of a node.
            tree = xml.etree.ElementTree.fromstring("<part>" + re.sub(r"<\?.*?\?>", "", example) + "</part>")
        except xml.etree.ElementTree.ParseError as problem:
            wrong.append(f"an example isn't XML: {problem}:\n{example}")
            continue
        names.update(element.tag for element in tree.iter() if element is not tree)
    return names, wrong


def main():
    root = pathlib.Path(sys.argv[1])
    written = elements_of(root)
    shown, wrong = shown_in((root / "docs" / "scene-document.md").read_text(encoding="utf-8"))
    wrong += [f"<{name}> has no example" for name in sorted(written - shown)]
    wrong += [f"<{name}> is written by nobody" for name in sorted(shown - written)]
    print("\n".join(wrong) if wrong else f"{len(written)} elements have examples")
    return 1 if wrong or not written else 0


sys.exit(main())
