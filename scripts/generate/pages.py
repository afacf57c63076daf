"""docs/api/: a page for each family, and an index."""
import re

from table import Family, Function, Table
from text import (brief, capitalised, explained_arguments, notice, one_line, paragraphs, prototype, sentence, wrapped)

#: The line of a family's frame that each example replaces.
PLACE = "/* the example */"


def files(table: Table) -> dict[str, str]:
    links = Links(table)
    result = {f"docs/api/{family.name}.md": page(family, table, links) for family in table.families}
    result["docs/api/README.md"] = index(table, links)
    return result


class Links:
    """Turns names of functions into links to their sections."""

    def __init__(self, table: Table) -> None:
        self.pages = {function.name: function.family.name for function in table.functions}

    def to(self, name: str, page: str = "") -> str:
        target = "" if self.pages[name] == page else f"{self.pages[name]}.md"
        return f"[{name}]({target}#{name.lower()})"

    def in_text(self, text: str, page: str = "") -> str:
        """The text with its functions as links, and nothing taken for markup."""
        text = text.replace("<", "\\<").replace("*", "\\*")

        def link(match: re.Match[str]) -> str:
            return self.to(match.group(), page) if match.group() in self.pages else match.group()

        return re.sub(r"\b[Vv]elmar\w*_\w+\b", link, text)


def code(*parts: str) -> list[str]:
    return ["```c", *(line for part in parts for line in part.strip("\n").splitlines()), "```"]


def page(family: Family, table: Table, links: Links) -> str:
    lines = [f"<!-- {notice(family.name + '.toml')} -->", f"# {family.title}", "",
             f"Declared in `velmarapi/{family.name}.h`.", ""]
    for block in paragraphs(family.about):
        lines += [*wrapped(links.in_text(block, family.name)), ""]
    for enumeration in family.enumerations:
        lines += [*wrapped(links.in_text(one_line(enumeration.brief), family.name)), "", "| constant | | |",
                  "|---|---|---|"]
        lines += [f"| `{enumeration.prefix}{value.name}` | {value.value} | {value.meaning} |"
                  for value in enumeration.values] + [""]
    lines += ["Each example is the body of a C function between these lines; its file includes `stdio.h` and "
              "`velmarapi.h`.", "", *code(family.example_begin, PLACE, family.example_end), ""]
    for function in family.functions:
        lines += section(function, table, links)
    return "\n".join(lines).rstrip("\n") + "\n"


def section(function: Function, table: Table, links: Links) -> list[str]:
    here = function.family.name
    lines = [f"## {function.name}", "", "```c", *prototype(function), "```", ""]
    if function.same_as:
        lines += [f"As {links.to(function.same_as.name, here)}.", ""]
    else:
        for block in [brief(function, table), *paragraphs(function.details), *paragraphs(function.ownership)]:
            lines += [*wrapped(links.in_text(block, here)), ""]
        lines += facts(function, links)
    shared = table.sharing(function)
    if shared:
        names = ", ".join(links.to(other.name, here) for other in shared)
        lines += [*wrapped(f"Shares its address with {names}."), ""]
    return lines + [*code(function.example), ""]


def facts(function: Function, links: Links) -> list[str]:
    """A list: arguments, result, errors."""
    here = function.family.name
    rows = []
    for names, text in explained_arguments(function):
        quoted = ", ".join(f"`{name}`" for name in names.split(", "))
        rows.append(f"{quoted}: {links.in_text(text, here)}")
    if function.returns.meaning:
        rows.append(f"Returns {links.in_text(sentence(function.returns.meaning), here)}")
    for thrown in function.throws:
        name = f"`{thrown.name}`" if thrown.is_class else thrown.name
        rows.append(sentence(f"Throws {name} {links.in_text(thrown.when, here)}".rstrip()))
    if function.prints:
        rows.append(f"Prints {links.in_text(one_line(function.prints), here)}")
    if function.silent:
        rows.append(links.in_text(one_line(function.silent), here))
    lines = [line for row in rows for line in wrapped(capitalised(row), "- ", "  ")]
    return lines + [""] if lines else []


def index(table: Table, links: Links) -> str:
    lines = [f"<!-- {notice()} -->", "# The exported functions", ""]
    for block in paragraphs(table.about):
        lines += [*wrapped(links.in_text(block)), ""]
    lines += [f"The {len(table.functions)} functions by family. A test compiles and runs all examples.", ""]
    for family in table.families:
        names = ", ".join(f"`{function.name}`" for function in family.functions)
        lines += wrapped(f"[{family.title}]({family.name}.md): {names}", "- ", "  ")
    return "\n".join(lines) + "\n"
