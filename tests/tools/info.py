"""`velmar info` with mesh files."""
import re
import struct

from support import TRIANGLE, ToolTest


class Info(ToolTest):
    def test_an_obj_file(self):
        code, output, errors = self.run_tool("info", "square.obj")
        checksum = re.search(r"checksum +(\d+)", output).group(1)
        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(output, f"""\
file       square.obj
kind       Wavefront OBJ
vertices   8
normals    none
UVs        1 set of 3
triangles  2
quads      1
materials  2: red, blue
bounds     (0, 0, 0) to (2, 2, 1.5)
area       8.12132
volume     none: not closed
edges      8 open
faces      0 degenerate, 0 duplicate
unused     0 vertices
checksum   {checksum}
""")

    def test_a_vmmesh_file_says_whether_it_is_compressed(self):
        self.run_tool("convert", "square.obj", "packed.vmmesh")
        self.run_tool("convert", "square.obj", "plain.vmmesh", "--plain")
        self.assertIn("kind       vmmesh version 4, compressed\n", self.run_tool("info", "packed.vmmesh")[1])
        self.assertIn("kind       vmmesh version 4, not compressed\n", self.run_tool("info", "plain.vmmesh")[1])

    def test_the_content_is_the_same_in_every_format(self):
        self.run_tool("convert", "--up", "z", "square.obj", "packed.vmmesh")
        rest = [self.run_tool("info", name)[1].split("\n", 2)[2] for name in ("square.obj", "packed.vmmesh")]
        self.assertEqual(rest[0], rest[1])

    def test_ply_and_stl_files(self):
        self.write("a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                            "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n")
        self.write("a.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                            "endloop\nendfacet\nendsolid a\n")
        for name, kind in (("a.ply", "PLY"), ("a.stl", "STL")):
            code, output, errors = self.run_tool("info", name)
            self.assertEqual((code, errors), (0, ""))
            self.assertIn(f"kind       {kind}\nvertices   3\n", output)
            self.assertIn("triangles  1\n", output)
            self.assertEqual(self.run_tool("export", name, "scene.xml")[::2], (0, ""))

    def test_a_broken_mesh_file_is_named_once_wherever_it_lies(self):
        (self.folder / "sub").mkdir()
        self.write("sub/cut.vmmesh", b"oCS\0")
        self.expect_failure(["info", "sub/cut.vmmesh"], r"velmar: sub/cut\.vmmesh: Read failed\.")

    def test_an_empty_mesh_has_no_bounds(self):
        self.write("empty.obj", "")
        self.assertIn("bounds     none\n", self.run_tool("info", "empty.obj")[1])

    def test_faces_that_refer_to_nothing_are_reported(self):
        self.run_tool("convert", "triangle.obj", "bad.vmmesh", "--plain")
        content = bytearray((self.folder / "bad.vmmesh").read_bytes())
        # The triangle's record is before the count of quads at the end.
        content[-32:-28] = struct.pack("<I", 77)
        self.write("bad.vmmesh", bytes(content))
        code, output, errors = self.run_tool("info", "bad.vmmesh")
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("fault      triangle 0 refers to vertex 77 of 3\n", output)

    def test_control_characters_in_names_are_not_obeyed(self):
        self.write("sly.obj", TRIANGLE.replace("f 1", "usemtl a\x1b[2Jb\x07\nf 1"))
        self.assertIn("materials  1: a\ufffd[2Jb\ufffd\n", self.run_tool("info", "sly.obj")[1])
        self.write("sly.ply", "\x1b[2J")
        self.assertNotIn("\x1b", self.run_tool("info", "sly.ply")[2])

    def test_a_missing_file(self):
        self.expect_failure(["info", "missing.obj"], r"velmar: Failed to open file 'missing\.obj': .+ \(code 2\)")

    def test_an_unknown_format(self):
        self.write("model.txt", TRIANGLE)
        self.expect_failure(["info", "model.txt"], r"velmar: model\.txt: Unsupported mesh format 'txt'\.")

    def test_a_nonsense_file(self):
        self.write("noise.vmmesh", b"noise, not a mesh")
        self.expect_failure(["info", "noise.vmmesh"], r"velmar: noise\.vmmesh: Invalid magic number\.")

    def test_a_parse_error_names_file_line_and_reason(self):
        self.write("broken.obj", TRIANGLE + "v 1 2 x\n")
        self.expect_failure(["info", "broken.obj"],
                            r"velmar: broken\.obj: Parse error while reading position on line 5")

    def test_a_directory_is_not_a_mesh(self):
        (self.folder / "folder.obj").mkdir()
        self.expect_failure(["info", "folder.obj"], r"velmar: .*'?folder\.obj'?: .+")
