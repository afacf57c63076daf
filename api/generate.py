#!/usr/bin/env python3
"""Makes from the table of the exported functions, api/functions/*.toml, everything that lists them:

include/velmarapi/<family>.h   the declarations with their comments
api/VelmarAPI.def              the export list
docs/api/                      a page for each function, and an index
python/velmar/_functions.py    the declarations for ctypes

Usage: generate.py [--check]

With --check nothing is written; files that aren't what the table gives are listed, and the exit status tells.

A file of the table is a family. Its functions stand in the order of the header and of the export list. Keys of a
function:

name, arguments, returns   the prototype. An argument has a type, where it makes sense a unit and a shape, and a meaning
                           unless the brief says it; a missing `returns` is void.
brief, details             what it does.
as                         the function that this one is another name for in all but the types of its arguments; what is
                           missing here is told there.
implementation             the function behind the name, when it isn't the one of that name. Functions with one
                           implementation share an address.
ownership                  who owns what afterwards, when that changes.
throws, prints, silent     exceptions; what goes to the standard streams; failures that aren't reported.
example                    C statements, between the family's example_begin and example_end.

A family has a title, where its header needs them `about` and `declarations`, and the ownership of functions that tell
none.
"""
import itertools
import pathlib
import re
import sys
import textwrap
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent
NOTICE = "Made by `./dev generate` from api/functions/{}; make changes there."
WIDTH = 120
# The functions of the table that was loaded.
NAMES = set()
# What an argument is that the brief tells all about.
UNSAID = {"x": "the x component", "y": "the y component", "z": "the z component", "...": "what the library takes"}
FUNCTION_KEYS = {"name", "brief", "details", "as", "arguments", "returns", "implementation", "ownership", "throws",
                 "prints", "silent", "example"}
C_TYPES = {
    "double": "c_double", "int": "c_int", "unsigned": "c_uint", "int32_t": "c_int32", "uint32_t": "c_uint32",
    "uint64_t": "c_uint64", "VelmarBool": "c_bool", "const char*": "c_char_p", "void*": "c_void_p",
    "const float*": "POINTER(c_float)", "const uint32_t*": "POINTER(c_uint32)",
}


# ---- the table -------------------------------------------------------------------------------------------------------


def paragraphs(text):
    return [" ".join(part.split()) for part in text.strip().split("\n\n")]


def load(folder=ROOT / "api" / "functions"):
    """The families by name, with every function's missing keys filled in."""
    families = {}
    for path in sorted(folder.glob("*.toml")):
        with open(path, "rb") as file:
            families[path.stem] = tomllib.load(file)
    functions = {}
    for name, family in families.items():
        family["name"] = name
        for function in family["function"]:
            unknown = function.keys() - FUNCTION_KEYS
            if unknown:
                raise ValueError(f"{function['name']}: unknown keys {sorted(unknown)}")
            if function["name"] in functions:
                raise ValueError(f"{function['name']} stands twice in the table")
            functions[function["name"]] = function
            NAMES.add(function["name"])
            function["family"] = family
            complete(function, functions)
    for function in functions.values():
        function["shared_with"] = [other["name"] for other in functions.values()
                                   if other is not function and other["implementation"] == function["implementation"]]
    return families


def complete(function, functions):
    model = functions[function["as"]] if "as" in function else {}
    for key in ("brief", "details", "ownership", "throws", "prints", "silent", "returns"):
        if key in model:
            function.setdefault(key, model[key])
    function.setdefault("arguments", [])
    function.setdefault("returns", {"type": "void"})
    function.setdefault("throws", [])
    function.setdefault("implementation", function["name"])
    for argument, other in itertools.zip_longest(function["arguments"], model.get("arguments", [])):
        if other and "meaning" in other:
            argument.setdefault("meaning", other["meaning"])


def is_handle(argument):
    return argument["type"].startswith("Velmar") and argument["type"].endswith("*")


def declarator(argument):
    return "..." if argument["type"] == "..." else f"{argument['type']} {argument['name']}"


def prototype(function, prefix=""):
    """The declaration, broken as clang-format breaks it."""
    begin = f"{prefix}{function['returns']['type']} {function['name']}("
    arguments = [declarator(argument) for argument in function["arguments"]] or ["void"]
    lines = [begin]
    for i, argument in enumerate(arguments):
        piece = argument + (", " if i + 1 < len(arguments) else ");")
        if len(lines[-1] + piece.rstrip()) > WIDTH:
            lines.append(" " * len(begin))
        lines[-1] += piece
    return "\n".join(line.rstrip() for line in lines)


def meaning(argument):
    """An argument's meaning, unit and shape as one sentence."""
    text = " ".join(argument["meaning"].split())
    if "shape" in argument:
        text = f"{argument['shape']}: {text}"
    if "unit" in argument:
        head, separator, tail = text.partition("; ")
        text = f"{head}, in {argument['unit']}{separator}{tail}"
    return text + ("" if text.endswith(".") else ".")


# ---- headers ---------------------------------------------------------------------------------------------------------


def comment_lines(mark, pieces, indent=""):
    """Text broken to the width behind the mark of a comment's line; later lines are indented."""
    return textwrap.wrap(pieces, WIDTH, initial_indent=mark, subsequent_indent=" * " + indent, break_long_words=False,
                         break_on_hyphens=False)


def tagged(tag, text, width=0):
    head = f"@{tag:<{width}}" if width else f"@{tag}"
    return comment_lines(f" * {head} ", text, " " * (len(head) + 1))


def parameters(function):
    """The arguments that the header explains, those of one meaning together."""
    rows = []
    for argument in function["arguments"]:
        if "meaning" not in argument:
            continue
        if rows and rows[-1][1] == meaning(argument):
            rows[-1][0] += f", {argument['name']}"
        else:
            rows.append([argument["name"], meaning(argument)])
    return rows


def header_comment(function):
    if "as" in function:
        return [f"/** As {function['as']}. */"]
    blocks = paragraphs(function["brief"]) + paragraphs(function.get("details", ""))
    blocks += paragraphs(function.get("silent", ""))
    if "prints" in function:
        blocks.append("Prints: " + paragraphs(function["prints"])[0])
    blocks += paragraphs(function.get("ownership", ""))
    blocks = [block for block in blocks if block]
    tags = []
    rows = parameters(function)
    width = max((len(name) for name, _ in rows), default=0) + len("param ")
    for name, text in rows:
        tags += tagged(f"param {name}", text, width + 1)
    if "meaning" in function["returns"]:
        tags += tagged("return", " ".join(function["returns"]["meaning"].split()))
    for thrown in function["throws"]:
        tags += tagged("throws", " ".join([thrown["class"], *thrown.get("when", "").split()]) +
                       ("." if "when" in thrown else ""))
    if len(blocks) == 1 and not tags and len(blocks[0]) <= WIDTH - len("/**  */"):
        return [f"/** {blocks[0]} */"]
    lines = ["/**"]
    for i, block in enumerate(blocks):
        lines += [" *"] * (i > 0) + comment_lines(" * ", block)
    return lines + tags + [" */"]


def header(family):
    lines = [f"/* {NOTICE.format(family['name'] + '.toml')} */", "#pragma once", "", '#include "types.h"']
    if "about" in family:
        lines += ["", "/*"]
        for i, block in enumerate(paragraphs(family["about"])):
            lines += [" *"] * (i > 0) + comment_lines(" * ", block)
        lines += [" */"]
    if "declarations" in family:
        lines += ["", family["declarations"].strip()]
    for function in family["function"]:
        lines += [] if "as" in function else [""]
        lines += header_comment(function) + [prototype(function, "VELMAR_API ")]
    return "\n".join(lines) + "\n"


# ---- the export list -------------------------------------------------------------------------------------------------


def export_list(families):
    lines = [f"; {NOTICE.format('')}", "LIBRARY VelmarAPI", "EXPORTS",
             "; Names that are one function name it behind the equals sign."]
    for family in families.values():
        lines += ["", f"; {family['title']}"]
        for function in family["function"]:
            name, implementation = function["name"], function["implementation"]
            lines.append(name if implementation == name else f"{name} = {implementation}")
    return "\n".join(lines) + "\n"


# ---- pages -----------------------------------------------------------------------------------------------------------


def linked(text, function=None):
    """Text for a page: names of other functions lead to their pages, and nothing is taken for markup."""
    def link(match):
        name = match.group()
        if function is not None and name == function["name"]:
            return f"`{name}`"
        return f"[{name}]({name}.md)" if name in NAMES else name

    text = text.replace("<", "\\<").replace("*", "\\*")
    return re.sub(r"\b[Vv]elmar\w*_\w+\b", link, text)


def sentence(text, function):
    text = " ".join(text.split())
    return wrapped(linked(text[0].upper() + text[1:], function))


def wrapped(text):
    return textwrap.fill(text, WIDTH, break_long_words=False, break_on_hyphens=False)


def argument_row(argument):
    text = " ".join(argument.get("meaning", "").split())
    if not text:
        text = f"the {argument['name']}" if is_handle(argument) else UNSAID.get(argument["name"], "the new value")
    measure = ", ".join(argument[key] for key in ("shape", "unit") if key in argument)
    if argument["type"] == "VelmarBool":
        measure = "0 or 1"
    cells = [f"`{argument['name']}`", f"`{argument['type']}`", measure, linked(text)]
    return "| " + " | ".join(cells) + " |"


def errors(function):
    lines = []
    for thrown in function["throws"]:
        name = thrown["class"] if " " in thrown["class"] else f"`{thrown['class']}`"
        lines.append("- Throws " + " ".join([name, *thrown.get("when", "").split()]) + ".")
    if "prints" in function:
        lines += ["- Prints: " + linked(block) for block in paragraphs(function["prints"])]
    if "silent" in function:
        lines += ["- Not reported: " + linked(block) for block in paragraphs(function["silent"])]
    return [wrapped(line).replace("\n", "\n  ") for line in lines] or ["Throws and prints nothing."]


def example(function):
    family = function["family"]
    return "\n".join(part.strip("\n") for part in (family["example_begin"], function["example"], family["example_end"]))


def page(function):
    name, family = function["name"], function["family"]
    anchor = re.sub(r"[^a-z0-9 -]", "", family["title"].lower()).replace(" ", "-")
    lines = [f"<!-- {NOTICE.format(family['name'] + '.toml')} -->", f"# {name}", "",
             "```c", prototype(function), "```", "",
             f"[{family['title']}](README.md#{anchor}), `velmarapi/{family['name']}.h`", ""]
    if "as" in function:
        lines += [wrapped(f"Does the same as {linked(function['as'])}."), ""]
    for block in paragraphs(function["brief"]) + paragraphs(function.get("details", "")):
        if block:
            lines += [wrapped(linked(block, function)), ""]
    if function["arguments"]:
        lines += ["## Arguments", "", "| name | type | shape, unit | meaning |", "|---|---|---|---|"]
        lines += [argument_row(argument) for argument in function["arguments"]] + [""]
    if "meaning" in function["returns"]:
        lines += ["## Returns", "", sentence(function["returns"]["meaning"], function), ""]
    ownership = function.get("ownership", family.get("ownership")) or "Nothing changes hands."
    lines += ["## Ownership", "", sentence(ownership, function), ""]
    lines += ["## Errors", "", *errors(function), ""]
    if function["shared_with"]:
        names = ", ".join(f"[{other}]({other}.md)" for other in function["shared_with"])
        lines += ["## Shared with", "", wrapped(f"One function, at one address, with {names}."), ""]
    lines += ["## Example", "", "```c", example(function), "```"]
    return "\n".join(lines) + "\n"


def index(families):
    head = re.search(r"/\*\*\n(.*?)\*/", (ROOT / "include/velmarapi.h").read_text(encoding="utf-8"), re.S).group(1)
    head = re.sub(r"^ \* ?", "", head, flags=re.M)
    count = sum(len(family["function"]) for family in families.values())
    lines = [f"<!-- {NOTICE.format('')} -->", "# The exported functions", ""]
    for block in paragraphs(head):
        lines += [wrapped(linked(block)), ""]
    lines += [wrapped(f"The {count} functions, by family. The example on each page is the body of a C function in a "
                      "file that includes `stdio.h` and `velmarapi.h`; a test compiles and runs them."), ""]
    for family in families.values():
        lines += [f"## {family['title']}", "", "| function | |", "|---|---|"]
        for function in family["function"]:
            brief = f"As {function['as']}." if "as" in function else first_sentence(paragraphs(function["brief"])[0])
            lines.append(f"| [{function['name']}]({function['name']}.md) | {linked(brief)} |")
        lines.append("")
    return "\n".join(lines).rstrip("\n") + "\n"


def first_sentence(text):
    return re.split(r"(?<=\.) (?=[A-Z])", text)[0]


# ---- Python ----------------------------------------------------------------------------------------------------------


def python_type(c_type):
    if c_type == "void":
        return "None"
    if c_type in C_TYPES:
        return C_TYPES[c_type]
    handle = re.fullmatch(r"(Velmar\w+)(\*\*?)", c_type)
    if not handle:
        raise ValueError(f"no Python type is known for {c_type}")
    return handle.group(1) if handle.group(2) == "*" else f"POINTER({handle.group(1)})"


def python_binding(families):
    functions = [function for family in families.values() for function in family["function"]]
    types = [t for f in functions for t in (f["returns"]["type"], *(a["type"] for a in f["arguments"]))]
    handles = sorted({t.rstrip("*") for t in types if t.startswith("Velmar") and t.endswith("*")})
    names = {n for t in types if t != "..." for n in re.findall(r"c_\w+|POINTER", python_type(t))} | {"c_void_p"}
    version = re.search(r"project\(VelmarAPI VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))
    lines = ['"""The library\'s functions, as ctypes declares them.', "", NOTICE.format(""), '"""',
             f"from ctypes import {', '.join(sorted(names, key=str.lower))}", "", f'VERSION = "{version.group(1)}"']
    for family in families.values():
        constants = re.findall(r"(VELMAR_\w+) = (\d+)", family.get("declarations", ""))
        lines += [""] * bool(constants) + [f"{name} = {value}" for name, value in constants]
    for handle in handles:
        lines += ["", "", f"class {handle}(c_void_p):", f'    """The address of a {handle}."""']
    lines += ["", "", "# The result, then the arguments; further ones may follow those of a function in VARIADIC.",
              "FUNCTIONS = {"]
    for function in functions:
        items = [python_type(function["returns"]["type"])]
        items += [python_type(argument["type"]) for argument in function["arguments"] if argument["type"] != "..."]
        begin = f'    "{function["name"]}": ('
        text = items[0] + ",)," if len(items) == 1 else ", ".join(items) + "),"
        lines += textwrap.wrap(text, WIDTH, initial_indent=begin, subsequent_indent=" " * len(begin))
    variadic = ", ".join(f'"{f["name"]}"' for f in functions if any(a["type"] == "..." for a in f["arguments"]))
    lines += ["}", "", f"VARIADIC = {{{variadic}}}"]
    return "\n".join(lines) + "\n"


# ---- all of it -------------------------------------------------------------------------------------------------------


def generated():
    """The text of each generated file by its path from the root."""
    families = load()
    files = {f"include/velmarapi/{name}.h": header(family) for name, family in families.items()}
    files["api/VelmarAPI.def"] = export_list(families)
    files["docs/api/README.md"] = index(families)
    files["python/velmar/_functions.py"] = python_binding(families)
    for family in families.values():
        for function in family["function"]:
            files[f"docs/api/{function['name']}.md"] = page(function)
    return files


def main():
    check = sys.argv[1:] == ["--check"]
    if sys.argv[1:] and not check:
        sys.exit(__doc__)
    files = generated()
    stale = [path for path in sorted((ROOT / "docs" / "api").glob("*"))
             if path.relative_to(ROOT).as_posix() not in files]
    wrong = [f"{path.relative_to(ROOT).as_posix()} belongs to no function" for path in stale]
    for name, text in files.items():
        path = ROOT / name
        if path.is_file() and path.read_bytes() == text.encode():
            continue
        wrong.append(f"{name} isn't what the table gives")
        if not check:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(text.encode())
    if check:
        print("\n".join(wrong + ["Change api/functions/ and run ./dev generate."] if wrong else
                        [f"{len(files)} files are what the table gives"]))
        sys.exit(1 if wrong else 0)
    for path in stale:
        path.unlink()


if __name__ == "__main__":
    main()
