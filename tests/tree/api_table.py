"""Fails when the table of the exported functions, the declarations, the export list and the list of names that hosts
rely on disagree.

Usage: api_table.py ROOT

It reads each of them by itself, so that a slip of the generator shows too.
"""
import pathlib
import re
import sys
import tomllib


def families(root):
    return tomllib.loads((root / "api/interface.toml").read_text(encoding="utf-8"))["families"]


def table(root):
    """Each function of the table: name, result, arguments as (type, name), and the function that implements it."""
    functions = []
    for family in families(root):
        text = (root / f"api/functions/{family}.toml").read_text(encoding="utf-8")
        for entry in tomllib.loads(text)["function"]:
            arguments = [(a["type"], a["name"]) for a in entry.get("arguments", [])]
            result = entry.get("returns", {"type": "void"})["type"]
            functions.append((entry["name"], result, arguments, entry.get("implementation", entry["name"])))
    return functions


def declarations(root):
    """Each function that velmarapi.h declares, in the order of the families: name, result, arguments."""
    functions = []
    included = re.findall(r'#include "velmarapi/(\w+)\.h"', (root / "include/velmarapi.h").read_text(encoding="utf-8"))
    for family in filter(included.count, families(root)):
        header = (root / f"include/velmarapi/{family}.h").read_text(encoding="utf-8")
        text = re.sub(r"/\*.*?\*/", "", header, flags=re.S)
        for result, name, inside in re.findall(r"VELMAR_API\s+([^;()]*?)\s*\b(\w+)\(([^)]*)\);", text):
            arguments = []
            for declared in inside.split(",") if inside.strip() != "void" else []:
                declared = " ".join(declared.split())
                parts = ("...", "...") if declared == "..." else re.fullmatch(r"(.*?)\s*(\w+)", declared).groups()
                arguments.append(parts)
            functions.append((name, result, arguments))
    return functions


def exports(path):
    """Each name of an export list with the function that implements it."""
    lines = (line.split(";")[0].strip() for line in path.read_text(encoding="utf-8").splitlines())
    pairs = (line.partition("=") for line in lines if line and not re.match(r"(LIBRARY|EXPORTS)\b", line))
    return [(name.strip(), target.strip() or name.strip()) for name, _, target in pairs]


def groups(pairs):
    """The sets of names that are one function."""
    by_target = {}
    for name, target in pairs:
        by_target.setdefault(target, set()).add(name)
    return {frozenset(names) for names in by_target.values()}


def differences(what, listed, wanted):
    wrong = [f"{what} lacks {item}" for item in wanted if item not in listed]
    wrong += [f"{what} has {item}, which isn't in the table" for item in listed if item not in wanted]
    return wrong or ([f"{what} has a different order than the table"] if listed != wanted else [])


def main():
    root = pathlib.Path(sys.argv[1])
    functions = table(root)
    pairs = [(name, target) for name, _, _, target in functions]
    wrong = differences("the header", declarations(root), [function[:3] for function in functions])
    wrong += differences("the export list", exports(root / "api/VelmarAPI.def"), pairs)
    hosts = exports(root / "tests/tree/exports.def")
    wrong += differences("the list for hosts", sorted(name for name, _ in hosts), sorted(name for name, _ in pairs))
    wrong += [f"one function for hosts and not in the table, or the other way round: {', '.join(sorted(group))}"
              for group in groups(hosts) ^ groups(pairs)]
    print("\n".join(wrong) if wrong else f"{len(functions)} functions agree")
    return 1 if wrong or not functions else 0


sys.exit(main())
