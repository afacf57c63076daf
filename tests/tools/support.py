"""What the tests of the command line tool share: running it, and files to give it."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL, EMULATOR = sys.argv[1:3]
COMMAND = [EMULATOR, TOOL] if EMULATOR else [TOOL]
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
TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.write("square.obj", SQUARE)
        self.write("triangle.obj", TRIANGLE)

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def run_tool(self, *arguments, **options):
        done = subprocess.run(COMMAND + list(arguments), cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=120, **options)
        output = done.stdout.replace(b"\r\n", b"\n").decode()
        errors = done.stderr.replace(b"\r\n", b"\n").decode()
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

    def mesh_names(self, folder="scene_meshes"):
        return sorted(p.name for p in (self.folder / folder).iterdir())
