"""Fails if a document names a file, or a heading of one, that doesn't exist.

Usage: links.py ROOT

Checks every Markdown file of the tree. A name is the target of a link, or a path in backquotes that begins with a folder of the
tree; backquoted paths are relative to the root or to the document's own folder.
"""
import pathlib
import re
import sys

SKIPPED = {"build", "deps", "dist", "demo", ".git"}
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
QUOTED = re.compile(r"`([\w.-]+(?:/[\w.-]+)*\.(?:md|py|cmake|in|sh|h|cpp|c|def|toml|txt)|[\w.-]+(?:/[\w.-]+)*/)`")


def anchors_of(text):
    """The anchors of headings: lower case, hyphens for blanks, and nothing else but letters and digits."""
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```", "", text, flags=re.M | re.S), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def check_link(document, link):
    target, _, anchor = link.partition("#")
    file = (document.parent / target) if target else document
    if not file.exists():
        return f"links to {link}, which doesn't exist"
    if anchor and file.suffix == ".md" and anchor not in anchors_of(file.read_text(encoding="utf-8")):
        return f"links to {link}, which has no such heading"
    return None


def check_quoted(root, document, folders, path):
    top = path.split("/")[0]
    if top not in folders or "/" not in path:
        return None
    if (root / path).exists() or (document.parent / path).exists():
        return None
    return f"names `{path}`, which doesn't exist"


def main():
    root = pathlib.Path(sys.argv[1])
    folders = {f.name for f in root.iterdir() if f.is_dir()} - SKIPPED
    documents = [f for f in sorted(root.rglob("*.md")) if f.relative_to(root).parts[0] not in SKIPPED]
    wrong, links = [], 0
    for document in documents:
        text = document.read_text(encoding="utf-8")
        prose = re.sub(r"^```.*?^```|^    .*?$", "", text, flags=re.M | re.S)
        found = [check_link(document, link) for link in LINK.findall(prose) if not re.match(r"\w+:", link)]
        found += [check_quoted(root, document, folders, path) for path in QUOTED.findall(prose)]
        links += len(found)
        wrong += [f"{document.relative_to(root)} {problem}" for problem in found if problem]
    print("\n".join(wrong) if wrong else f"{links} names in {len(documents)} documents")
    return 1 if wrong or not links else 0


sys.exit(main())
