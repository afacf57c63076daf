"""The C# package's declarations of the functions, and the settings of its classes."""
import re

from cpp_binding import camel
from kit import getter_name, kit_name
from python_binding import c_declarations, structure
from table import Function, Handle, Table
from text import capitalised, listed, notice, one_line, setting, wrapped

TYPES = {
    "char": "byte", "void": "void", "double": "double", "float": "float", "int": "int", "unsigned": "uint", "int32_t": "int",
    "uint32_t": "uint", "uint64_t": "ulong", "VelmarBool": "byte", "VelmarKitMeshCounts": "MeshCounts",
    "VelmarKitLineCallback": "LineCallback",
}
#: Handles that aren't nodes are addresses.
ADDRESSES = {"VelmarContext", "VelmarRenderer", "VelmarMaterial"}
#: Functions that take a node of any kind.
OF_ANY_NODE = {"VelmarKit_Node_GetName", "VelmarKit_Scene_RemoveNode"}


def files(table: Table) -> dict[str, str]:
    return {"csharp/Velmar/Native.cs": native(table), "csharp/Velmar/Settings.cs": settings(table)}


def in_namespace(lines: list[str]) -> str:
    begin = [f"// {notice()}", "", "using System;", "using System.Runtime.InteropServices;", "", "namespace Velmar", "{"]
    return "\n".join(begin + [f"    {line}".rstrip() for line in lines] + ["}"]) + "\n"


def csharp_type(c_type: str, table: Table) -> str:
    name = re.sub(r"\bconst\b|\s", "", c_type)
    base, stars = name.rstrip("*"), name.count("*")
    if base in {handle.name for handle in table.handles}:
        return "NodeHandle" if stars == 1 and base not in ADDRESSES else "IntPtr" + "*" * (stars - 1)
    return TYPES[base] + "*" * stars


def native(table: Table) -> str:
    lines = ["/// <summary>The number of elements of a mesh.</summary>", "[StructLayout(LayoutKind.Sequential)]",
             "public struct MeshCounts", "{"]
    for name, c_type in structure("VelmarKitMeshCounts"):
        lines += [f"    /// <summary>{capitalised(name.replace('_', ' '))}.</summary>",
                  f"    public {TYPES[c_type]} {capitalised(camel(name))};"]
    lines += ["}", "", "[UnmanagedFunctionPointer(CallingConvention.Cdecl)]",
              "internal unsafe delegate void LineCallback(void* user, int isError, byte* line);", "",
              "/// <summary>The functions of velmarkit.h. Those with an int as result return a status.</summary>",
              "internal static unsafe class Native", "{", '    private const string Library = "velmarkit";', "",
              *declaration("byte*", "VelmarKit_LastError", []), *declaration("byte*", "VelmarKit_Version", [])]
    for name, types in c_declarations().items():
        # It takes arguments of any number, as C# can't pass them.
        if name != "VelmarKit_Renderer_UpdateScene":
            given = [csharp_type(c_type, table) for c_type in types]
            lines += declaration("int", name, ["NodeHandle" if name in OF_ANY_NODE and t == "void*" else t for t in given])
    return in_namespace([*lines, "}"])


def declaration(result: str, name: str, types: list[str]) -> list[str]:
    arguments = [f"{c_type} a{i}" for i, c_type in enumerate(types)]
    return ["    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]",
            *listed(arguments, f"    internal static extern {result} {name}(", ");")] if arguments else [
            "    [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]",
            f"    internal static extern {result} {name}();"]


def settings(table: Table) -> str:
    lines: list[str] = []
    for enumeration in table.enumerations.values():
        lines += [f"/// <summary>{one_line(enumeration.brief)}</summary>", f"public enum {enumeration.name}", "{"]
        for value in enumeration.values:
            lines += [f"    /// <summary>Uses {value.meaning}.</summary>", f"    {capitalised(value.name.lower())} = {value.value},"]
        lines += ["}", ""]
    for handle in table.handles:
        if handle.settings:
            lines += [*settings_class(handle, table), ""]
    return in_namespace(lines[:-1])


def settings_class(handle: Handle, table: Table) -> list[str]:
    name = f"{handle.python}Node"
    lines = [f"/// <summary>{one_line(handle.brief)}</summary>", f"public abstract unsafe class {name} : Node", "{",
             f"    internal {name}(IntPtr created) : base(created) {{ }}"]
    for function in handle.settings:
        lines += ["", *attribute(function, table)]
    return [*lines, "}"]


def attribute(function: Function, table: Table) -> list[str]:
    text = capitalised(setting(function, table)) + (" Zero if unset." if function.family.name == "rendersettings" else "")
    lines = wrapped(f"{text}</summary>", "    /// <summary>", "    /// ")
    setter, getter, value = kit_name(function.name), getter_name(function), function.values[0]
    name = capitalised(camel(function.python))
    if len(function.values) == 3:
        kind = "Vec3"
        get = f"Vec3 v = default(Vec3); Check(Native.{getter}(Handle, &v.X, &v.Y, &v.Z)); return v;"
        put = f"Check(Native.{setter}(Handle, value.X, value.Y, value.Z));"
    elif value.type == "const char*":
        kind = "string"
        get = f"byte* text; ulong size; Check(Native.{getter}(Handle, &text, &size)); return TextOf(text, size);"
        put = f"fixed (byte* text = Utf8(value)) Check(Native.{setter}(Handle, text));"
    else:
        raw = TYPES[value.type]
        kind = value.enumeration or ("bool" if value.type == "VelmarBool" else raw)
        result, given = "v", "value"
        if value.enumeration:
            result, given = f"({kind})v", f"({raw})value"
        elif kind == "bool":
            result, given = "v != 0", "(byte)(value ? 1 : 0)"
        get = f"{raw} v; Check(Native.{getter}(Handle, &v)); return {result};"
        put = f"Check(Native.{setter}(Handle, {given}));"
    return [*lines, f"    public {kind} {name}", "    {", f"        get {{ {get} }}", f"        set {{ {put} }}", "    }"]
