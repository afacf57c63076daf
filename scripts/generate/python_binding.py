"""The Python package's declarations of the functions for ctypes, and its base classes."""
import json
import re
import textwrap

from table import Default, Function, Handle, Table
from text import WIDTH, capitalised, listed, notice, one_line, setting, wrapped

C_TYPES = {
    "void": "None", "double": "c_double", "int": "c_int", "unsigned": "c_uint", "int32_t": "c_int32",
    "uint32_t": "c_uint32", "uint64_t": "c_uint64", "VelmarBool": "c_bool", "const char*": "c_char_p",
    "void*": "c_void_p", "const float*": "POINTER(c_float)", "const uint32_t*": "POINTER(c_uint32)",
}
#: The check of an attribute and its type, by the type of the setter's argument.
CHECKS = {
    "double": ("number", "float"), "VelmarBool": ("flag", "bool"), "int32_t": ("int32", "int"),
    "unsigned": ("uint32", "int"), "const char*": ("text", "str"),
}


def files(table: Table) -> dict[str, str]:
    return {"python/velmar/_functions.py": functions_module(table), "python/velmar/_bases.py": bases_module(table)}


# ---- the functions --------------------------------------------------------------------------------------------------


def ctypes_type(c_type: str, table: Table) -> str:
    if c_type in C_TYPES:
        return C_TYPES[c_type]
    name = c_type.rstrip("*")
    if name not in [handle.name for handle in table.handles]:
        raise ValueError(f"no Python type is known for {c_type}")
    return {f"{name}*": name, f"{name}**": f"POINTER({name})"}[c_type]


def functions_module(table: Table) -> str:
    declared = {function.name: [ctypes_type(c_type, table) for c_type in
                                (function.returns.type, *(a.type for a in function.arguments if not a.is_variadic))]
                for function in table.functions}
    used = {name for types in declared.values() for text in types for name in re.findall(r"c_\w+|POINTER", text)}
    lines = ['"""The library\'s functions, as ctypes declares them.', "", notice(), '"""',
             f"from ctypes import {', '.join(sorted(used | {'c_void_p'}, key=str.lower))}", "",
             f'VERSION = "{table.version}"']
    for enumeration in table.enumerations.values():
        lines += ["", *(f"{enumeration.prefix}{value.name} = {value.value}" for value in enumeration.values)]
    for handle in table.handles:
        lines += ["", "", f"class {handle.name}(c_void_p):", f'    """{one_line(handle.brief)}"""']
    lines += ["", "", "# The result, then the arguments; a function in VARIADIC takes further ones.", "FUNCTIONS = {"]
    for name, types in declared.items():
        begin = f'    "{name}": ('
        lines += wrapped(", ".join(types) + (",)," if len(types) == 1 else "),"), begin, " " * len(begin))
    variadic = ", ".join(f'"{function.name}"' for function in table.functions
                         if any(argument.is_variadic for argument in function.arguments))
    return "\n".join(lines + ["}", "", f"VARIADIC = {{{variadic}}}"]) + "\n"


# ---- the base classes -----------------------------------------------------------------------------------------------


def bases_module(table: Table) -> str:
    lines = ['"""The base classes of the objects: settings as attributes, and constructors that take them.', "",
             notice(), '"""',
             "from __future__ import annotations", "", "import enum", "from typing import Optional", "",
             "from ._library import library", "from ._objects import Object, Setting, assign",
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
    lines += [f'    {key} = "{name}"' for key, name in (("_add", handle.add), ("_delete", handle.delete)) if name]
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
    lines = listed([f'"{function.name}"', check_of(function)[0], python_default(function), literals[0]], begin, "")
    lines += [" " * len(begin) + literal for literal in literals[1:]]
    return [*lines[:-1], lines[-1] + ")"]


def constructor(handle: Handle, creator: Function) -> list[str]:
    types = {function.python: check_of(function)[1] for function in handle.settings}
    names = handle.positional + [name for name in types if name not in handle.positional]
    parameters = [f"{name}: Optional[{types[name]}] = None" for name in names]
    parameters.insert(len(handle.positional), "*")
    return listed(["self", *parameters], "    def __init__(", ") -> None:") + [
        "        settings = {name: value for name, value in locals().items() if name not in (\"self\", \"__class__\")}",
        f"        super().__init__(library().{creator.name}())", "        assign(self, settings)"]
