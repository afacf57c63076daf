"""tests/api/SettingDefaults.h: each setter with its default and with another value.

A test compares them with what a new object writes."""
from table import Default, Function, Handle, Table
from text import notice


STRUCT = """template <class Handle>
struct SettingDefault {
    const char* setter;
    /// Sets the default; null for what is unset in a new object.
    void (*set_default)(Handle*);
    void (*set_another)(Handle*);
};
"""


def files(table: Table) -> dict[str, str]:
    handles = [handle for handle in table.handles if any(f.is_setter for f in handle.family.functions)]
    lines = [f"// {notice()}", "#pragma once", "", '#include "velmarapi.h"', "", "#include <vector>", "",
             "namespace TestSupport {", "", *STRUCT.splitlines()]
    for handle in handles:
        lines += ["", "// clang-format off", f"inline const std::vector<SettingDefault<{handle.name}>> "
                      f"{handle.name[0].lower()}{handle.name[1:]}Defaults = {{"]
        for function in handle.family.functions:
            if function.is_setter:
                lines += row(function, handle, table)
        lines += ["};", "// clang-format on"]
    lines += ["", "} // namespace TestSupport"]
    return {"tests/api/SettingDefaults.h": "\n".join(lines) + "\n"}


def row(function: Function, handle: Handle, table: Table) -> list[str]:
    def call(values: list[Default]) -> str:
        literals = ", ".join(literal(value, function, table) for value in values)
        return f"[]({handle.name}* handle) {{ {function.name}(handle, {literals}); }}"

    default = function.default
    values = default if isinstance(default, list) else [default]
    first = "nullptr" if default is None else call(values)
    return [f'    {{"{function.name}",', f"     {first},", f"     {call(another(function, table))}}},"]


def another(function: Function, table: Table) -> list[Default]:
    """Values of the arguments that aren't the defaults."""
    default = function.default
    if default is None:
        return [{"VelmarBool": True, "const char*": "another"}.get(value.type, 7) for value in function.values]
    if isinstance(default, list):
        return [component + 1 for component in default]
    enumeration = function.values[0].enumeration
    if enumeration:
        return [next(value.name for value in table.enumerations[enumeration].values if value.name != default)]
    if isinstance(default, bool):
        return [not default]
    return [default + ".another"] if isinstance(default, str) else [default + 1]


def literal(value: Default, function: Function, table: Table) -> str:
    enumeration = function.values[0].enumeration
    if enumeration:
        return table.enumerations[enumeration].prefix + str(value)
    if isinstance(value, bool):
        return str(int(value))
    return f'"{value}"' if isinstance(value, str) else repr(value)
