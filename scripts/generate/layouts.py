"""Generates the layouts and the slots in the documents about the renderer library, from the classes themselves.

A document names the classes in comments; what follows up to the next `<!-- end -->` is generated:

<!-- layout: Class ... -->    a block with the fields of each class: offset, type and name
<!-- slots: Class ... -->     a table of the virtual operations of each class

Offsets and sizes are those that the headers assert below each class, so the compiler has checked them. A slot is a virtual
operation whose comment begins with `Slot N`.
"""
import re
from dataclasses import dataclass

from table import ROOT, Table
from text import capitalised

DOCUMENTS = ["docs/renderer-layouts.md", "docs/renderer-seam.md"]
MODULES = ["include", "utils", "mesh", "scene", "scene/nodes", "renderer"]

#: How the documents write a type. What isn't listed is written as it is.
TYPES = {
    "std::uint8_t": "u8", "std::int32_t": "i32", "std::uint32_t": "u32", "std::int64_t": "i64", "std::uint64_t": "u64",
    "unsigned": "u32", "UID": "u32", "NodeType": "u32", "TraversalKind": "u32", "ChannelType": "u32",
    "NodeUIDMap": "HashTable<u32, SceneNode*>", "MaskNameMap": "HashTable<String, u32>",
    "PathMap": "HashTable<String, String>", "VisitedMeshes": "HashTable<u32, bool>",
    "ChangedNodes": "HashTable<Reference<SceneNode>, u32>", "InterfaceRef": "LibraryObject*",
    "OwnedMutex": "critical section*", "OwnedCriticalSection": "critical section",
    "ConditionVariableSlot": "condition variable", "OwnedAlignedArray": "void*", "OwnedDescription": "ImageDescription*",
    "RenderChannelRequest::RenderRegion": "RenderRegion", "XXH64_state_t": "xxHash64 state",
}
LENGTHS = {"RenderChannelRequest::lighting_pass_count": "8"}
#: Bases that add neither fields nor slots.
PLAIN_BASES = {"PlainSceneNode": "SceneNode", "SdkAllocated": ""}


@dataclass
class Class:
    name: str
    base: str
    body: str
    size: int
    offsets: dict[str, int]


def read_classes() -> dict[str, Class]:
    texts = [path.read_text(encoding="utf-8") for module in MODULES for suffix in ("h", "cpp")
             for path in sorted((ROOT / module).glob(f"*.{suffix}"))]
    sizes: dict[str, int] = {}
    offsets: dict[str, dict[str, int]] = {}
    for text in texts:
        for name, size in re.findall(r"static_assert\(sizeof\((\w+)\) == (\d+)", text):
            sizes[name] = int(size)
        for name, field, offset in re.findall(r"static_assert\(offsetof\((\w+), (\w+)\) == (\d+)\)", text):
            offsets.setdefault(name, {})[field] = int(offset)
    classes: dict[str, Class] = {}
    for text in texts:
        for match in re.finditer(r"^( *)(?:class|struct) (\w+)(?: final)?\s*(?:: (?:public )?([^{]*?))?\s*\{$(.*?)^\1\};$", text,
                                 re.MULTILINE | re.DOTALL):
            _, name, base, body = match.groups()
            if name not in classes:
                classes[name] = Class(name, base_of(base or ""), body, sizes.get(name, 0), offsets.get(name, {}))
            # Classes inside classes.
            for inner in re.finditer(r"^( +)struct (\w+)[^;{\n]*\{$(.*?)^\1\};$", body, re.MULTILINE | re.DOTALL):
                _, name, body = inner.groups()
                classes.setdefault(name, Class(name, "", body, sizes.get(name, 0), offsets.get(name, {})))
    return classes


def base_of(text: str) -> str:
    base = text.strip()
    if match := re.match(r"(?:Velmar::)?Destroyable<\w+, ([\w:]+)>$", base):
        base = match.group(1)
    base = base.split("::")[-1]
    return PLAIN_BASES.get(base, base)


def written(type_text: str) -> str:
    """A C++ type as the documents write it. References are pointers to the other side."""
    type_text = type_text.strip()
    if type_text.startswith("const ") and type_text[-1] in "*&":
        return "const " + written(type_text.removeprefix("const "))
    text = re.sub(r"\bconst\b ?|\[\[maybe_unused\]\] ?|alignas\(\d+\) ?", "", type_text).strip().replace("&", "*")
    if match := re.fullmatch(r"std::array<(.*), ([\w:]+)>", text):
        return f"{written(match.group(1))}[{LENGTHS.get(match.group(2), match.group(2))}]"
    if match := re.fullmatch(r"([\w:]+)<(.*)>(\**)", text):
        inner = ", ".join(written(part) for part in re.split(r", (?![^<]*>)", match.group(2)))
        return f"{match.group(1)}<{inner}>{match.group(3)}"
    base, stars = re.fullmatch(r"(.*?)(\**)", text).groups()  # type: ignore[union-attr]
    return TYPES.get(base, base) + stars


# ---- layouts ---------------------------------------------------------------------------------------------------------


def layout(cls: Class) -> str:
    if not cls.size or not cls.offsets:
        raise ValueError(f"{cls.name} has no asserted layout")
    head = cls.name + (f" : {cls.base}" if cls.base else "")
    lines = [f"{head:<56} {cls.size:>6} bytes"]
    if not cls.base and re.search("^ +virtual ", cls.body, re.MULTILINE):
        lines.append(f"{0:>5}  {'slots*':<40}  operations")
    for field, offset in sorted(cls.offsets.items(), key=lambda item: item[1]):
        match = re.search(rf"^ +(?!return)([\w:<>,*&\[\]() ]+?) {field}(\[\d+\])?(?: = .*| ?\{{.*)?;", cls.body, re.MULTILINE)
        if not match:
            raise ValueError(f"{cls.name}::{field} isn't declared on a line of its own")
        lines.append(f"{offset:>5}  {written(match.group(1)).removeprefix('const ') + (match.group(2) or ''):<40}  {field}")
    return "\n".join(lines) + "\n"


# ---- slots -----------------------------------------------------------------------------------------------------------


def slots(cls: Class) -> str:
    lines = [f"| `{cls.name}` | operation | |", "|---|---|---|"]
    pattern = re.compile(r"((?:^ +///.*\n)+) +virtual ([^;{]*?)(?: = 0)? ?[;{]", re.MULTILINE)
    for comment, declaration in pattern.findall(cls.body):
        text = " ".join(line.strip()[3:].strip() for line in comment.strip().splitlines())
        match = re.match(r"Slot (\d+)[.:] ?(.*)", text)
        if match and match.group(1) != "0":
            lines.append(f"| {match.group(1)} | `{operation(declaration)}` | {capitalised(match.group(2))} |")
    if len(lines) == 2:
        raise ValueError(f"{cls.name} has no slots")
    return "\n".join(lines) + "\n"


def operation(declaration: str) -> str:
    """A declaration with pointers in place of references, and class values as results."""
    match = re.fullmatch(r"(.*?)(\w+)\((.*)\)( const)?", " ".join(declaration.split()))
    if not match:
        raise ValueError(declaration)
    result, name, parameters, const = match.groups()
    if name.endswith("Into"):
        return f"{written(parameters.rsplit(' ', 1)[0].rstrip('*'))} {name.removesuffix('Into')}(){const or ''}"
    named = [f"{written(kind)} {argument}" for kind, argument in re.findall(r"([^,]*?[^,<>]*(?:<[^>]*>)?[\w&*<> ]*) (\w+)(?:, |$)",
                                                                            parameters)]
    return f"{written(result)} {name}({', '.join(named)}){const or ''}"


# ---- documents -------------------------------------------------------------------------------------------------------


def files(_: Table) -> dict[str, str]:
    classes = read_classes()

    def generated(match: re.Match[str]) -> str:
        kind, names = match.group(1), match.group(2).split()
        if kind == "layout":
            text = "```\n" + "\n".join(layout(classes[name]) for name in names) + "```\n"
        else:
            text = "\n".join(slots(classes[name]) for name in names)
        return f"<!-- {kind}: {' '.join(names)} -->\n{text}<!-- end -->\n"

    pattern = re.compile(r"<!-- (layout|slots): ([^>]*) -->\n.*?<!-- end -->\n", re.DOTALL)
    return {name: pattern.sub(generated, (ROOT / name).read_text(encoding="utf-8")) for name in DOCUMENTS}
