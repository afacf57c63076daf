"""The C interface: the public headers, the classes of the handles, and the export list of the library."""
from table import Enumeration, Family, Function, Table
from text import (WIDTH, brief, capitalised, explained_arguments, notice, one_line, paragraphs, prototype, sentence,
                  wrapped)

TYPES = """#include <stdint.h>

#ifdef __cplusplus
#define VELMAR_API extern "C"
#else
#define VELMAR_API extern
#endif

/** A truth value of one byte: 0 is false, anything else is true. */
typedef uint8_t VelmarBool;
"""


def files(table: Table) -> dict[str, str]:
    result = {f"include/velmarapi/{family.name}.h": family_header(family, table) for family in table.families}
    result["include/velmarapi.h"] = umbrella_header(table)
    result["include/velmarapi/types.h"] = types_header(table)
    result["api/HandleClasses.h"] = handle_classes(table)
    result["api/VelmarAPI.def"] = export_list(table)
    return result


def joined(lines: list[str]) -> str:
    return "\n".join(lines) + "\n"


def block_comment(blocks: list[str], begin: str = "/**") -> list[str]:
    lines = [begin]
    for i, block in enumerate(blocks):
        lines += [" *"] * (i > 0) + wrapped(block, " * ", " * ")
    return lines + [" */"]


def umbrella_header(table: Table) -> str:
    lines = [f"/* {notice()} */", "#pragma once", "", *block_comment(paragraphs(table.about)), ""]
    names = sorted([family.name for family in table.families] + ["types"])
    return joined(lines + [f'#include "velmarapi/{name}.h"' for name in names])


def types_header(table: Table) -> str:
    lines = [f"/* {notice()} */", "#pragma once", "", *TYPES.splitlines()]
    for handle in table.handles:
        lines += ["", f"/** {one_line(handle.brief)} */",
                  f"typedef struct {handle.tag or handle.name} {handle.name};"]
    return joined(lines)


def family_header(family: Family, table: Table) -> str:
    lines = [f"/* {notice(family.name + '.toml')} */", "#pragma once", "", '#include "types.h"']
    if family.about:
        lines += ["", *block_comment(paragraphs(family.about), "/*")]
    for enumeration in family.enumerations:
        lines += ["", *enumeration_lines(enumeration)]
    for function in family.functions:
        lines += [] if function.same_as else [""]
        lines += function_comment(function, table) + prototype(function, "VELMAR_API ")
    return joined(lines)


def enumeration_lines(enumeration: Enumeration) -> list[str]:
    pieces = [f"    {enumeration.prefix}{value.name} = {value.value}," for value in enumeration.values]
    pieces[-1] = pieces[-1].rstrip(",")
    width = max(len(piece) for piece in pieces)
    rows = [f"{piece:<{width}} /**< {value.meaning} */" for piece, value in zip(pieces, enumeration.values)]
    return [f"/** {one_line(enumeration.brief)} */", "enum {", *rows, "};"]


def function_comment(function: Function, table: Table) -> list[str]:
    if function.same_as:
        return [f"/** As {function.same_as.name}. */"]
    blocks = [brief(function, table), *paragraphs(function.details), *paragraphs(function.silent)]
    if function.prints:
        blocks.append("Prints " + one_line(function.prints))
    blocks += paragraphs(function.ownership)
    tags = function_tags(function)
    if len(blocks) == 1 and not tags and len(blocks[0]) <= WIDTH - len("/**  */"):
        return [f"/** {blocks[0]} */"]
    return block_comment(blocks)[:-1] + tags + [" */"]


def function_tags(function: Function) -> list[str]:
    rows = explained_arguments(function)
    width = max((len(name) for name, _ in rows), default=0)
    tags = [tagged(f"@param {name:<{width}}", text) for name, text in rows]
    if function.returns.meaning:
        tags.append(tagged("@return", capitalised(sentence(function.returns.meaning))))
    for thrown in function.throws:
        tags.append(tagged(f"@throws {thrown.name}" if thrown.is_class else "@throws",
                           one_line(thrown.when if thrown.is_class else f"{thrown.name} {thrown.when}")))
    return [line for tag in tags for line in tag]


def tagged(tag: str, text: str) -> list[str]:
    head = f" * {tag} "
    return wrapped(text, head, " * " + " " * (len(head) - 3)) if text else [head.rstrip()]


def handle_classes(table: Table) -> str:
    lines = [f"// {notice()}", "#pragma once", "", "// Which class the object of each handle has.", "",
             '#include "velmarapi/types.h"', ""]
    lines += sorted(f'#include "{handle.header}"' for handle in table.handles)
    lines += ["", "#include <type_traits>", "", "namespace Velmar {", "",
              "/// The class of the objects of a handle type, as its `type`.", "template <class Handle>",
              "struct ObjectOf;"]
    for handle in table.handles:
        # A class in namespace Velmar may have the name of the handle.
        lines += ["template <>", f"struct ObjectOf<::{handle.name}> : std::type_identity<{handle.class_name}> {{}};"]
    return joined(lines + ["", "} // namespace Velmar"])


def export_list(table: Table) -> str:
    lines = [f"; {notice()}", "LIBRARY VelmarAPI", "EXPORTS",
             "; Names of one function are listed as name = function."]
    for family in table.families:
        lines += ["", f"; {family.title}"]
        for function in family.functions:
            same = function.implementation == function.name
            lines.append(function.name if same else f"{function.name} = {function.implementation}")
    return joined(lines)
