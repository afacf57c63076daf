"""Fails when a module includes a header of a module above it.

Usage: include_direction.py ROOT
"""
import pathlib
import re
import sys

# From the bottom to the top. A file belongs to the innermost of these folders.
ORDER = ["include", "utils", "mesh", "scene", "scene/nodes", "scene/reading", "renderer", "api", "import", "kit"]
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]')


def module_of(path):
    folders = [m for m in ORDER if path.startswith(m + "/")]
    return max(folders, key=len) if folders else None


def main():
    root = pathlib.Path(sys.argv[1])
    files = sorted({f for m in ORDER for f in root.glob(m + "/**/*") if f.suffix in {".h", ".cpp", ".c"}})
    wrong = []
    for file in files:
        name = file.relative_to(root).as_posix()
        level = ORDER.index(module_of(name))
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            target = module_of(match.group(1)) if match else None
            if target and ORDER.index(target) > level:
                wrong.append(f"{name}:{number}: {ORDER[level]} must not include {match.group(1)}")
            elif match and match.group(1).startswith("../"):
                wrong.append(f"{name}:{number}: includes are written from the root")
    print("\n".join(wrong) if wrong else f"{len(files)} files include downwards only")
    return 1 if wrong or not files else 0


sys.exit(main())
