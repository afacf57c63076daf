"""The settings of the C++ classes: cpp/velmar/settings.hpp."""
from kit import getter_name, kit_name
from table import Function, Handle, Table
from text import capitalised, notice, one_line, setting, wrapped

TYPES = {"VelmarBool": "bool", "double": "double", "int32_t": "std::int32_t", "unsigned": "std::uint32_t"}


def files(table: Table) -> dict[str, str]:
    lines = [f"// {notice()}", "#pragma once", "", "/// The settings of the nodes, with a function that sets each and one "
             "that reads it.", "", '#include "object.hpp"', "", "namespace velmar {", "",
             "// clang-format off"]
    for enumeration in table.enumerations.values():
        lines += ["", f"/// {one_line(enumeration.brief)}", f"enum class {enumeration.name} : std::int32_t {{"]
        lines += [f"    {value.name.lower()} = {enumeration.prefix}{value.name}, ///< {value.meaning}"
                  for value in enumeration.values]
        lines.append("};")
    for handle in table.handles:
        if handle.settings:
            lines += ["", *settings_class(handle, table)]
    return {"cpp/velmar/settings.hpp": "\n".join(lines + ["", "// clang-format on", "", "} // namespace velmar"]) + "\n"}


def settings_class(handle: Handle, table: Table) -> list[str]:
    name = f"{handle.python}Settings"
    lines = [f"/// What can be set in a {handle.python}.", f"class {name} : public Node<{handle.name}> {{", "  public:"]
    for i, function in enumerate(handle.settings):
        lines += [""] * (i > 0) + [*setter(function, table), *getter(function)]
    return [*lines, "", "  protected:", "    using Node::Node;", "};"]


def camel(name: str) -> str:
    head, *rest = name.split("_")
    return head + "".join(word.capitalize() for word in rest)


def setter(function: Function, table: Table) -> list[str]:
    """The setter with its comment."""
    text = f"Sets {setting(function, table)}"
    begin = f"    void set{capitalised(camel(function.python))}("
    call = kit_name(function.name)
    lines = wrapped(text, "    /// ", "    /// ")
    value = function.values[0]
    if len(function.values) == 3:
        return lines + [f"{begin}const Vec3& value) {{ call({call}, value[0], value[1], value[2]); }}"]
    if value.type == "const char*":
        return lines + [f"{begin}const std::string& value) {{ call({call}, detail::textOf(value)); }}"]
    if value.enumeration:
        return lines + [f"{begin}{value.enumeration} value) {{ call({call}, static_cast<{TYPES[value.type]}>(value)); }}"]
    return lines + [f"{begin}{TYPES[value.type]} value) {{ call({call}, value); }}"]


def getter(function: Function) -> list[str]:
    name, call, value = camel(function.python), getter_name(function), function.values[0]
    note = ["    /// Zero if unset."] if function.family.name == "rendersettings" else []
    if len(function.values) == 3:
        return note + [f"    Vec3 {name}() const {{ return get({call}); }}"]
    if value.type == "const char*":
        return note + [f"    std::string {name}() const {{ return get({call}); }}"]
    if value.enumeration:
        return note + [f"    {value.enumeration} {name}() const {{ return static_cast<{value.enumeration}>(get({call})); }}"]
    if value.type == "VelmarBool":
        return note + [f"    bool {name}() const {{ return get({call}) != 0; }}"]
    return note + [f"    {TYPES[value.type]} {name}() const {{ return get({call}); }}"]
