"""Makes one C program of the pages of the exported functions: each example in a function of its own, and each prototype
next to that of the header.

Usage: extract.py PAGES PROGRAM.c

The program runs the examples of the functions whose names begin with one of its arguments, or all of them.
"""
import pathlib
import re
import sys

BLOCK = re.compile(r"^```c\n(.*?)^```$", re.M | re.S)
PLACE = "/* the example */\n"

HEAD = """#include <stdio.h>
#include <string.h>
#include <velmarapi.h>
"""

MAIN = """
typedef struct Example {{
    const char* name;
    void (*run)(void);
}} Example;

static const Example examples[] = {{
{rows}
}};

static int isWanted(const char* name, int count, char** beginnings) {{
    int i;
    for (i = 0; i < count; ++i)
        if (strncmp(name, beginnings[i], strlen(beginnings[i])) == 0) return 1;
    return count == 0;
}}

int main(int argc, char** argv) {{
    size_t i;
    int ran = 0;
    for (i = 0; i < sizeof examples / sizeof examples[0]; ++i) {{
        if (!isWanted(examples[i].name, argc - 1, argv + 1)) continue;
        printf("%s\\n", examples[i].name);
        fflush(stdout);
        examples[i].run();
        ++ran;
    }}
    printf("%d examples ran\\n", ran);
    return ran == 0;
}}
"""


def examples_of(page):
    """Name, prototype and example of each function on a family's page."""
    frame, *sections = re.split(r"^## (?=\w+$)", page, flags=re.M)
    (around,) = BLOCK.findall(frame)
    begin, end = around.split(PLACE)
    for section in sections:
        prototype, example = BLOCK.findall(section)
        yield section.split("\n")[0], prototype, begin + example + end


def main():
    folder, program = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    parts, rows = [HEAD], []
    for page in sorted(folder.glob("*.md")):
        if page.name == "README.md":
            continue
        for name, prototype, example in examples_of(page.read_text(encoding="utf-8")):
            parts.append(f"extern {prototype}static void example_{name}(void) {{\n{example}}}\n")
            rows.append(f'    {{"{name}", example_{name}}},')
    if not rows:
        sys.exit(f"there are no examples in {folder}")
    program.parent.mkdir(parents=True, exist_ok=True)
    program.write_text("\n".join(parts) + MAIN.format(rows="\n".join(rows)), encoding="utf-8")


main()
