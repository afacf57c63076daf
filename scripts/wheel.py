#!/usr/bin/env python3
"""Makes the Python package of a build: a wheel with both libraries, the preview renderer and the tool inside, for pip.

Usage: wheel.py BUILD/package.json FOLDER

Prints the path of the wheel.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from package import add_licences, licences_of

# Where the package looks for the preview renderer.
FOLDER = "vs2017_64"


def oldest_glibc(libraries):
    """The version of glibc from which on the libraries can be loaded."""
    versions = {(2, 17)}
    for library in libraries:
        symbols = subprocess.run(["objdump", "-T", library], check=True, capture_output=True, text=True).stdout
        versions.update((int(major), int(minor)) for major, minor in re.findall(r"\(GLIBC_(\d+)\.(\d+)", symbols))
    return max(versions)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    package = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    folder = pathlib.Path(sys.argv[2]).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as temporary:
        tree, made = pathlib.Path(temporary, "tree"), pathlib.Path(temporary, "made")
        environment = {**os.environ, "SOURCE_DATE_EPOCH": "315532800"}
        subprocess.run([package["cmake"], "--install", package["build"], "--strip", "--prefix", tree], check=True,
                       stdout=subprocess.DEVNULL, env=environment)
        source = tree / "share" / "velmar" / "python"
        names = ["VelmarAPI", "velmarkit"]
        if package["archive"] == "zip":
            libraries = [tree / "bin" / f"{name}.dll" for name in names]
            preview = "velmar_rt_sdk.dll"
            tool = "velmar.exe"
            platform = "win_amd64"
        else:
            libraries = [path for name in names for path in tree.glob(f"lib*/**/lib{name}.so")]
            preview = "velmar_rt_sdk.so"
            tool = "bin/velmar"
            programs = [*libraries, tree / "bin" / FOLDER / preview, tree / "bin" / "velmar"]
            platform = "manylinux_{}_{}_x86_64".format(*oldest_glibc(programs))
            # The tool asks for its library by this name, in this folder as seen from its own.
            (source / "velmar" / "lib").mkdir()
            shutil.copyfile(libraries[0], source / "velmar" / "lib" / "libVelmarAPI.so.1")
        for library in libraries:
            # As a file of its own, under the name that the package looks for.
            shutil.copyfile(library, source / "velmar" / library.name)
        # Executable, and it stays so.
        (source / "velmar" / tool).parent.mkdir(exist_ok=True)
        shutil.copy(tree / "bin" / pathlib.Path(tool).name, source / "velmar" / tool)
        (source / "velmar" / FOLDER).mkdir()
        shutil.copyfile(tree / "bin" / FOLDER / preview, source / "velmar" / FOLDER / preview)
        add_licences(package, licences_of(package), source / "licences")
        subprocess.run([sys.executable, "-m", "pip", "wheel", "--quiet", "--no-build-isolation", "--no-deps", "--no-index",
                        "--disable-pip-version-check", "--config-settings", f"--build-option=--plat-name={platform}",
                        "--wheel-dir", made, source], check=True, env=environment, stdout=subprocess.DEVNULL)
        (wheel,) = made.glob("*.whl")
        print(shutil.copy(wheel, folder))


if __name__ == "__main__":
    main()
