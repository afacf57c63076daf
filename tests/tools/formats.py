"""`velmar convert` to OBJ, PLY and STL, and what `velmar info` says of meshes."""
import json

from support import BOX, SQUARE, TRIANGLE, ToolTest


class Formats(ToolTest):
    def rows(self, name):
        output = self.run_tool("info", name)[1]
        return {line[:11].strip(): line[11:] for line in output.splitlines()}

    def content(self, name, without=("file", "kind", "checksum")):
        return {key: value for key, value in self.rows(name).items() if key not in without}

    def test_obj_round_trip_keeps_everything(self):
        self.write("a.obj", SQUARE.replace("usemtl red", "vn 0 0 1\nusemtl red")
                   .replace("5/1 6/2 7/3 8/1", "5/1/1 6/2/1 7/3/1 8/1/1")
                   .replace("1/1 2/2 3/3", "1/1/1 2/2/1 3/3/1").replace("1/1 3/3 4/2", "1/1/1 3/3/1 4/2/1"))
        self.expect(["convert", "-q", "a.obj", "a.vmmesh"])
        self.expect(["convert", "-q", "a.vmmesh", "b.obj"])
        self.assertEqual(self.content("a.obj"), self.content("b.obj"))
        self.expect(["convert", "-q", "b.obj", "b.vmmesh"])
        self.assertEqual((self.folder / "a.vmmesh").read_bytes(), (self.folder / "b.vmmesh").read_bytes())

    def test_ply_round_trip_keeps_geometry_normals_and_uvs(self):
        self.write("a.obj", "v 0 0 0\nv 0.1 0 0\nv 0.3 0.7 0\nv 0 1e-7 0\nvt 0.25 0.5\nvt 1 1\nvt 0 0\nvn 0 0 1\n"
                            "f 1/1/1 2/2/1 3/3/1\nf 1/1/1 2/2/1 3/3/1 4/2/1\n")
        for options in ([], ["--text"]):
            self.expect(["convert", "-q", *options, "a.obj", "a.ply"])
            self.expect(["convert", "-q", *options, "a.ply", "b.ply"])
            self.assertEqual((self.folder / "a.ply").read_bytes(), (self.folder / "b.ply").read_bytes())
            rows = self.rows("a.ply")
            self.assertEqual((rows["vertices"], rows["normals"], rows["triangles"], rows["quads"], rows["UVs"]),
                             ("4", "4", "1", "1", "1 set of 7"))
            self.assertEqual(self.bounds("a.ply"), [(0, 0, 0), tuple([0.3, 0, 0.7])])
        self.assertTrue((self.folder / "a.ply").read_bytes().startswith(b"ply\nformat ascii"))

    def test_stl_round_trip_keeps_the_triangles(self):
        self.write("cube.obj", BOX)
        for options, start in (([], b"binary STL"), (["--text"], b"solid")):
            self.expect(["convert", "-q", *options, "cube.obj", "a.stl"])
            self.assertTrue((self.folder / "a.stl").read_bytes().startswith(start))
            rows = self.rows("a.stl")
            self.assertEqual((rows["triangles"], rows["area"], rows["volume"]), ("12", "6", "1"))

    def test_what_a_format_has_no_place_for_is_noted(self):
        self.assertEqual(self.run_tool("convert", "square.obj", "a.stl")[2],
                         "velmar: note: a.stl: the format has no place for UVs, materials\n")
        self.assertEqual(self.run_tool("convert", "square.obj", "a.obj")[2], "")

    def test_a_folder_is_converted_to_another_format(self):
        (self.folder / "in").mkdir()
        self.write("in/a.obj", TRIANGLE)
        self.assertEqual(self.run_tool("convert", "-r", "--to", "ply", "in", "out")[0], 0)
        self.assertTrue((self.folder / "out/a.ply").read_bytes().startswith(b"ply\n"))

    def test_measures_of_a_closed_mesh(self):
        self.write("cube.obj", BOX)
        rows = self.rows("cube.obj")
        self.assertEqual([rows[name] for name in ("area", "volume", "edges", "faces", "unused")],
                         ["6", "1", "0 open", "0 degenerate, 0 duplicate", "0 vertices"])

    def test_measures_of_a_mesh_with_faults(self):
        self.write("a.ply", "ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\nproperty float y\nproperty float z\n"
                            "element face 3\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n1 1 0\n0 1 0\n9 9 9\n4 0 1 2 3\n4 3 2 1 0\n4 0 0 1 1\n")
        rows = self.rows("a.ply")
        self.assertEqual([rows[name] for name in ("area", "faces", "unused")], ["2", "1 degenerate, 1 duplicate", "1 vertex"])
        self.assertEqual(self.rows("triangle.obj")["edges"], "3 open")

    def test_a_face_that_names_a_corner_twice_is_degenerate_whatever_its_area(self):
        self.write("a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                            "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0\n1 0 0\n1 1 0\n4 0 1 1 2\n")
        rows = self.rows("a.ply")
        self.assertEqual((rows["area"], rows["faces"]), ("0.5", "1 degenerate, 0 duplicate"))

    def test_a_closed_mesh_with_a_face_turned_over_has_no_volume(self):
        self.write("cube.obj", BOX.replace("f 5 6 7 8", "f 8 7 6 5"))
        rows = self.rows("cube.obj")
        self.assertEqual((rows["volume"], rows["edges"]), ("none: not closed", "0 open"))

    def test_a_mesh_of_separate_triangles_is_closed_where_their_corners_meet(self):
        self.write("cube.obj", BOX)
        self.run_tool("convert", "-q", "cube.obj", "cube.stl")
        self.assertEqual(self.rows("cube.stl")["edges"], "0 open")


class Json(ToolTest):
    """`velmar info --json` and several files."""

    def read(self, *names, code=0):
        result, output, _ = self.run_tool("info", "--json", *names)
        self.assertEqual(result, code)
        document = json.loads(output)
        self.assertEqual(document["schema"], "velmar-info-1")
        return document["files"]

    def test_a_mesh(self):
        self.write("cube.obj", BOX)
        cube, = self.read("cube.obj")
        self.assertRegex(cube.pop("checksum"), r"\A\d+\Z")
        self.assertEqual(cube, {
            "file": "cube.obj", "kind": "Wavefront OBJ", "vertices": 8, "normals": 0, "uv_sets": 0, "uvs": 0,
            "triangles": 0, "quads": 6, "materials": ["default"], "bounds": {"min": [0, 0, 0], "max": [1, 1, 1]},
            "area": 6, "volume": 1, "open_edges": 0, "shared_edges": 0, "degenerate_faces": 0, "duplicate_faces": 0,
            "unused_vertices": 0})

    def test_a_scene(self):
        self.run_tool("export", "-q", "square.obj", "scene.xml")
        scene, = self.read("scene.xml")
        self.assertEqual(scene["nodes"], {"renderer_settings": 1, "camera": 1, "tonemapping": 1, "background_settings": 1,
                                          "material": 3, "mesh": 2, "model2": 2})
        self.assertEqual((scene["meshes"]["files"], scene["meshes"]["quads"], scene["dangling_uids"]), (2, 2, 0))
        self.assertEqual([file["usable"] for file in scene["external_files"]], [True, True])

    def test_several_files_with_one_that_fails(self):
        self.write("broken.obj", "f 1 x")
        first, second, third = self.read("square.obj", "broken.obj", "triangle.obj", code=1)
        self.assertEqual((first["quads"], third["triangles"]), (1, 1))
        self.assertEqual(set(second), {"file", "error"})

    def test_several_files_as_text(self):
        self.write("broken.obj", "f 1 x")
        code, output, errors = self.run_tool("info", "square.obj", "broken.obj", "triangle.obj")
        self.assertEqual((code, output.count("\nchecksum "), errors.count("\n")), (1, 2, 1))

    def test_quiet_prints_faults_alone(self):
        self.expect(["info", "-q", "square.obj", "triangle.obj"])
        self.write("a.ply", "no mesh")
        self.expect_failure(["info", "-q", "square.obj", "a.ply"], r"velmar: a\.ply: .+")

    def test_names_that_need_quoting(self):
        self.write("a.obj", b'v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a"b\\c\xfc\nf 1 2 3\n')
        mesh, = self.read("a.obj")
        self.assertEqual(mesh["materials"], ['a"b\\cü'])
