"""Checks on the built library.

exports OBJDUMP LIBRARY DEF   it exports exactly the names of the definition file, and names of one function share one address
imports OBJDUMP LIBRARY       it needs only system libraries and the compiler's runtime
hardening OBJDUMP BINARY      it has the stack protector and random addresses and, on Linux, checked buffer sizes and immediate
                              binding
rounding OBJDUMP OBJECTS      no instruction fuses a multiplication with an addition; OBJECTS is a list separated by ;
paths OBJDUMP LIBRARY ROOT    it contains no path of the machine that built it
"""
import re
import subprocess
import sys

SYSTEM_DLLS = {"kernel32.dll", "msvcrt.dll", "shell32.dll", "user32.dll", "advapi32.dll", "ole32.dll"}
SHARED_OBJECTS = {"libstdc++.so.6", "libgcc_s.so.1", "libm.so.6", "libc.so.6", "ld-linux-x86-64.so.2"}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def is_dll(library):
    return library.endswith(".dll")


def wanted_exports(definition):
    """Maps each exported name to the function that implements it."""
    exports = {}
    with open(definition, encoding="utf-8") as file:
        for line in file:
            line = line.split(";")[0].strip()
            if line and not re.match(r"(LIBRARY|EXPORTS)\b", line):
                name, _, target = (part.strip() for part in line.partition("="))
                exports[name] = target or name
    return exports


def built_exports(objdump, library):
    """Maps each exported name to its address."""
    if is_dll(library):
        text = run(objdump, "-p", library)
        addresses = dict(re.findall(r"^\s*\[\s*(\d+)\]\s*\+base\[\s*\d+\]\s+([0-9a-f]+) Export RVA", text, re.M))
        names = re.findall(r"^\s*\[\s*(\d+)\]\s+(?:\+base\[\s*\d+\]\s+)?(?:[0-9a-f]+\s+)?(\S+)$",
                           text.split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0], re.M)
        return {name: addresses.get(ordinal) for ordinal, name in names}
    symbols = re.findall(r"^([0-9a-f]+) g\s+\S*\s+(?!\*UND\*)\S+\s+[0-9a-f]+\s+(?:\S+\s+)?(\S+)$",
                         run(objdump, "-T", library), re.M)
    return {name: address for address, name in symbols}


def check_exports(objdump, library, definition):
    wanted, built = wanted_exports(definition), built_exports(objdump, library)
    wrong = [f"not exported: {name}" for name in wanted.keys() - built.keys()]
    wrong += [f"exported and not listed: {name}" for name in built.keys() - wanted.keys()]
    for name in wanted.keys() & built.keys():
        for other in wanted.keys() & built.keys():
            one_function, one_address = wanted[name] == wanted[other], built[name] == built[other]
            if name < other and one_function and not one_address:
                wrong.append(f"{name} and {other} are one function and have two addresses")
    print(f"{len(built)} exports, {len(wanted)} listed")
    return sorted(wrong) if wanted else ["the definition file lists nothing"]


def check_imports(objdump, library):
    text = run(objdump, "-p", library)
    allowed = SYSTEM_DLLS if is_dll(library) else SHARED_OBJECTS
    needed = re.findall(r"DLL Name: (\S+)" if is_dll(library) else r"NEEDED\s+(\S+)", text)
    print("needs " + ", ".join(needed))
    known = [name.lower() if is_dll(library) else name for name in needed]
    return [f"not on every system: {name}" for name in known if name not in allowed] if needed else ["no imports found"]


def check_hardening(objdump, binary):
    headers = run(objdump, "-p", binary)
    symbols = run(objdump, "-t", binary) + ("" if headers.count("DLL Name") else run(objdump, "-T", binary))
    wanted = {"stack protector": r"\b__stack_chk_fail\b"}
    if "DLL Name" in headers:
        characteristics = {"random addresses": "DYNAMIC_BASE", "64 bits of them": "HIGH_ENTROPY_VA", "no code in data": "NX_COMPAT"}
        missing = [name for name, flag in characteristics.items() if flag not in headers]
    else:
        wanted["checked buffer sizes"] = r"\b__\w+_chk\b(?<!__stack_chk)"
        sections = {"read-only relocations": r"^\s*RELRO\b", "immediate binding": r"^\s*(BIND_NOW|FLAGS(_1)?\s+0x0*[0-9a-f]*[189bdf])\b"}
        missing = [name for name, pattern in sections.items() if not re.search(pattern, headers, re.M)]
    missing += [name for name, pattern in wanted.items() if not re.search(pattern, symbols)]
    return [f"missing: {name}" for name in missing]


def check_rounding(objdump, objects):
    fused = re.compile(r"^\s*[0-9a-f]+:.*\bvfn?m(add|sub)\w+", re.M)
    multiplied = re.compile(r"\bvmul[sp][sd]\b")
    codes = {name: run(objdump, "-d", name) for name in objects.split(";")}
    wrong = [f"{name}: {fused.search(code).group(0).strip()}" for name, code in codes.items() if fused.search(code)]
    return wrong + [f"{name}: nothing is multiplied" for name, code in codes.items() if not multiplied.search(code)]


def check_paths(_objdump, library, root):
    # Only whole paths: the compiler's own ../src/ isn't a path of a tree in /src.
    pattern = re.compile(rb"(?<![\w./-])" + re.escape(root.encode()) + rb"/")
    with open(library, "rb") as file:
        return [f"{library} contains {root}"] if pattern.search(file.read()) else []


checks = {"exports": check_exports, "imports": check_imports, "hardening": check_hardening, "rounding": check_rounding,
          "paths": check_paths}
problems = checks[sys.argv[1]](*sys.argv[2:])
print("\n".join(problems))
sys.exit(1 if problems else 0)
