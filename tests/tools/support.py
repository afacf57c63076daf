"""What the tests of the command line tool share: running it, and files to give it."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

# Tests run it in folders of their own.
TOOL, EMULATOR = (os.path.abspath(path) if path else "" for path in sys.argv[1:3])
COMMAND = [EMULATOR, TOOL] if EMULATOR else [TOOL]
# Whether the renderer library is beside the tool.
PREVIEW = (pathlib.Path(TOOL).parent / "vs2017_64").is_dir()
# The tree of sources.
ROOT = pathlib.Path(__file__).resolve().parents[2]
# What a text-mode file of the tool's system ends a line with.
LINE_END = b"\r\n" if EMULATOR else b"\n"

# A square of two triangles and a quad above it, with two materials and UVs.
SQUARE = """mtllib none.mtl
v 0 0 0
v 2 0 0
v 2 2 0
v 0 2 0
v 0 0 1
v 2 0 1
v 2 2 1
v 0 2 1.5
vt 0 0
vt 1 0
vt 1 1
usemtl red
f 1/1 2/2 3/3
f 1/1 3/3 4/2
usemtl blue
f 5/1 6/2 7/3 8/1
"""
# Edges of 1 in an OBJ file: x to the right, y up, z towards the viewer.
BOX = """v 0 0 0
v 1 0 0
v 1 1 0
v 0 1 0
v 0 0 1
v 1 0 1
v 1 1 1
v 0 1 1
f 4 3 2 1
f 5 6 7 8
f 1 2 6 5
f 3 4 8 7
f 2 3 7 6
f 4 1 5 8
"""
TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.write("square.obj", SQUARE)
        self.write("triangle.obj", TRIANGLE)
        # The library that the square names; without a colour in it.
        self.write("none.mtl", "# no materials\n")

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def run_tool(self, *arguments, encoding="utf-8", **options):
        options = {"cwd": self.folder, "stdin": subprocess.DEVNULL, "capture_output": True, "timeout": 120, **options}
        done = subprocess.run(COMMAND + list(arguments), **options)
        output = done.stdout.replace(b"\r\n", b"\n").decode(encoding)
        errors = done.stderr.replace(b"\r\n", b"\n").decode(encoding)
        if arguments[:1] == ("export",) and done.returncode == 0 and "--dry-run" not in arguments:
            # Whatever the test looks at, the document must be XML, and clean.
            for scene in [a for a in arguments if os.fsencode(a).lower().endswith(b".xml")]:
                xml.etree.ElementTree.parse(self.folder / scene)
                checked = subprocess.run(COMMAND + ["check", scene], **options)
                is_dark = "none" in arguments and b"[no-light]" in checked.stdout
                self.assertEqual((checked.returncode, b"" if is_dark else checked.stdout, checked.stderr), (0, b"", b""))
        return done.returncode, output, errors

    def expect(self, arguments, code=0, output="", errors=""):
        self.assertEqual(self.run_tool(*arguments), (code, output, errors))

    def expect_failure(self, arguments, pattern, code=1):
        """One line of error that fits the pattern whole; nothing else is printed."""
        result, output, errors = self.run_tool(*arguments)
        self.assertRegex(errors, rf"\A(?:{pattern})\n\Z")
        self.assertEqual((result, output), (code, ""))

    def files(self):
        return sorted(p.relative_to(self.folder).as_posix() for p in self.folder.rglob("*") if p.is_file())

    def read_document(self, name="scene.xml"):
        """The root of a scene, by a parser that takes nothing but XML."""
        return xml.etree.ElementTree.parse(self.folder / name).getroot()

    def bounds(self, name):
        """The corners of a mesh file's box."""
        row = re.search(r"bounds +\((.*)\) to \((.*)\)", self.run_tool("info", name)[1])
        return [tuple(float(number) for number in corner.split(", ")) for corner in row.groups()]

    def mesh_names(self, folder="scene_meshes"):
        return sorted(p.name for p in (self.folder / folder).iterdir())
