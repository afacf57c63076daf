"""Makes one C program of the pages of the exported functions: each example in a function of its own, and each page's
prototype beside the header's.

Usage: extract.py PAGES PROGRAM.c

The program runs the examples of the functions whose names begin with one of its arguments, or all of them.
"""
import pathlib
import re
import sys

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


def main():
    pages, program = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    parts, rows = [HEAD], []
    for page in sorted(pages.glob("[Vv]elmar*.md")):
        blocks = re.findall(r"^```c\n(.*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S)
        if len(blocks) != 2:
            sys.exit(f"{page} has {len(blocks)} blocks of C; a prototype and an example were expected")
        name = page.stem
        parts.append(f"extern {blocks[0]}static void example_{name}(void) {{\n{blocks[1]}}}\n")
        rows.append(f'    {{"{name}", example_{name}}},')
    if not rows:
        sys.exit(f"there are no pages in {pages}")
    program.parent.mkdir(parents=True, exist_ok=True)
    program.write_text("\n".join(parts) + MAIN.format(rows="\n".join(rows)), encoding="utf-8")


main()
