"""The Python package's declarations of the functions for ctypes, and its base classes."""
import json
import re
import textwrap

from kit import getter_name, kit_name
from table import ROOT, Default, Function, Handle, Table
from text import WIDTH, capitalised, listed, notice, one_line, setting, wrapped

C_TYPES = {
    "double": "c_double", "float": "c_float", "int": "c_int", "unsigned": "c_uint", "int32_t": "c_int32",
    "uint32_t": "c_uint32", "uint64_t": "c_uint64", "VelmarBool": "c_bool", "VelmarKitMeshCounts": "MeshCounts",
    "VelmarKitLineCallback": "LineCallback",
}
#: The check of an attribute and its type, by the type of the setter's argument.
CHECKS = {
    "double": ("number", "float"), "VelmarBool": ("flag", "bool"), "int32_t": ("int32", "int"),
    "unsigned": ("uint32", "int"), "const char*": ("text", "str"),
}


def files(table: Table) -> dict[str, str]:
    return {"python/velmar/_functions.py": functions_module(table), "python/velmar/_bases.py": bases_module(table)}


# ---- the functions --------------------------------------------------------------------------------------------------


def ctypes_type(c_type: str, handles: set[str]) -> str:
    """The type of a C argument. Texts that a function gives have no zero byte at their end, so they are addresses."""
    name = re.sub(r"\bconst\b|\s", "", c_type)
    if name == "char*":
        return "c_char_p"
    if name in ("void*", "char**", "void**"):
        return "c_void_p" if name == "void*" else "POINTER(c_void_p)"
    base, stars = name.rstrip("*"), name.count("*")
    if base in handles and stars > 0:
        stars -= 1
        result = base
    else:
        result = C_TYPES[base]
    return "POINTER(" * stars + result + ")" * stars


def functions_module(table: Table) -> str:
    handles = {handle.name for handle in table.handles}
    declared = {name: [ctypes_type(c_type, handles) for c_type in types] for name, types in c_declarations().items()}
    used = {name for types in declared.values() for text in types for name in re.findall(r"c_\w+|POINTER", text)}
    used |= {"c_char_p", "c_int32", "c_uint32", "c_uint64", "c_void_p", "CFUNCTYPE", "Structure"}
    lines = ['"""The functions of velmarkit.h, as ctypes declares them.', "", notice(), '"""',
             *listed(sorted(used, key=str.lower), "from ctypes import (", ")"), "", f'VERSION = "{table.version}"']
    for handle in table.handles:
        lines += ["", "", f"class {handle.name}(c_void_p):", f'    """{one_line(handle.brief)}"""']
    lines += ["", "", "class MeshCounts(Structure):", '    """The number of elements of a mesh."""', "",
              *listed([f'("{name}", {ctypes_type(c_type, handles)})' for name, c_type in structure("VelmarKitMeshCounts")],
                      "    _fields_ = [", "]"),
              "", "", "LineCallback = CFUNCTYPE(None, c_void_p, c_int32, c_char_p)",
              "", "# The types of the arguments. All functions return a status; one in VARIADIC takes further arguments.",
              "FUNCTIONS = {"]
    for name, types in declared.items():
        begin = f'    "{name}": ('
        lines += wrapped(", ".join(types) + (",)," if len(types) == 1 else "),"), begin, " " * len(begin))
    variadic = ", ".join(f'"{kit_name(function.name)}"' for function in table.functions
                         if any(argument.is_variadic for argument in function.arguments))
    return "\n".join(lines + ["}", "", f"VARIADIC = {{{variadic}}}"]) + "\n"


def c_declarations() -> dict[str, list[str]]:
    """The types of the arguments of each function of velmarkit.h that returns a status."""
    result: dict[str, list[str]] = {}
    for header in ("velmarkit/calls.h", "velmarkit/getters.h", "velmarkit.h"):
        text = (ROOT / "kit" / header).read_text(encoding="utf-8")
        for name, arguments in re.findall(r"^VELMARKIT_API int32_t (\w+)\(([^;]*)\);", text, re.M):
            result[name] = [argument_type(argument) for argument in arguments.split(",")
                            if argument.strip() not in ("void", "...")]
    return result


def argument_type(declarator: str) -> str:
    declarator, array = re.subn(r"\[\d+\]", "", declarator)
    head = re.sub(r"\w+$", "", declarator.strip())
    return head + "*" * array


def structure(name: str) -> list[tuple[str, str]]:
    """The fields of a structure of velmarkit.h with their types."""
    text = (ROOT / "kit" / "velmarkit.h").read_text(encoding="utf-8")
    body = re.search(rf"typedef struct {name} {{(.*?)}}", text, re.S)
    assert body
    return [(field, c_type) for c_type, field in re.findall(r"^\s*(\w+) (\w+);", body.group(1), re.M)]


# ---- the base classes -----------------------------------------------------------------------------------------------


def bases_module(table: Table) -> str:
    lines = ['"""The base classes of the objects: settings as attributes, and constructors that take them.', "",
             notice(), '"""',
             "from __future__ import annotations", "", "import enum", "from typing import Optional", "",
             "from . import _functions", "from ._objects import Object, Setting, assign, created",
             "from ._values import Vector, flag, int32, number, one_of, text, uint32, vector"]
    for enumeration in table.enumerations.values():
        lines += ["", "", f"class {enumeration.name}(enum.IntEnum):", f'    """{one_line(enumeration.brief)}"""', ""]
        for value in enumeration.values:
            lines += [f"    #: Uses {value.meaning}.", f"    {value.name} = {value.value}"]
    for handle in table.handles:
        if handle.python:
            lines += ["", "", *base_class(handle, table)]
    return "\n".join(lines) + "\n"


def literal(value: Default) -> str:
    return json.dumps(value) if isinstance(value, str) else repr(value)


def base_class(handle: Handle, table: Table) -> list[str]:
    lines = [f"class {handle.python}Base(Object):", f'    """{one_line(handle.brief)}"""', ""]
    lines += [f"    _type = _functions.{handle.name}", f'    _add = "{kit_name(handle.add)}"']
    if handle.settings:
        lines.append("")
    for function in handle.settings:
        lines += attribute(function, table)
    if handle.creator:
        lines += ["", *constructor(handle, handle.creator)]
    return lines


def check_of(function: Function) -> tuple[str, str]:
    """The check of a setting's value, and the type that it takes."""
    if len(function.values) == 3 and all(value.type == "double" for value in function.values):
        return "vector", "Vector"
    (value,) = function.values
    return (f"one_of({value.enumeration})", value.enumeration) if value.enumeration else CHECKS[value.type]


def python_default(function: Function) -> str:
    if isinstance(function.default, list):
        return repr(tuple(function.default))
    enumeration = function.values[0].enumeration
    return f"{enumeration}.{function.default}" if enumeration else literal(function.default)


def attribute(function: Function, table: Table) -> list[str]:
    begin = f"    {function.python} = Setting("
    doc = capitalised(setting(function, table))
    literals = [json.dumps(piece + " ") for piece in textwrap.wrap(doc, WIDTH - len(begin) - 8)]
    # Adjacent literals are one; the last has no blank at its end.
    literals[-1] = literals[-1].replace(' "', '"')
    lines = listed([f'"{kit_name(function.name)}"', f'"{getter_name(function)}"', check_of(function)[0], python_default(function), literals[0]], begin, "")
    lines += [" " * len(begin) + literal for literal in literals[1:]]
    return [*lines[:-1], lines[-1] + ")"]


def constructor(handle: Handle, creator: Function) -> list[str]:
    types = {function.python: check_of(function)[1] for function in handle.settings}
    names = handle.positional + [name for name in types if name not in handle.positional]
    parameters = [f"{name}: Optional[{types[name]}] = None" for name in names]
    parameters.insert(len(handle.positional), "*")
    return listed(["self", *parameters], "    def __init__(", ") -> None:") + [
        "        settings = {name: value for name, value in locals().items() if name not in (\"self\", \"__class__\")}",
        f"        super().__init__(created(_functions.{handle.name}, \"{kit_name(creator.name)}\"))", "        assign(self, settings)"]
