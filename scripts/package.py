#!/usr/bin/env python3
"""Makes the package of a build: the stripped install tree with examples, documents and licences.

Usage: package.py BUILD/package.json FOLDER

Prints the path of the archive, which contains one folder of its name. The same build gives the same bytes.
"""
import gzip
import io
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import zipfile

# Code that our files contain or link, and the Debian packages with its licence.
LICENCES = {
    "zstd": "libzstd-dev",
    "xxHash": "libxxhash-dev",
    "double-conversion": "libdouble-conversion-dev",
    "CLI11": "libcli11-dev",
    "stb": "libstb-dev",
    "Embree": "libembree-dev",
    "pugixml": "libpugixml-dev",
    "minizip": "libminizip-dev",
    "zlib": "zlib1g-dev",
    "assimp": "libassimp-dev",
}
# Of these the command line tool alone, which isn't in the package for Microsoft's compiler.
LICENCES_OF_TOOL = ["CLI11", "stb", "Embree", "minizip", "zlib", "assimp"]
# The native tool alone: functions of assimp's headers.
LICENCES_OF_NATIVE_TOOL = ["assimp"]
# The runtime in a DLL made by MinGW.
LICENCES_OF_RUNTIME = {"gcc": "gcc-mingw-w64-base", "mingw-w64": "mingw-w64-common"}

# For authors of hosts and renderer libraries; the other documents are about the sources.
DOCUMENTS = ["api", "bindings.md", "editing-documents.md", "errors.md", "farm.md", "info-json.md", "kit.md", "mesh-store.md",
             "ownership.md", "preview.md", "renderer-layouts.md", "renderer-seam.md", "scene-document.md", "threads.md",
             "vmmesh-format.md", "whole-scenes.md"]

# The earliest time that a zip file can store.
TIME = (1980, 1, 1, 0, 0, 0)


def copy(source, target):
    if source.is_dir():
        shutil.copytree(source, target, ignore=shutil.ignore_patterns("__pycache__", ".*", "*.egg-info"))
    else:
        shutil.copy(source, target)


def add_documents(source, tree):
    shutil.copy(source / "docs" / "using-a-package.md", tree / "README.md")
    shutil.copy(source / "cmake" / "package" / "CMakeLists.txt", tree)
    for name in ["CHANGELOG.md", "SECURITY.md", "LICENSE", "examples"]:
        if (source / name).exists():
            copy(source / name, tree / name)
    (tree / "docs").mkdir()
    for name in DOCUMENTS:
        copy(source / "docs" / name, tree / "docs" / name)


def licences_of(package):
    """Code in a package, and where its licence is."""
    origins = dict(LICENCES)
    if package["component"] == "msvc":
        for name in LICENCES_OF_TOOL:
            del origins[name]
    if package["archive"] == "zip":
        origins.update(LICENCES_OF_RUNTIME)
        for name in LICENCES_OF_NATIVE_TOOL:
            origins.pop(name, None)
    return origins


def add_licences(package, origins, folder):
    folder.mkdir()
    for name, origin in origins.items():
        terms = pathlib.Path("/usr/share/doc", origin, "copyright")
        if not terms.is_file():
            sys.exit(f"{terms} is missing; it comes with Debian's package {origin}")
        shutil.copyfile(terms, folder / f"{name}.txt")
    # Debian's file refers to the licence by its path there.
    if "Embree" in origins:
        with open(folder / "Embree.txt", "a", encoding="utf-8") as terms:
            terms.write("\n" + pathlib.Path("/usr/share/common-licenses/Apache-2.0").read_text(encoding="utf-8"))
    # RPly has no package; its licence is at the end of its header.
    notice = re.search(r"/\* -+\n( \* Copyright.*?) \* -+ ?\*/\s*$",
                       pathlib.Path(package["rply_header"]).read_text(encoding="utf-8"), re.S)
    if not notice:
        sys.exit(f"{package['rply_header']} doesn't end with a copyright notice")
    (folder / "RPly.txt").write_text(re.sub(r"^ \* ?", "", notice.group(1), flags=re.M), encoding="utf-8")


def files_of(tree):
    return sorted(path for path in tree.rglob("*") if path.is_symlink() or not path.is_dir())


def mode_of(path):
    return 0o755 if path.stat().st_mode & 0o100 else 0o644


def write_zip(tree, archive):
    with zipfile.ZipFile(archive, "w") as out:
        for path in files_of(tree):
            info = zipfile.ZipInfo(path.relative_to(tree.parent).as_posix(), TIME)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = mode_of(path) << 16
            out.writestr(info, path.read_bytes())


def write_tar(tree, archive):
    def nameless(info):
        info.uid = info.gid = info.mtime = 0
        info.uname = info.gname = ""
        if info.isfile():
            info.mode = mode_of(tree.parent / info.name)
        return info

    uncompressed = io.BytesIO()
    with tarfile.open(fileobj=uncompressed, mode="w", format=tarfile.PAX_FORMAT) as out:
        for path in files_of(tree):
            out.add(path, path.relative_to(tree.parent).as_posix(), filter=nameless)
    with open(archive, "wb") as file, gzip.GzipFile("", "wb", fileobj=file, mtime=0) as out:
        out.write(uncompressed.getvalue())


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    package = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    archive = folder / f"{package['name']}.{package['archive']}"
    with tempfile.TemporaryDirectory() as temporary:
        tree = pathlib.Path(temporary, package["name"])
        # Stripping writes the time into a DLL.
        component = ["--component", package["component"]] if package["component"] else []
        subprocess.run([package["cmake"], "--install", package["build"], "--strip", "--prefix", tree, *component], check=True,
                       stdout=subprocess.DEVNULL, env={**os.environ, "SOURCE_DATE_EPOCH": "0"})
        add_documents(pathlib.Path(package["source"]), tree)
        add_licences(package, licences_of(package), tree / "licences")
        (write_zip if package["archive"] == "zip" else write_tar)(tree, archive)
    print(archive)


if __name__ == "__main__":
    main()
