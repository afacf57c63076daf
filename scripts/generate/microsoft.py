"""The library for hosts of Microsoft's compiler: functions that throw in that compiler's form, and the export list."""
from table import Function, Table
from text import listed, notice

PREFIX = "velmarThrowing_"


def files(table: Table) -> dict[str, str]:
    return {"api/msvc/Exports.cpp": source(table), "api/msvc/VelmarAPI.def": export_list(table)}


def is_wrapped(function: Function) -> bool:
    """Whether a function is put before it. What passes on any arguments is a jump and can have none."""
    return bool(function.throws) and not any(argument.is_variadic for argument in function.arguments)


def source(table: Table) -> str:
    lines = [f"// {notice()}", "", '#include "velmarapi.h"', "", '#include "api/msvc/Throwing.h"', "",
             "using Velmar::Microsoft::throwing;", "", 'extern "C" {', ""]
    # Names of one function need one.
    wrapped = {function.implementation: function for function in reversed(table.functions) if is_wrapped(function)}
    names = {function.name for function in table.functions}
    for function in reversed(wrapped.values()):
        lines += wrapper(function, function.implementation in names)
    return "\n".join(lines + ['} // extern "C"']) + "\n"


def wrapper(function: Function, declared: bool) -> list[str]:
    """The function that is put before an implementation. One that no header declares takes handles of several kinds."""
    result, implementation = function.returns.type, function.implementation
    arguments = [f"{argument.type if declared else generic(argument.type)} {argument.name}"
                 for argument in function.arguments] or ["void"]
    lines = [] if declared else listed(arguments, f"{result} {implementation}(", ");")
    lines += listed(arguments, f"{result} {PREFIX}{implementation}(", ") {")
    passed = ", ".join(argument.name for argument in function.arguments)
    return lines + [f"    return throwing([=] {{ return {implementation}({passed}); }});", "}", ""]


def generic(type_name: str) -> str:
    return "void*" if type_name.startswith("Velmar") and type_name.endswith("*") else type_name


def export_list(table: Table) -> str:
    lines = [f"; {notice()}", "LIBRARY VelmarAPI", "EXPORTS",
             "; Names of one function are listed as name = function."]
    for family in table.families:
        lines += ["", f"; {family.title}"]
        for function in family.functions:
            target = PREFIX * is_wrapped(function) + function.implementation
            lines.append(function.name if target == function.name else f"{function.name} = {target}")
    return "\n".join(lines) + "\n"
