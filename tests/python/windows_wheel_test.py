"""The wheel for Windows, installed and used by a Python for Windows. That Python has neither pip nor zlib, so the wheel is
unpacked into a folder of its path as pip does it: each file is compared with the wheel's list of checksums.

Usage: windows_wheel_test.py BUILD WORK EMULATOR PYTHON [unittest options]
"""
import base64
import csv
import functools
import hashlib
import pathlib
import shutil
import sys
import unittest
import zipfile

import processes

BUILD, WORK = map(pathlib.Path, sys.argv[1:3])
EMULATOR, PYTHON = sys.argv[3:5]
SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"
SITE = WORK / "site"
run = functools.partial(processes.run, folder=WORK)


def setUpModule():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    global wheel
    wheel = pathlib.Path(run("/usr/bin/python3", SCRIPTS / "wheel.py", BUILD / "package.json", WORK).strip())
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(SITE)


class Wheel(unittest.TestCase):
    def test_name_says_the_system(self):
        self.assertRegex(wheel.name, r"\Avelmar-[\d.]+-py3-none-win_amd64\.whl\Z")

    def test_list_of_files_is_true(self):
        (record,) = SITE.glob("velmar-*.dist-info/RECORD")
        with open(record, encoding="utf-8", newline="") as lines:
            rows = list(csv.reader(lines))
        self.assertEqual(sorted(name for name, _, _ in rows),
                         sorted(path.relative_to(SITE).as_posix() for path in SITE.rglob("*") if path.is_file()))
        for name, checksum, size in rows:
            if checksum:
                content = (SITE / name).read_bytes()
                digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode("ascii")
                self.assertEqual((checksum, int(size)), (f"sha256={digest}", len(content)), name)

    def test_package_works_with_what_it_brings(self):
        program = """
import os, sys, velmar
print(sys.platform, velmar.__version__)
print(os.path.dirname(velmar.library()._name) == os.path.dirname(velmar.__file__))
with velmar.Scene() as scene:
    scene.add(velmar.Mesh("mesh", [(0, 0, 0), (1, 0, 0), (0, 1, 0)], [(0, 1, 2)]))
    scene.write("wheel.xml")
try:
    velmar.Mesh.load("nowhere.obj")
except velmar.FileError as failure:
    print("failed:", "nowhere.obj" in str(failure))
preview = velmar.preview._find()
print(preview.is_relative_to(os.path.dirname(velmar.__file__)))
print(velmar.preview._loaded(str(preview)).VelmarPreview_Wait is not None)
import velmar.farm.tool
print(os.path.samefile(os.path.dirname(velmar.farm.tool.find()), os.path.dirname(velmar.__file__)))
os.makedirs("store/manifest")
with open("wheel.obj", "w") as file:
    file.write("v 0 0 0\\nv 1 0 0\\nv 0 1 0\\nf 1 2 3\\n")
print(velmar.farm.tool.convert(os.path.abspath("store"), [], [os.path.abspath("wheel.obj")])["converted"])
"""
        output = run(EMULATOR, PYTHON, "-c", program, PYTHONPATH=f"Z:{SITE}", PYTHONDONTWRITEBYTECODE="1")
        version = wheel.name.split("-")[1]
        self.assertEqual(output.split(), ["win32", version, "True", "failed:", "True", "True", "True", "True", "1"])
        self.assertTrue((WORK / "wheel.xml").is_file())
        self.assertEqual(len(list(WORK.glob("wheel_meshes/*.vmmesh"))), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
