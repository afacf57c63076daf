"""Generates the files that list the exported functions from the table, api/functions/*.toml, and the layouts and slots in
the documents from the headers.

Usage: python3 scripts/generate [--check]

With --check nothing is written: the files that differ from their sources are listed, and the exit status is 1 if there are
any. Each module that is imported below but table.py and text.py generates one output: its files(table) returns the text
of each file by its path from the root.
"""
import sys

import c_interface
import cpp_binding
import csharp_binding
import kit
import layouts
import microsoft
import pages
import python_binding
import setting_defaults
from table import ROOT, load

#: Folders in which every file is generated.
GENERATED_FOLDERS = ["docs/api", "include/velmarapi"]


def generated() -> dict[str, str]:
    table = load()
    files: dict[str, str] = {}
    for output in (c_interface, cpp_binding, csharp_binding, kit, layouts, microsoft, pages, python_binding, setting_defaults):
        files.update(output.files(table))
    return files


def main() -> int:
    check = sys.argv[1:] == ["--check"]
    if sys.argv[1:] and not check:
        sys.exit(__doc__)
    files = generated()
    stale = [path for folder in GENERATED_FOLDERS for path in sorted((ROOT / folder).glob("*"))
             if path.relative_to(ROOT).as_posix() not in files]
    changed = [name for name, text in files.items()
               if not (ROOT / name).is_file() or (ROOT / name).read_bytes() != text.encode()]
    if check:
        for path in stale:
            print(f"{path.relative_to(ROOT).as_posix()} isn't generated from the table")
        for name in changed:
            print(f"{name} differs from the table or the headers")
        wrong = bool(stale or changed)
        print("Edit api/functions/ or the headers and run ./dev generate." if wrong else f"{len(files)} files are up to date")
        return int(wrong)
    for path in stale:
        path.unlink()
    for name in changed:
        (ROOT / name).parent.mkdir(parents=True, exist_ok=True)
        (ROOT / name).write_bytes(files[name].encode())
    return 0


sys.exit(main())
