"""The table of the exported functions: api/functions/*.toml and api/interface.toml, read into dataclasses.

    table = load()
    for function in table.functions:
        ...

A file in api/functions/ is a family. Its functions are in the order of the header and of the export list. Every key
that a file may have is a field below; an unknown key is an error, and nothing is derived from the wording of a text.
"""
from __future__ import annotations

import dataclasses
import pathlib
import tomllib
from typing import Any, Optional

ROOT = pathlib.Path(__file__).resolve().parents[2]

#: A number, a truth value, a text, three numbers, or the name of an enumeration's value; None is unset.
Default = Any


@dataclasses.dataclass
class Argument:
    name: str
    type: str
    meaning: str = ""
    unit: str = ""
    #: The number of elements of an array.
    shape: str = ""
    #: The enumeration that names its values.
    enumeration: str = ""

    @property
    def is_variadic(self) -> bool:
        return self.type == "..."


@dataclasses.dataclass
class Returned:
    type: str = "void"
    meaning: str = ""


@dataclasses.dataclass
class Thrown:
    #: The class of the exception, or in words which classes.
    name: str
    when: str = ""

    @property
    def is_class(self) -> bool:
        return " " not in self.name


@dataclasses.dataclass
class Function:
    name: str
    family: Family
    #: What it does. A setter has `sets` instead, a noun phrase: the brief is made of it.
    brief: str = ""
    sets: str = ""
    details: str = ""
    arguments: list[Argument] = dataclasses.field(default_factory=list)
    returns: Returned = dataclasses.field(default_factory=Returned)
    #: What a new object has in place of the setter's arguments after the handle.
    default: Default = None
    #: The attribute of the Python class that calls this setter.
    python: str = ""
    #: The function that this one is another name for; what is missing here is taken from there.
    same_as: Optional[Function] = None
    #: The function that implements it. Functions with one implementation share an address.
    implementation: str = ""
    #: Who owns what afterwards, if that changes.
    ownership: str = ""
    throws: list[Thrown] = dataclasses.field(default_factory=list)
    #: What is printed on the standard streams.
    prints: str = ""
    #: Failures that aren't reported.
    silent: str = ""
    #: C statements, between the family's example_begin and example_end.
    example: str = ""

    @property
    def is_setter(self) -> bool:
        return bool(self.sets)

    @property
    def values(self) -> list[Argument]:
        """A setter's arguments after the handle."""
        return self.arguments[1:]


@dataclasses.dataclass
class Handle:
    """An opaque type of the interface."""

    name: str
    family: Family
    brief: str
    #: The class of the object, in namespace Velmar, and the header that declares it.
    class_name: str
    header: str
    #: The name of the struct in C, if it isn't that of the handle.
    tag: str = ""
    #: The Python class, the functions that it calls to add an object to a scene and to delete one without an owner, and
    #: the settings that its constructor takes by position.
    python: str = ""
    add: str = ""
    delete: str = ""
    positional: list[str] = dataclasses.field(default_factory=list)

    @property
    def settings(self) -> list[Function]:
        """The setters with an attribute in Python."""
        return [function for function in self.family.functions
                if function.python and function.arguments[0].type == f"{self.name}*"]

    @property
    def creator(self) -> Optional[Function]:
        """The function that creates one without arguments."""
        creators = [function for function in self.family.functions if function.returns.type == f"{self.name}*"]
        return creators[0] if len(creators) == 1 and not creators[0].arguments else None


@dataclasses.dataclass
class Value:
    name: str
    value: int
    meaning: str = ""


@dataclasses.dataclass
class Enumeration:
    name: str
    brief: str
    #: What the names of its values begin with in C.
    prefix: str
    values: list[Value]


@dataclasses.dataclass
class Family:
    name: str
    title: str
    about: str = ""
    example_begin: str = ""
    example_end: str = ""
    handles: list[Handle] = dataclasses.field(default_factory=list)
    enumerations: list[Enumeration] = dataclasses.field(default_factory=list)
    functions: list[Function] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Table:
    version: str
    about: str
    families: list[Family]

    @property
    def functions(self) -> list[Function]:
        return [function for family in self.families for function in family.functions]

    @property
    def handles(self) -> list[Handle]:
        return [handle for family in self.families for handle in family.handles]

    @property
    def enumerations(self) -> dict[str, Enumeration]:
        return {enumeration.name: enumeration for family in self.families for enumeration in family.enumerations}

    def sharing(self, function: Function) -> list[Function]:
        """The other functions at its address."""
        return [other for other in self.functions
                if other is not function and other.implementation == function.implementation]


def load(root: pathlib.Path = ROOT) -> Table:
    """Reads the table. A mistake in it is a TypeError or ValueError."""
    interface = _read(root / "api" / "interface.toml")
    paths = {path.stem: path for path in (root / "api" / "functions").glob("*.toml")}
    if paths.keys() != set(interface["families"]):
        raise ValueError(f"api/interface.toml and api/functions/ differ in {paths.keys() ^ set(interface['families'])}")
    version = (root / "VERSION").read_text(encoding="ascii").strip()
    table = Table(version, interface["about"], [_family(name, _read(paths[name])) for name in interface["families"]])
    _check(table)
    return table


def _read(path: pathlib.Path) -> dict[str, Any]:
    with open(path, "rb") as file:
        return tomllib.load(file)


def _family(name: str, entry: dict[str, Any]) -> Family:
    handles, enumerations = entry.pop("handle", []), entry.pop("enumeration", [])
    functions = entry.pop("function")
    family = Family(name, **entry)
    for handle in handles:
        python = handle.pop("python", {})
        handle["class_name"] = handle.pop("class")
        if python:
            handle["python"] = python.pop("class")
        family.handles.append(Handle(family=family, **handle, **python))
    for enumeration in enumerations:
        enumeration["values"] = [Value(**value) for value in enumeration["values"]]
        family.enumerations.append(Enumeration(**enumeration))
    for function in functions:
        family.functions.append(_function(function, family))
    return family


def _function(entry: dict[str, Any], family: Family) -> Function:
    entry["arguments"] = [Argument(**argument) for argument in entry.get("arguments", [])]
    if "throws" in entry:
        entry["throws"] = [Thrown(thrown.pop("class"), **thrown) for thrown in entry["throws"]]
    if "returns" in entry:
        entry["returns"] = Returned(**entry["returns"])
    entry.setdefault("implementation", entry["name"])
    if "as" not in entry:
        return Function(family=family, **entry)
    model = next(function for function in family.functions if function.name == entry["as"])
    del entry["as"]
    for argument, other in zip(entry["arguments"], model.arguments, strict=True):
        argument.meaning = argument.meaning or other.meaning
    return dataclasses.replace(model, family=family, same_as=model, python="", **entry)


def _check(table: Table) -> None:
    names = [function.name for function in table.functions]
    for name in names:
        if names.count(name) > 1:
            raise ValueError(f"{name} is in the table twice")
    known = set(names)
    for handle in table.handles:
        for name in filter(None, (handle.add, handle.delete)):
            if name not in known:
                raise ValueError(f"{handle.name}: no function {name}")
        missing = set(handle.positional) - {function.python for function in handle.settings}
        if missing:
            raise ValueError(f"{handle.name}: no settings {missing}")
    for function in table.functions:
        if bool(function.brief) == bool(function.sets):
            raise ValueError(f"{function.name} needs either a brief or what it sets")
        if not function.is_setter and (function.default is not None or function.python):
            raise ValueError(f"{function.name} isn't a setter, so it has no default and no attribute")
        if function.default is not None:
            _check_default(table, function)
        for argument in function.arguments:
            if argument.enumeration and argument.enumeration not in table.enumerations:
                raise ValueError(f"{function.name}: no enumeration {argument.enumeration}")


def _check_default(table: Table, function: Function) -> None:
    value, default = function.values[0], function.default
    if value.enumeration:
        fits = default in [entry.name for entry in table.enumerations[value.enumeration].values]
    elif isinstance(default, list):
        fits = len(default) == len(function.values) and all(argument.type == "double" for argument in function.values)
    else:
        types = {"double": float, "VelmarBool": bool, "int32_t": int, "unsigned": int, "const char*": str}
        fits = len(function.values) == 1 and type(default) is types[value.type]
    if not fits:
        raise ValueError(f"{function.name}: {default!r} is no default of its arguments")
