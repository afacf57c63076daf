"""Holds docs/renderer-layouts.md to the assertions of the sources: sizes of classes and offsets of their fields.

Usage: layouts.py ROOT
"""
import pathlib
import re
import sys

MODULES = ["include", "utils", "mesh", "scene", "scene/nodes", "renderer"]
ALIASES = {"Settings": "SceneNodeRenderSettings"}
# Asserted too, but nobody else's business.
OURS = {"MeshCache", "Renderer", "RendererImpl", "VelmarContext", "RenderRegion"}
# Drawn on the page of the seam.
ELSEWHERE = {"LibraryObject"}


def asserted(root):
    """Maps each class to its size, if that is asserted, and to the offsets of its fields."""
    sizes, offsets = {}, {}
    for module in MODULES:
        for file in (root / module).glob("*"):
            if file.suffix not in {".h", ".cpp"}:
                continue
            text = file.read_text(encoding="utf-8")
            for name, size in re.findall(r"static_assert\(sizeof\((\w+)\) == (\d+)\)", text):
                sizes[ALIASES.get(name, name)] = int(size)
            # Some are told from the beginning of the object that holds theirs: `== 472 - 312`.
            for name, field, offset in re.findall(r"static_assert\([^;]*?offsetof\((\w+), (\w+)\) == (\d+)\)", text):
                offsets.setdefault(ALIASES.get(name, name), {})[field] = int(offset)
    return sizes, offsets


def drawn(page):
    sizes, offsets = {}, {}
    name = None
    for line in page.splitlines():
        if head := re.match(r"(\w+)(?: : \w+)? {2,}(\d+) bytes$", line):
            name = head.group(1)
            sizes[name], offsets[name] = int(head.group(2)), {}
        elif name and (row := re.match(r" *(\d+)  \S.*?\s{2,}(\w+)$", line)):
            offsets[name][row.group(2)] = int(row.group(1))
        elif not line:
            name = None
    return sizes, offsets


def main():
    root = pathlib.Path(sys.argv[1])
    sizes, offsets = asserted(root)
    drawn_sizes, drawn_offsets = drawn((root / "docs" / "renderer-layouts.md").read_text(encoding="utf-8"))
    wrong = [f"{name} has {sizes[name]} bytes, not {size}"
             for name, size in drawn_sizes.items() if sizes.get(name, size) != size]
    for name, fields in offsets.items():
        if name in OURS | ELSEWHERE:
            continue
        page = drawn_offsets.get(name, {})
        wrong += [f"{name}::{field} lies at {offset}, not at {page.get(field)}"
                  for field, offset in fields.items() if page.get(field) != offset]
    checked = sum(len(fields) for fields in offsets.values())
    print("\n".join(sorted(wrong)) if wrong else f"{checked} offsets of {len(offsets)} classes")
    return 1 if wrong or not checked else 0


sys.exit(main())
