"""Files with faults, and files that programs write otherwise than one expects."""
import os
import struct
import unittest

from support import EMULATOR, SQUARE, TRIANGLE, ToolTest

PLY_VERTICES = """ply
format ascii 1.0
element vertex 5
property float x
property float y
property float z
%selement face 1
property list uchar int %s
end_header
"""


class Text(ToolTest):
    """Names that aren't UTF-8 and characters that XML forbids."""

    def names(self, *models):
        code, _, errors = self.run_tool("export", "--no-ground", *models, "scene.xml")
        self.assertEqual(code, 0, errors)
        scene = self.read_document()
        return [node.findtext("name") for node in scene.iterfind("material")], errors

    def test_latin_1_names_are_read_as_windows_1252(self):
        self.write("a.obj", b"v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl gr\xfcn\x80\nf 1 2 3\n")
        names, errors = self.names("a.obj")
        self.assertEqual(names, ["grün€"])
        self.assertEqual(errors.count("a.obj: 1 name of a material isn't valid UTF-8"), 1)

    def test_control_characters_are_replaced(self):
        self.write("a.obj", b"v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\x01b\x7f\xed\xa0\x80\nf 1 2 3\n")
        names, _ = self.names("a.obj")
        self.assertEqual(names, ["a\ufffdb\x7fí\xa0€"])

    def test_names_that_become_one_stay_apart(self):
        self.write("a.obj", TRIANGLE.replace("f 1 2 3\n", "").encode() +
                   "usemtl ä\nf 1 2 3\n".encode() + b"usemtl \xe4\nf 1 3 2\n")
        self.assertEqual(self.names("a.obj")[0], ["ä", "ä 2"])

    def test_colours_are_found_by_such_names(self):
        self.write("a.mtl", b"newmtl gr\xfcn\nKd 0 1 0\n")
        self.write("a.obj", b"mtllib a.mtl\n" + TRIANGLE.encode().replace(b"f 1", b"usemtl gr\xfcn\nf 1"))
        self.names("a.obj")
        colour = self.read_document().findtext("material/diffuse/albedo/constant/rgb/rgb")
        self.assertEqual(colour.split(), ["0", "1", "0"])

    def test_characters_of_more_bytes_than_they_need_are_no_utf_8(self):
        self.write("a.obj", b"v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl \xe0\x80\xaf\nf 1 2 3\n")
        self.assertEqual(self.names("a.obj")[0], ["à€¯"])

    def test_an_ordinary_name_is_no_reason_for_a_note(self):
        self.assertEqual(self.names("triangle.obj")[1], "")

    @unittest.skipIf(EMULATOR, "names of files are UTF-16 there")
    def test_a_model_whose_file_name_is_not_utf_8(self):
        name = b"gr\xfcn.obj"
        (self.folder / os.fsdecode(name)).write_text(TRIANGLE)
        code, output, errors = self.run_tool("export", "--no-ground", os.fsdecode(name), "scene.xml", encoding="latin-1")
        self.assertEqual((code, errors.count("the name of the file isn't valid UTF-8")), (0, 1))
        self.assertEqual(self.read_document().findtext("model2/name"), "grün")

    @unittest.skipIf(EMULATOR, "names of files are UTF-16 there")
    def test_a_scene_whose_name_is_not_utf_8_is_refused(self):
        code, _, errors = self.run_tool("export", "triangle.obj", os.fsdecode(b"gr\xfcn.xml"), encoding="latin-1")
        self.assertEqual(code, 2)
        self.assertIn("the name of a scene must be UTF-8", errors)

    def test_info_says_where_a_document_is_not_xml(self):
        for text in (b"\x01", b"\xfc", b"&#1;", b"&#xD800;", b"\xef\xbf\xbe"):
            self.write("scene.xml", b"<scene>\n<material><uid>1</uid>\n<name>" + text + b"</name></material></scene>")
            self.expect_failure(["info", "scene.xml"], r"velmar: scene\.xml: not XML: [^\n]+ on line 3")


class Models(ToolTest):
    def info(self, name):
        code, output, errors = self.run_tool("info", name)
        self.assertEqual((code, errors), (0, ""))
        return {line[:11].strip(): line[11:] for line in output.splitlines()}

    def test_polygons_of_ply_files_are_read_whole(self):
        for name in ("vertex_indices", "vertex_index"):
            for corners, faces in ((3, ("1", "0")), (4, ("0", "1")), (5, ("3", "0"))):
                with self.subTest(name=name, corners=corners):
                    self.write("a.ply", PLY_VERTICES % ("", name) + "0 0 0\n1 0 0\n2 1 0\n1 2 0\n0 1 0\n" +
                               f"{corners} " + " ".join(map(str, range(corners))) + "\n")
                    info = self.info("a.ply")
                    self.assertEqual((info["triangles"], info["quads"]), faces)

    def test_normals_and_uvs_of_ply_files_are_kept(self):
        properties = "".join(f"property float {name}\n" for name in ("nx", "ny", "nz", "s", "t"))
        self.write("a.ply", PLY_VERTICES % (properties, "vertex_indices") +
                   "".join(f"{x} {y} 0 0 0 2 {x} {y}\n" for x, y in ((0, 0), (1, 0), (1, 1), (0, 1), (5, 5))) + "4 0 1 2 3\n")
        info = self.info("a.ply")
        self.assertEqual((info["normals"], info["UVs"], info["unused"]), ("5", "1 set of 5", "1 vertex"))
        self.run_tool("export", "--no-ground", "a.ply", "scene.xml")
        self.assertIsNone(self.read_document().find("mesh/normal_smoothing"))

    def test_binary_ply_files_of_both_byte_orders(self):
        for order, mark in (("little", "<"), ("big", ">")):
            header = (f"ply\nformat binary_{order}_endian 1.0\ncomment made by hand\nelement vertex 4\nproperty double x\n"
                      "property float y\nproperty short z\nproperty uchar red\nelement face 1\n"
                      "property uchar flags\nproperty list uchar uint vertex_index\n"
                      "property list uchar float texcoord\nend_header\n")
            body = b"".join(struct.pack(mark + "dfhB", x, y, 7, 200) for x, y in ((0, 0), (2, 0), (2, 2), (0, 2)))
            body += struct.pack(mark + "BB4IB8f", 1, 4, 0, 1, 2, 3, 8, 0, 0, 1, 0, 1, 1, 0, 1)
            self.write("a.ply", header.encode() + body)
            info = self.info("a.ply")
            self.assertEqual((info["quads"], info["bounds"], info["UVs"]),
                             ("1", "(0, 0, 7) to (2, 2, 7)", "1 set of 4"))

    def obj_lines(self, keyword):
        self.expect(["convert", "-q", "a.ply", "a.obj"])
        lines = (self.folder / "a.obj").read_text().splitlines()
        return [line.removeprefix(keyword + " ") for line in lines if line.startswith(keyword + " ")]

    def test_every_strip_of_a_ply_file_begins_with_the_winding_of_its_corners(self):
        self.write("a.ply", "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n"
                            "element tristrips 1\nproperty list int int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n0 1 0\n1 1 0\n9 0 1 2 3 -1 3 2 1 0\n")
        self.assertEqual(self.obj_lines("f"), ["1 2 3", "3 2 4", "4 3 2", "2 3 1"])

    def test_faces_of_a_ply_file_may_come_before_their_vertices(self):
        self.write("a.ply", "ply\nformat ascii 1.0\nelement face 1\nproperty list uchar int vertex_indices\n"
                            "element vertex 3\nproperty float x\nproperty float y\nproperty float z\nend_header\n"
                            "3 2 0 1\n0 0 0\n1 0 0\n0 1 0\n")
        self.assertEqual(self.obj_lines("f"), ["3 1 2"])

    def test_a_ply_normal_that_is_not_finite_is_none(self):
        self.write("a.ply", PLY_VERTICES.replace("element face", "property float nx\nproperty float ny\nproperty float nz\n"
                                                 "element face") % ("", "vertex_indices") +
                   "0 0 0 0 0 1\n1 0 0 0 nan 1\n1 1 0 0 0 inf\n0 1 0 0 0 2\n9 9 9 0 0 1\n3 0 1 2\n")
        self.assertEqual(self.obj_lines("vn"), ["0 1 0", "0 0 0", "0 0 0", "0 1 0", "0 1 0"])

    def test_a_ply_file_is_scaled_in_all_directions(self):
        self.write("a.ply", PLY_VERTICES % ("", "vertex_indices") + "0 0 0\n1 0 0\n1 2 0\n0 1 3\n0 0 0\n4 0 1 2 3\n")
        self.expect(["convert", "-q", "--scale", "2", "a.ply", "a.vmmesh"])
        self.assertEqual(self.bounds("a.vmmesh"), [(0, 0, 0), (2, 4, 6)])

    def test_of_two_ply_properties_of_one_meaning_the_first_counts(self):
        self.write("a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                            "property float u\nproperty float v\nproperty float s\nproperty float t\n"
                            "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0 0.25 0.5 7 7\n1 0 0 0.5 0.5 8 8\n0 1 0 1 0.5 9 9\n3 0 1 2\n")
        self.assertEqual(self.obj_lines("vt"), ["0.25 0.5", "0.5 0.5", "1 0.5"])

    def test_a_damaged_ply_file_is_reported(self):
        whole = PLY_VERTICES % ("", "vertex_indices") + "0 0 0\n1 0 0\n2 1 0\n1 2 0\n0 1 0\n3 0 1 2\n"
        for content, fault in ((whole[:-7], r"PLY file ends too early \(line 1\d\)"),
                               (whole.replace("3 0 1 2", "3 0 1 9"), r"PLY file has a face that refers to vertex 9 of 5 .*"),
                               (whole.replace("2 1 0", "2 x 0"), r"PLY file has a word that is no number \(line 12\)"),
                               (whole.replace("float y", "long y"), r"PLY header has an unknown type 'long' \(line 5\)"),
                               ("ply\n", r"PLY header ends within its header.*"),
                               ("", r"PLY header .*")):
            self.write("a.ply", content)
            self.expect_failure(["info", "a.ply"], rf"velmar: a\.ply: {fault}")

    def test_byte_order_marks_are_passed_over(self):
        mark = b"\xef\xbb\xbf"
        self.write("a.obj", mark + b"mtllib a.mtl\n" + TRIANGLE.encode().replace(b"f 1", b"usemtl m\nf 1"))
        self.write("a.mtl", mark + b"newmtl m\nKd 1 0 0\n")
        self.expect(["export", "-q", "a.obj", "scene.xml"])
        colour = self.read_document().findtext("material/diffuse/albedo/constant/rgb/rgb")
        self.assertEqual(colour.split(), ["1", "0", "0"])
        self.write("b.obj", mark + TRIANGLE.encode())
        self.assertEqual(self.info("b.obj")["vertices"], "3")

    def test_a_material_library_may_have_an_absolute_path(self):
        for folder in ("library", "meshes"):
            (self.folder / folder).mkdir()
        self.write("library/a.mtl", "newmtl m\nKd 1 0 0\n")
        path = (self.folder / "library/a.mtl").as_posix()
        self.write("meshes/a.obj", f"mtllib {path}\n" + TRIANGLE.replace("f 1", "usemtl m\nf 1"))
        self.expect(["export", "-q", "meshes/a.obj", "scene.xml"])
        self.assertEqual(self.read_document().findtext("material/diffuse/albedo/constant/rgb/rgb").split(), ["1", "0", "0"])

    def test_a_vertex_that_is_not_finite_is_refused(self):
        for number in ("nan", "inf"):
            self.write("a.ply", PLY_VERTICES % ("", "vertex_indices") + f"0 0 0\n1 0 0\n1 1 0\n0 1 0\n{number} 0 0\n4 0 1 2 3\n")
            self.expect_failure(["export", "a.ply", "scene.xml"], r"velmar: a\.ply: vertex 4 isn't finite")
            self.expect_failure(["convert", "a.ply", "a.vmmesh"], r"velmar: a\.ply: vertex 4 isn't finite")
            self.assertIn("fault      vertex 4 isn't finite\n", self.run_tool("info", "a.ply")[1])

    def test_a_file_without_faces_is_refused(self):
        for content in ("", "Dear Sir,\nplease find below\n", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n"):
            self.write("a.obj", content)
            self.expect_failure(["export", "a.obj", "scene.xml"], r"velmar: a\.obj: has no faces[^\n]*")
            self.expect_failure(["convert", "a.obj", "a.vmmesh"], r"velmar: a\.obj: has no faces[^\n]*")

    def test_what_a_material_library_says_in_vain_is_noted(self):
        self.write("a.obj", "mtllib a.mtl\nmtllib gone.mtl\n" + TRIANGLE)
        self.write("a.mtl", "newmtl m\nKd 1 0 0\nKe 1 1 1\nd 0.5\nTr 0.5\nmap_Kd a.png\nnewmtl n\nKe 0 0 0\nd 1\n")
        self.assertEqual(self.run_tool("export", "a.obj", "scene.xml")[2],
                         "velmar: note: a.obj: left out of the material library a.mtl: Ke, Tr, d, map_Kd\n"
                         "velmar: note: a.obj: the material library gone.mtl doesn't exist\n")
        self.write("a.mtl", "newmtl n\nKe 0 0 0\nd 1.0\nTr 0.0\n")
        self.assertNotIn("left out", self.run_tool("export", "a.obj", "scene.xml")[2])

    def test_the_height_is_turned_up(self):
        # A needle along each axis.
        for axis, needle in (("x", "3 0 0"), ("y", "0 3 0"), ("z", "0 0 3"), ("-x", "-3 0 0"), ("-y", "0 -3 0"), ("-z", "0 0 -3")):
            with self.subTest(axis=axis):
                self.write("a.obj", f"v 0 0 0\nv 0.1 0.1 0.1\nv {needle}\nf 1 2 3\n")
                self.expect(["convert", "-q", "--up", axis, "a.obj", "a.vmmesh"])
                self.assertEqual(self.bounds("a.vmmesh")[1][2], 3)
                self.run_tool("export", "-q", "--up", axis, "a.obj", "scene.xml")
                matrix = self.read_document().findtext("model2/rotation/matrix")
                row = matrix.split()[6:9] if matrix else ["0", "0", "1"]
                self.assertEqual(sum(float(a) * float(b) for a, b in zip(row, needle.split())), 3)

    def test_an_obj_file_is_turned_upright_by_itself(self):
        self.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 3 0\nf 1 2 3\n")
        self.run_tool("convert", "a.obj", "a.vmmesh")
        self.assertEqual(self.bounds("a.vmmesh"), [(0, 0, 0), (1, 0, 3)])


class Options(ToolTest):
    """Options that make no sense, and those that change nothing."""

    def test_values_that_give_no_scene_are_wrong_usage(self):
        for option, value in (("--sun", "0,0,0"), ("--sun", "1,2"), ("--scale", "0"), ("--scale", "-1"), ("--scale", "nan"),
                              ("--at", "1,2"), ("--rotate", "x"), ("--ground", "-1"), ("--camera", "1;2;3")):
            with self.subTest(option=option, value=value):
                code, output, errors = self.run_tool("export", option, value, "square.obj", "scene.xml")
                self.assertEqual((code, output), (2, ""))
                self.assertIn(option, errors)
        self.assertNotIn("scene.xml", self.files())

    def test_options_without_effect_are_noted(self):
        self.assertEqual(self.run_tool("export", "--light", "none", "--sun", "1,1,1", "--light-strength", "2", "triangle.obj",
                                       "scene.xml")[2],
                         "velmar: note: --sun has no effect without --light sunsky\n"
                         "velmar: note: --light-strength has no effect without --light uniform\n")

    def test_the_ground_does_not_hide_the_models_from_below(self):
        code, _, errors = self.run_tool("export", "--elevation", "-45", "triangle.obj", "scene.xml")
        self.assertEqual(code, 0)
        self.assertIn("the camera is below the models, so there is no ground", errors)
        self.assertEqual(len(self.read_document().findall("mesh")), 1)
        self.run_tool("export", "-q", "--elevation", "-45", "--ground", "10", "triangle.obj", "scene.xml")
        self.assertEqual(len(self.read_document().findall("mesh")), 2)
