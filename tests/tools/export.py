"""`velmar export`."""
import math
import re
import struct
import xml.etree.ElementTree

from support import LINE_END, SQUARE, TRIANGLE, ToolTest


class Export(ToolTest):
    def export(self, *arguments):
        """Without the ground, which would add a mesh file to each scene."""
        return self.run_tool("export", "--no-ground", *arguments)

    def test_tells_what_was_read_and_written(self):
        code, output, errors = self.export("square.obj", "triangle.obj", "scene.xml")
        self.assertEqual((code, errors), (0, ""))
        self.assertRegex(output, r"""\Asquare\.obj: 8 vertices, 2 triangles, 1 quad, 2 materials
triangle\.obj: 3 vertices, 1 triangle, 0 quads, 1 material
scene\.xml \([0-9.]+ (bytes|KB)\)
scene_meshes/mesh_\d+\.vmmesh \(\d+ bytes\)
scene_meshes/mesh_\d+\.vmmesh \(\d+ bytes\)
\Z""")

    def test_quiet_writes_nothing_on_success(self):
        self.expect(["export", "-q", "square.obj", "scene.xml"])
        self.assertIn("scene.xml", self.files())

    def test_the_mesh_file_is_named_by_the_checksum_of_the_mesh(self):
        self.export("square.obj", "scene.xml")
        checksum = re.search(r"checksum +(\d+)", self.run_tool("info", "square.obj")[1]).group(1)
        self.assertEqual(self.mesh_names(), [f"mesh_{checksum}.vmmesh"])
        self.assertIn(f"checksum   {checksum}\n", self.run_tool("info", f"scene_meshes/mesh_{checksum}.vmmesh")[1])

    def test_the_document_names_the_mesh_as_seen_from_itself(self):
        (self.folder / "sub" / "deep").mkdir(parents=True)
        documents = []
        for path in ("scene.xml", "sub/scene.xml", "sub/deep/../deep/scene.xml", str(self.folder / "sub" / "deep" / "scene.xml")):
            self.assertEqual(self.export("square.obj", path)[::2], (0, ""))
            documents.append((self.folder / path).read_bytes())
        self.assertEqual(len(set(documents)), 1)
        name = self.mesh_names()[0]
        self.assertIn(f"<path>scene_meshes\\{name}</path>".encode(), documents[0])
        for folder in ("sub", "sub/deep"):
            self.assertEqual(self.mesh_names(f"{folder}/scene_meshes"), [name])
        self.assertEqual(len(self.files()), 3 + 3 * 2)

    def test_lines_end_as_the_system_ends_them(self):
        self.export("square.obj", "scene.xml")
        document = (self.folder / "scene.xml").read_bytes()
        self.assertTrue(document.startswith(b'<?xml version="1.0" encoding="utf-8"?>' + LINE_END + b"<scene>" + LINE_END))
        self.assertTrue(document.endswith(b"</scene>" + LINE_END))

    def test_a_second_run_gives_the_same_bytes_and_keeps_the_mesh_file(self):
        self.export("square.obj", "scene.xml")
        before = (self.folder / "scene.xml").read_bytes()
        output = self.export("square.obj", "scene.xml")[1]
        self.assertEqual((self.folder / "scene.xml").read_bytes(), before)
        self.assertRegex(output, r"\.vmmesh \(\d+ bytes, existed\)\n\Z")

    def test_a_damaged_mesh_file_is_written_anew(self):
        self.export("square.obj", "scene.xml")
        mesh_file = self.folder / "scene_meshes" / self.mesh_names()[0]
        whole = mesh_file.read_bytes()
        mesh_file.write_bytes(whole[:-9])
        self.assertNotIn("existed", self.export("square.obj", "scene.xml")[1])
        self.assertEqual(mesh_file.read_bytes(), whole)

    def test_equal_meshes_share_a_file(self):
        self.write("again.obj", SQUARE)
        self.assertEqual(self.export("square.obj", "again.obj", "scene.xml")[0], 0)
        self.assertEqual(len(self.mesh_names()), 1)

    def test_normals_turn_smoothing_on(self):
        self.write("smooth.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n")
        self.export("smooth.obj", "smooth.xml")
        self.export("triangle.obj", "flat.xml")
        # True is what readers take where the element isn't.
        self.assertNotIn("<normal_smoothing>", (self.folder / "smooth.xml").read_text())
        self.assertIn("<normal_smoothing>false</normal_smoothing>", (self.folder / "flat.xml").read_text())

    def test_a_vmmesh_file_is_a_model_too(self):
        self.run_tool("convert", "--up", "z", "square.obj", "square.vmmesh")
        self.export("square.vmmesh", "scene.xml")
        self.export("square.obj", "other.xml")
        self.assertEqual(self.mesh_names(), self.mesh_names("other_meshes"))

    def test_several_uv_sets_survive(self):
        words = struct.pack("<6I", 5456751, 4, 0, 1, 2, 1) + struct.pack("<I", 1) + b"m" + struct.pack("<I", 0)
        body = struct.pack("<I9f", 3, 0, 0, 0, 1, 0, 0, 0, 1, 0) + struct.pack("<2I", 0, 0)
        body += struct.pack("<I8f", 4, *range(8)) + struct.pack("<8I", 1, 0, 1, 2, 0, 1, 0, 0) + struct.pack("<I", 0)
        self.write("two.vmmesh", words + body)
        self.assertEqual(self.export("two.vmmesh", "scene.xml")[0], 0)
        self.assertIn("UVs        2 sets of 2\n", self.run_tool("info", "scene_meshes/" + self.mesh_names()[0])[1])

    def test_names_of_every_kind(self):
        for name in ("with space", "hash#tag", "per%cent & more", "grün-日本-😀", "v1.2"):
            with self.subTest(name=name):
                self.write(name + ".obj", TRIANGLE)
                (self.folder / name).mkdir()
                self.assertEqual(self.export(name + ".obj", f"{name}/{name}.xml")[::2], (0, ""))
                self.assertTrue((self.folder / name / f"{name}.xml").is_file())
                self.assertEqual(len(self.mesh_names(f"{name}/{name}_meshes")), 1)

    def test_paths_of_more_than_260_characters(self):
        folder = self.folder
        while len(str(folder)) < 400:
            folder = folder / ("long" * 12)
        folder.mkdir(parents=True)
        model = folder / "model.obj"
        model.write_text(TRIANGLE)
        self.assertEqual(self.export(str(model), str(folder / "scene.xml"))[::2], (0, ""))
        self.assertEqual(sorted(p.name for p in folder.iterdir()), ["model.obj", "scene.xml", "scene_meshes"])
        self.assertEqual(self.run_tool("info", str(next((folder / "scene_meshes").iterdir())))[::2], (0, ""))

    def test_a_failure_leaves_the_old_scene_and_nothing_else(self):
        self.write("scene.xml", "old")
        self.write("broken.obj", TRIANGLE + "f 1 2 9\n")
        self.expect_failure(["export", "square.obj", "broken.obj", "scene.xml"],
                            r"velmar: broken\.obj: Position index invalid\. \(index '8' out of bounds, on line 5\)")
        self.assertEqual((self.folder / "scene.xml").read_text(), "old")
        self.assertEqual(self.files(), ["broken.obj", "none.mtl", "scene.xml", "square.obj", "triangle.obj"])

    def test_a_model_without_faces_is_refused(self):
        self.write("empty.obj", "v 1 2 3\n")
        self.expect_failure(["export", "empty.obj", "scene.xml"], r"velmar: empty\.obj: has no faces")

    def test_a_mesh_whose_faces_refer_to_nothing_is_refused(self):
        self.run_tool("convert", "triangle.obj", "bad.vmmesh", "--plain")
        content = bytearray((self.folder / "bad.vmmesh").read_bytes())
        content[-8:-4] = struct.pack("<I", 3)
        self.write("bad.vmmesh", bytes(content))
        self.expect_failure(["export", "bad.vmmesh", "scene.xml"],
                            r"velmar: bad\.vmmesh: triangle 0 refers to material 3 of 1")

    def test_a_scene_in_a_folder_that_is_not_there(self):
        self.expect_failure(["export", "square.obj", "nowhere/scene.xml"],
                            r"velmar: nowhere/scene\.xml: can't be written: .+ \(code \d+\)")

    def test_a_scene_where_a_folder_is(self):
        (self.folder / "scene.xml").mkdir()
        self.expect_failure(["export", "square.obj", "scene.xml"], r"velmar: scene\.xml: is a directory")

    def test_a_mesh_folder_that_is_a_file(self):
        self.write("scene_meshes", "in the way")
        self.expect_failure(["export", "square.obj", "scene.xml"], r"velmar: scene\.xml: .*scene_meshes.+")
        self.assertNotIn("scene.xml", self.files())


class Scene(ToolTest):
    """What export puts around the models."""

    def export(self, *arguments, models=("square.obj",)):
        code, output, errors = self.run_tool("export", "-q", *arguments, *models, "scene.xml")
        self.assertEqual((code, output, errors), (0, "", ""))
        return xml.etree.ElementTree.parse(self.folder / "scene.xml").getroot()

    def numbers(self, node, path):
        return [float(number) for number in node.findtext(path).split()]

    def test_a_scene_is_complete(self):
        scene = self.export()
        self.assertEqual([node.tag for node in scene],
                         ["renderer_settings", "camera", "tonemapping", "background_settings", "material", "material",
                          "mesh", "model2", "mesh", "material", "model2"])
        names = {node.findtext("uid"): node.findtext("name") for node in scene}
        model = scene.find("model2")
        self.assertEqual(names[model.findtext("geometry_uid")], "square")
        self.assertEqual([names[uid.text] for uid in model.find("materials")], ["red", "blue"])

    def test_every_mesh_file_that_is_named_is_there(self):
        for path in self.export().iterfind("mesh/external/path"):
            self.assertEqual(self.run_tool("info", path.text.replace("\\", "/"))[0], 0)

    def project(self, scene, point):
        """Where a point falls on the sensor, in halves of its width and height."""
        camera = scene.find("camera")
        position = self.numbers(camera, "keyframe/pos")
        forwards = self.numbers(camera, "forwards")
        length = math.sqrt(sum(x * x for x in forwards))
        forwards = [x / length for x in forwards]
        right = [forwards[1], -forwards[0], 0]
        length = math.hypot(*right)
        right = [x / length for x in right]
        up = [right[1] * forwards[2] - right[2] * forwards[1], right[2] * forwards[0] - right[0] * forwards[2],
              right[0] * forwards[1] - right[1] * forwards[0]]
        seen = [p - c for p, c in zip(point, position)]
        depth, x, y = (sum(a * b for a, b in zip(seen, axis)) for axis in (forwards, right, up))
        self.assertGreater(depth, 0)
        width = self.numbers(camera, "sensor_width")[0]
        height = width * self.numbers(scene, "renderer_settings/height")[0] / self.numbers(scene, "renderer_settings/width")[0]
        distance = self.numbers(camera, "lens_sensor_dist")[0]
        return x / depth * distance / (width / 2), y / depth * distance / (height / 2)

    def test_the_camera_sees_the_whole_of_the_models(self):
        self.write("far.obj", TRIANGLE.replace("v 1 0 0", "v 40 7 -3"))
        # Corners of the box around both models, with y turned to height.
        corners = [(x, -z, y) for x in (0, 40) for y in (0, 7) for z in (-3, 1.5)]
        for options in ([], ["--azimuth", "200", "--elevation", "-30"], ["--width", "300", "--height", "900"],
                        ["--fov", "100"], ["--fov", "5"]):
            with self.subTest(options=options):
                scene = self.export(*options, models=("square.obj", "far.obj"))
                seen = [self.project(scene, corner) for corner in corners]
                # All within the image, and not lost in the middle of it.
                self.assertLess(max(abs(x) for corner in seen for x in corner), 1)
                self.assertGreater(max(abs(x) for corner in seen for x in corner), 0.3)

    def test_the_camera_stands_where_it_is_told(self):
        camera = self.export("--azimuth", "90", "--elevation", "0", "--up", "z").find("camera")
        self.assertEqual(self.numbers(camera, "forwards"), [-1, 0, 0])
        x, y, z = self.numbers(camera, "keyframe/pos")
        self.assertGreater(x, 2)
        self.assertEqual((y, z), (1, 0.75))
        self.assertAlmostEqual(self.numbers(camera, "focus_distance")[0], x - 1, places=5)

    def test_obj_models_are_turned_upright_and_others_are_not(self):
        self.run_tool("convert", "square.obj", "square.vmmesh")
        turned = "1 0 0 0 0 -1 0 1 0"
        for models, up, matrices in ((["square.obj"], "auto", [turned]), (["square.vmmesh"], "auto", []),
                                     (["square.obj"], "z", []), (["square.vmmesh"], "y", [turned])):
            with self.subTest(models=models, up=up):
                scene = self.export("--up", up, models=models)
                self.assertEqual([m.text.strip() for m in scene.iterfind("model2/rotation/matrix")], matrices)

    def test_the_ground_lies_under_the_models(self):
        self.write("deep.obj", TRIANGLE.replace("v 1 0 0", "v 1 -2.5 0"))
        scene = self.export(models=("square.obj", "deep.obj"))
        ground = scene.findall("mesh")[-1].findtext("external/path").replace("\\", "/")
        bounds = re.search(r"bounds +\(.*, .*, (.*)\) to \((.*), .*, (.*)\)", self.run_tool("info", ground)[1])
        self.assertEqual(bounds.group(1, 3), ("-2.5", "-2.5"))
        self.assertGreater(float(bounds.group(2)), 50)
        self.assertEqual(scene.findall("model2")[-1].findtext("name"), "GroundPlane")

    def test_no_ground_leaves_it_out(self):
        scene = self.export("--no-ground")
        self.assertEqual([len(scene.findall(tag)) for tag in ("mesh", "model2", "material")], [1, 1, 2])

    def colours(self, scene):
        return {m.findtext("name"): self.numbers(m, "diffuse/albedo/constant/rgb/rgb") for m in scene.iterfind("material")}

    def test_colours_come_from_the_material_library(self):
        self.write("none.mtl", "newmtl red\nKd 0.9 0.1 0.05\nnewmtl green\nKd 0 1 0\n")
        self.assertEqual(self.colours(self.export("--no-ground")), {"red": [0.9, 0.1, 0.05], "blue": [0.8, 0.8, 0.8]})

    def test_a_library_is_looked_for_beside_the_model(self):
        (self.folder / "sub").mkdir()
        self.write("sub/none.mtl", "newmtl blue\nKd 0 0 1\n")
        self.write("sub/model.obj", SQUARE)
        scene = self.export("--no-ground", models=("sub/model.obj",))
        self.assertEqual(self.colours(scene)["blue"], [0, 0, 1])

    def test_models_share_materials_of_one_name_and_colour(self):
        self.write("other.obj", SQUARE.replace("none.mtl", "other.mtl").replace("v 2 2 0", "v 2 2 1"))
        self.write("other.mtl", "newmtl blue\nKd 0 0 1\n")
        scene = self.export("--no-ground", models=("square.obj", "other.obj"))
        self.assertEqual([m.findtext("name") for m in scene.iterfind("material")], ["red", "blue", "blue"])
        uids = [[uid.text for uid in model.find("materials")] for model in scene.iterfind("model2")]
        self.assertEqual(uids[0][0], uids[1][0])
        self.assertNotEqual(uids[0][1], uids[1][1])

    def test_a_broken_library_is_named_with_its_line(self):
        self.write("none.mtl", "newmtl red\nKd 0.9 x\n")
        self.expect_failure(["export", "square.obj", "scene.xml"],
                            r"velmar: square\.obj: none\.mtl: Parse error while reading colou+r on line 2")

    def test_image_size_and_halt_conditions(self):
        settings = self.export().find("renderer_settings")
        self.assertEqual([settings.findtext(name) for name in ("width", "height", "halt_samples_per_pixel", "halt_time")],
                         ["1280", "720", "500", None])
        settings = self.export("--width", "64", "--height", "48", "--samples", "0", "--time", "90").find("renderer_settings")
        self.assertEqual([settings.findtext(name) for name in ("width", "height", "halt_samples_per_pixel", "halt_time")],
                         ["64", "48", None, "90"])

    def test_lights(self):
        self.assertEqual(self.numbers(self.export("--sun", "0,-2,1"), "background_settings/.//sundir"), [0, -2, 1])
        uniform = self.export("--light", "uniform", "--light-strength", "2.5").find("background_settings")
        self.assertEqual(self.numbers(uniform, ".//base_emission/constant/uniform/value"), [2.5])
        self.assertIsNone(self.export("--light", "none").find("background_settings"))

    def test_tone_mapping(self):
        for kind, path, value in (("linear", "scale", 2), ("filmic", "scale", 2), ("reinhard", "pre_scale", 8),
                                  ("camera", "ev_adjust", 1)):
            scene = self.export("--tone-mapping", kind, "--brightness", "2")
            self.assertEqual(self.numbers(scene, f"tonemapping/{kind}/{path}"), [value])

    def test_values_that_make_no_sense_are_wrong_usage(self):
        for option, value in (("--width", "0"), ("--height", "wide"), ("--fov", "200"), ("--elevation", "90"),
                              ("--azimuth", "nan"), ("--light", "candle"), ("--sun", "1,2"), ("--brightness", "-1"), ("--up", "w")):
            with self.subTest(option=option):
                code, output, errors = self.run_tool("export", option, value, "square.obj", "scene.xml")
                self.assertEqual((code, output), (2, ""))
                self.assertIn(option, errors)
                self.assertNotIn("scene.xml", self.files())
