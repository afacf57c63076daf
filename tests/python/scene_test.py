"""The content of scenes and documents, and errors of writing."""
import array
import math
import os
import pathlib
import struct
import subprocess
import sys
import unittest

import support
import velmar
from support import TRIANGLE, array_of, numpy

EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples" / "python" / "scene.py"


class Documents(support.InFolder):
    def files(self, folder):
        return {path.relative_to(folder).as_posix(): path.read_bytes() for path in folder.rglob("*") if path.is_file()}

    def test_scene_is_the_one_that_the_functions_make(self):
        """The scene of the example that calls the functions themselves."""
        sys.path.insert(0, str(EXAMPLE.parent))
        self.addCleanup(sys.path.remove, str(EXAMPLE.parent))
        import scene as example

        for name in ("functions", "package"):
            os.mkdir(name)
        subprocess.run([sys.executable, EXAMPLE, os.environ["VELMAR_TEST_API"]], cwd="functions", check=True,
                       stdout=subprocess.DEVNULL, timeout=100)
        os.chdir("package")
        with velmar.Scene() as scene:
            scene.add(velmar.RenderSettings(800, 600, halt_samples_per_pixel=200))
            scene.add(velmar.Camera(position=(0, -8, 2), forwards=(0, 1, -0.125), up=(0, 0, 1), sensor_width=0.036,
                                    lens_sensor_distance=0.036, focus_distance=8))
            scene.add(velmar.Tonemapping(velmar.TonemappingKind.REINHARD, burn=10))
            scene.add(velmar.Background.sun_sky((-1, -1, 1)))
            walls = scene.add(velmar.Material("Walls", (0.6, 0.2, 0.1)))
            lid = scene.add(velmar.Material("Lid", (0.8, 0.8, 0.7)))
            sides = array_of([side for side in example.SIDES if side[0] == example.QUAD], "I")
            top = array_of([side for side in example.SIDES if side[0] == example.TRIANGLE], "I")
            box = scene.add(velmar.Mesh("Box", array_of(example.CORNERS), sides,
                                        texture_coordinates=array_of(example.TEXTURE_COORDINATES),
                                        material_names=["Walls", "Lid"]))
            box.add_faces(top)
            scene.add(velmar.Model("Box", box, [walls, lid], position=(0.5, 0, 0),
                                   rotation=[(0, -1, 0), (1, 0, 0), (0, 0, 1)]))
            scene.add_ground_plane(0, 100)
            scene.write("scene.xml")
        written = self.files(self.folder / "package")
        self.assertEqual(len(written), 3)
        self.assertEqual(written, self.files(self.folder / "functions"))

    def test_every_setting_reaches_the_document(self):
        names = ["super_sample_factor", "halt_time", "halt_samples_per_pixel", "image_save_period"]
        flags = ["metropolis", "bidirectional", "dithering", "vignetting", "shadow_pass", "render_foreground_alpha",
                 "info_overlay", "depth_pass", "material_id_tracer"]
        with velmar.Scene() as scene:
            values = {**dict.fromkeys(names, 5), **dict.fromkeys(flags, True)}
            settings = scene.add(velmar.RenderSettings(3, 4, **values))
            root = support.document(scene).find("renderer_settings")
            elements = {"depth_pass": "depth_channel", "material_id_tracer": "material_id_channel"}
            for name in names + flags:
                wanted = "true" if name in flags else "5"
                self.assertEqual(root.findtext(elements.get(name, name)), wanted, name)
            self.assertEqual((root.findtext("width"), root.findtext("height")), ("3", "4"))
            settings.metropolis = False
            self.assertEqual(support.document(scene).findtext("renderer_settings/metropolis"), "false")
            self.assertIs(settings.metropolis, False)
            self.assertIsNone(velmar.RenderSettings().metropolis)

    def test_defaults_are_those_of_the_library(self):
        with velmar.Scene() as scene:
            camera, tonemapping, mesh = velmar.Camera(), velmar.Tonemapping(), velmar.Mesh("mesh", TRIANGLE)
            for node in (camera, tonemapping, mesh):
                scene.add(node)
            before = support.document(scene)
            for node in (camera, tonemapping, mesh):
                for kind in type(node).__mro__:
                    for name, setting in vars(kind).items():
                        if isinstance(setting, type(velmar.Camera.up)) and setting.default is not None:
                            setattr(node, name, getattr(node, name))
            after = support.document(scene)
        texts = [[(element.tag, element.text) for element in root.iter()] for root in (before, after)]
        self.assertEqual(*texts)

    def test_camera(self):
        with velmar.Scene() as scene:
            camera = scene.add(velmar.Camera(lens_radius=0.25, autofocus=False, exposure_duration=0.5,
                                             lens_shift_right=0.125, lens_shift_up=0.75))
            with self.assertRaisesRegex(ValueError, "no position"):
                camera.look_at((0, 0, 0))
            camera.position = array.array("f", [3, 0, 4])
            camera.look_at((0, 0, 0))
            camera.field_of_view = math.pi / 2
            root = support.document(scene).find("camera")
            for component, wanted in zip((*camera.forwards, *camera.up), (-0.6, 0, -0.8, -0.8, 0, 0.6)):
                self.assertAlmostEqual(component, wanted)
            self.assertEqual(camera.focus_distance, 5)
            self.assertAlmostEqual(float(root.findtext("lens_sensor_dist")), 0.018)
            self.assertAlmostEqual(camera.field_of_view, math.pi / 2)
            names = ("aperture_radius", "exposure_duration", "lens_shift_right_distance", "lens_shift_up_distance")
            self.assertEqual([root.findtext(name) for name in names], ["0.25", "0.5", "0.125", "0.75"])
            self.assertIsNone(root.find("autofocus"))
            camera.autofocus = True
            self.assertIsNotNone(support.document(scene).find("camera/autofocus"))
            with self.assertRaisesRegex(ValueError, "is at the target"):
                camera.look_at((3, 0, 4))
            with self.assertRaisesRegex(velmar.BadArgumentError, "up is parallel to the view"):
                camera.look_at((3, 0, 0))
            camera.look_at((0, 0, 4), up=(0, 1, 0), fov=1)
            self.assertAlmostEqual(camera.field_of_view, 1)
            for angle in (0, math.pi, math.nan):
                with self.assertRaisesRegex(ValueError, "between 0 and pi"):
                    camera.field_of_view = angle

    @support.with_numpy
    def test_camera_takes_numbers_of_numpy(self):
        camera = velmar.Camera(position=numpy.array([3, 0, 4], numpy.float32), lens_radius=numpy.float64(0.5))
        self.assertEqual((camera.position, camera.lens_radius), ((3, 0, 4), 0.5))

    def test_tone_mapping(self):
        kinds = velmar.TonemappingKind
        with velmar.Scene() as scene:
            tonemapping = scene.add(velmar.Tonemapping(kinds.CAMERA, iso=400, ev_adjust=-1,
                                                       response_function_path="r.txt"))
            root = support.document(scene).find("tonemapping/camera")
            self.assertEqual([element.text for element in root], ["r.txt", "400", "-1"])
            for kind, wanted in ((kinds.REINHARD, ["2", "3", "4"]), (kinds.FILMIC, ["5"]), (kinds.LINEAR, ["5"])):
                tonemapping.kind = kind
                tonemapping.pre_scale, tonemapping.post_scale, tonemapping.burn, tonemapping.scale = 2, 3, 4, 5
                root = support.document(scene).find("tonemapping/" + kind.name.lower())
                self.assertEqual([element.text for element in root], wanted)
            with self.assertRaises(ValueError):
                tonemapping.kind = 5
            self.assertEqual(tonemapping.response_function_path, "r.txt")

    def test_materials_and_backgrounds(self):
        with velmar.Scene() as scene:
            material = scene.add(velmar.Material("Rouge Été", (0.5, 0.25, 0)))
            material.colour = (0, 0.25, 0.5)
            scene.add(velmar.Background.uniform((1, 0.5, 0.25), 2))
            scene.add_default_material()
            scene.add_sun_sky()
            root = support.document(scene)
            self.assertEqual([node.findtext("name") for node in root.iterfind("material")], ["Rouge Été", "Default"])
            self.assertEqual(root.find("material").findtext(".//rgb/rgb"), "0 0.25 0.5")
            self.assertEqual(root.find("background_settings").findtext(".//rgb/rgb"), "1 0.5 0.25")
            self.assertEqual(root.findall("background_settings")[1].findtext(".//sundir"), "1 1 1")
            self.assertEqual((material.name, material.colour), ("Rouge Été", (0, 0.25, 0.5)))

    def test_backgrounds_give_what_they_were_made_of(self):
        uniform = velmar.Background.uniform((1, 0.5, 0.25), 2)
        sky = velmar.Background.sun_sky((-1, -1, 1), "original")
        self.assertEqual([(each.colour, each.strength, each.direction, each.model) for each in (uniform, sky)],
                         [((1, 0.5, 0.25), 2, None, None), (None, None, (-1, -1, 1), "original")])

    def test_mesh_settings(self):
        with velmar.Scene() as scene:
            scene.add(velmar.Mesh("mesh", TRIANGLE, normal_smoothing=True, view_dependent_subdivision=True,
                                  max_num_subdivisions=2**32 - 1))
            root = support.document(scene).find("mesh")
            self.assertIsNone(root.find("normal_smoothing"))
            self.assertEqual(root.findtext("max_num_subdivisions"), "-1")
            self.assertEqual(root.findtext("view_dependent_subdivision"), "true")

    def test_values_of_other_types_are_refused(self):
        camera, settings = velmar.Camera(), velmar.RenderSettings()
        for assign in (lambda: setattr(camera, "lens_radius", "1"), lambda: setattr(camera, "position", 5),
                       lambda: setattr(camera, "position", ("a", 0, 0)), lambda: setattr(camera, "autofocus", "no"),
                       lambda: setattr(settings, "width", 1.5), lambda: setattr(settings, "halt_time", None),
                       lambda: velmar.Material(b"red"), lambda: velmar.Material("red", 1)):
            with self.assertRaises(TypeError):
                assign()
        for assign in (lambda: setattr(settings, "width", 2**31), lambda: setattr(camera, "up", (0, 1)),
                       lambda: velmar.Material("re\0d"), lambda: velmar.Mesh("mesh", max_num_subdivisions=-1),
                       lambda: velmar.Material("\ud800")):
            with self.assertRaises(ValueError):
                assign()
        self.assertIsNone(settings.width)


class Paths(support.InFolder):
    def setUp(self):
        super().setUp()
        self.scene = velmar.Scene()
        self.addCleanup(self.scene.close)
        self.mesh = self.scene.add(velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)]))

    def written(self):
        return sorted(path.relative_to(self.folder).as_posix().split("mesh_")[0] for path in self.folder.rglob("*")
                      if path.is_file())

    def test_name_without_a_directory_gives_a_document_that_can_be_moved(self):
        self.scene.write("scene.xml")
        self.assertEqual(self.written(), ["scene.xml", "scene_meshes/"])
        self.assertIn("<path>scene_meshes\\mesh_", pathlib.Path("scene.xml").read_text("utf-8"))

    def test_directory_counts_once(self):
        os.mkdir("out.d")
        for path in ("out.d/scene.xml", pathlib.Path("out.d/other.xml"), self.folder / "out.d" / "third"):
            self.scene.write(path)
        self.assertEqual(self.written(), sorted(["out.d/other.xml", "out.d/other_meshes/", "out.d/scene.xml",
                                                 "out.d/scene_meshes/", "out.d/third", "out.d/third_meshes/"]))

    def test_unicode(self):
        os.mkdir("Zeichnungen für 絵")
        self.scene.write("Zeichnungen für 絵/Szene.xml")
        self.assertEqual(len(self.written()), 2)

    def test_other_paths_are_refused(self):
        for path in ("", "a\0b") if os.sep == "\\" else ("", "a\0b", "a\\b.xml"):
            with self.assertRaises(ValueError):
                self.scene.write(path)
        for path in (None, 5, b"scene.xml"):
            with self.assertRaises(TypeError):
                self.scene.write(path)
        self.assertEqual(self.written(), [])

    def test_mesh_files(self):
        self.mesh.write("mesh.vmmesh")
        self.mesh.write_text("mesh.txt")
        self.assertEqual(pathlib.Path("mesh.txt").read_text("utf-8").splitlines()[:3], ["mesh", "vertices", "  0 0 0"])
        self.assertGreater(os.path.getsize("mesh.vmmesh"), 36)

    def test_mesh_files_of_other_names_than_those_in_ascii(self):
        os.mkdir("Würfel")
        self.mesh.write("Würfel/絵.vmmesh")
        self.mesh.write_text("Würfel/Größe.txt")
        self.assertEqual(self.written(), ["Würfel/Größe.txt", "Würfel/絵.vmmesh"])

    def test_models_are_loaded_with_their_materials(self):
        pathlib.Path("two.mtl").write_text("newmtl blue\nKd 0 0 1\n", "utf-8")
        pathlib.Path("two.obj").write_text("mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl blue\nf 1 2 3\n", "utf-8")
        model = self.scene.load_model("two.obj", 2)
        self.assertEqual((model.name, model.mesh.name, model.mesh.num_vertices), ("two", "two", 3))
        self.assertEqual(model.mesh.vertices.tolist()[1], [2, 0, 0])
        self.assertEqual([(material.name, material.colour) for material in model.materials], [("blue", (0, 0, 1))])
        self.assertEqual(model.mesh.material_names, ("blue",))
        self.assertEqual(len(self.scene.nodes), 4)
        root = support.document(self.scene)
        self.assertEqual(root.find("material").findtext(".//rgb/rgb"), "0 0 1")
        model.materials[0].colour = (1, 0, 0)
        self.assertEqual(support.document(self.scene).find("material").findtext(".//rgb/rgb"), "1 0 0")

    def test_file_whose_faces_refer_to_nothing_is_refused(self):
        self.mesh.write("mesh.vmmesh")
        content = bytearray(pathlib.Path("mesh.vmmesh").read_bytes())
        # Uncompressed: the faces are last, then the number of quads.
        at = len(content) - 4 - 28
        self.assertEqual(struct.unpack_from("<7I", content, at), tuple(self.mesh.triangles.tolist()[-1]))
        struct.pack_into("<I", content, at, 99)
        pathlib.Path("mesh.vmmesh").write_bytes(content)
        count = len(self.scene.nodes)
        for load in (velmar.Mesh.load, self.scene.load_model):
            with self.assertRaisesRegex(velmar.MeshError, r"Triangle vertex index is out of bounds\. \(vertex index=99\)"):
                load("mesh.vmmesh")
        self.assertEqual(len(self.scene.nodes), count)

    def test_mesh_is_loaded(self):
        self.mesh.write("mesh.vmmesh")
        mesh = velmar.Mesh.load("mesh.vmmesh")
        self.assertEqual((mesh.name, mesh.vertices.tolist()), ("mesh", self.mesh.vertices.tolist()))
        self.assertEqual(mesh.num_materials, 1)


class Reading(support.InFolder):
    def write(self, **settings):
        """A document with a node of each kind."""
        with velmar.Scene() as scene:
            scene.add(velmar.RenderSettings(**settings))
            scene.add(velmar.Camera(position=(1, 2, 3), lens_radius=0.25))
            scene.add(velmar.Tonemapping(velmar.TonemappingKind.CAMERA, iso=800))
            scene.add(velmar.Background.sun_sky((0, 0, 1)))
            red = scene.add(velmar.Material("Red", (1, 0, 0)))
            mesh = scene.add(velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)]))
            for name in ("first", "second"):
                scene.add(velmar.Model(name, mesh, [red], position=(4, 5, 6)))
            scene.write("scene.xml")
        return pathlib.Path("scene.xml").read_bytes()

    def test_nodes_have_their_attributes(self):
        self.write(width=640, metropolis=False, depth_pass=True)
        with velmar.Scene.read("scene.xml") as scene:
            settings, camera, tonemapping, background, red, mesh, first, second = scene.nodes
            self.assertEqual((settings.width, settings.height, settings.metropolis, settings.dithering,
                              settings.depth_pass, settings.material_id_tracer), (640, None, False, None, True, None))
            self.assertEqual((camera.position, camera.lens_radius), ((1, 2, 3), 0.25))
            self.assertEqual((tonemapping.kind, tonemapping.iso), (velmar.TonemappingKind.CAMERA, 800))
            self.assertIsInstance(background, velmar.Background)
            self.assertEqual((red.name, mesh.name, second.name), ("Red", "mesh", "second"))
            self.assertIs(first.mesh, mesh)
            self.assertEqual(second.materials, (red,))
            self.assertEqual(len(mesh.vertices), 3)

    def test_a_changed_scene_is_written(self):
        document = self.write()
        with velmar.Scene.read("scene.xml") as scene:
            scene.write("same.xml")
            self.assertEqual(pathlib.Path("same.xml").read_bytes().replace(b"same_meshes", b"scene_meshes"), document)
            camera = next(node for node in scene.nodes if isinstance(node, velmar.Camera))
            camera.lens_radius = 0.5
            scene.remove(scene.nodes[-1])
            scene.write("scene.xml")
        root = support.parsed("scene.xml")
        self.assertEqual(root.findtext("camera/aperture_radius"), "0.5")
        self.assertEqual([name.text for name in root.findall("model2/name")], ["first"])

    def test_every_setting_is_read(self):
        names = [name for name, value in vars(velmar.nodes.RenderSettingsBase).items()
                 if isinstance(value, velmar.nodes.Setting)]
        self.assertGreater(len(names), 10)
        flags = {"width": 5, "height": 5, "super_sample_factor": 5}
        for name in names:
            value = flags.get(name, 5.0 if name.startswith(("halt", "image")) else False)
            self.write(**{name: value})
            with velmar.Scene.read("scene.xml") as scene:
                read = {other: getattr(scene.nodes[0], other) for other in names}
                self.assertEqual(read, {**dict.fromkeys(names), name: value})

    def test_what_a_document_lacks_is_none(self):
        pathlib.Path("scene.xml").write_text("""<scene><sphere><uid>1</uid><name>s</name></sphere>
<model2><uid>2</uid><name>m</name><geometry_uid>3</geometry_uid><materials><uid>4294967295</uid></materials></model2>
</scene>""", "utf-8")
        with velmar.Scene.read("scene.xml") as scene:
            (model,) = scene.nodes
            self.assertEqual((model.mesh, model.materials), (None, (None,)))
            scene.write("again.xml")
        self.assertEqual(support.parsed("again.xml").findtext("model2/geometry_uid"), "3")
        self.assertIsNotNone(support.parsed("again.xml").find("sphere"))

    def test_objects_end_with_their_scene(self):
        self.write()
        scene = velmar.Scene.read("scene.xml")
        nodes = scene.nodes
        scene.close()
        self.assertTrue(all(node.closed for node in nodes))

    def test_faults_have_a_place(self):
        pathlib.Path("scene.xml").write_text("<scene>\n<camera><name>c</name></camera></scene>", "utf-8")
        with self.assertRaisesRegex(velmar.DocumentError, r"scene\.xml:2:1: error: 'camera' has no element 'uid'"):
            velmar.Scene.read("scene.xml")
        with self.assertRaisesRegex(velmar.FileError, "none.xml"):
            velmar.Scene.read("none.xml")
        with self.assertRaises(TypeError):
            velmar.Scene.read(None)


class Failures(support.InFolder):
    def setUp(self):
        super().setUp()
        self.scene = velmar.Scene()
        self.addCleanup(self.scene.close)

    def test_folder_that_is_not_there(self):
        self.scene.write("scene.xml")
        for has_mesh in (False, True):
            if has_mesh:
                self.scene.add(velmar.Mesh("mesh", TRIANGLE))
            with self.assertRaisesRegex(velmar.FileError, "nowhere"):
                self.scene.write("nowhere/scene.xml")

    def test_folder_in_the_documents_place(self):
        os.mkdir("scene.xml")
        with self.assertRaisesRegex(velmar.FileError, "scene.xml"):
            self.scene.write("scene.xml")

    def test_file_in_the_place_of_the_meshes_folder(self):
        pathlib.Path("scene_meshes").write_text("in the way", "utf-8")
        for add in (lambda: self.scene.add(velmar.Mesh("mesh", TRIANGLE)), self.scene.add_ground_plane):
            add()
            with self.assertRaisesRegex(velmar.FileError, "scene_meshes"):
                self.scene.write("scene.xml")
            self.assertEqual(os.listdir(), ["scene_meshes"])

    def test_failure_leaves_the_old_document(self):
        pathlib.Path("scene_meshes").write_text("in the way", "utf-8")
        pathlib.Path("scene.xml").write_text("the old one", "utf-8")
        self.scene.add(velmar.Mesh("mesh", TRIANGLE))
        with self.assertRaises(velmar.FileError):
            self.scene.write("scene.xml")
        self.assertEqual(pathlib.Path("scene.xml").read_text("utf-8"), "the old one")

    def test_mesh_file_that_cannot_be_opened(self):
        mesh = velmar.Mesh("mesh", TRIANGLE)
        for write in (mesh.write, mesh.write_text):
            with self.assertRaisesRegex(velmar.FileError, "Failed to open file 'nowhere/mesh.file'"):
                write("nowhere/mesh.file")

    def test_mesh_is_built_and_checked_before_anything_is_written(self):
        mesh = self.scene.add(velmar.Mesh("mesh", TRIANGLE))
        mesh.add_faces([(0, 1, 3)])
        for write in (self.scene.write, mesh.write):
            with self.assertRaisesRegex(velmar.MeshError, "vertex index=3"):
                write("file")
        self.assertEqual(os.listdir(), [])
        mesh.add_vertices([(0, 0, 1)])
        with support.recorded("VelmarKit_Mesh_Build") as calls:
            self.scene.write("scene.xml")
            self.scene.write("scene.xml")
        self.assertEqual(len(calls), 1)

    def test_model_whose_mesh_or_material_is_elsewhere(self):
        mesh, material = velmar.Mesh("mesh", TRIANGLE), velmar.Material("red")
        self.scene.add(velmar.Model("model", mesh, [material]))
        for missing in (mesh, material):
            with self.assertRaisesRegex(ValueError, f"uses <velmar.{type(missing).__name__} .*must be added"):
                self.scene.write("scene.xml")
            self.scene.add(missing)
        self.scene.write("scene.xml")

    def test_faces_that_came_to_need_more_materials(self):
        mesh, material = self.scene.add(velmar.Mesh("mesh", TRIANGLE)), self.scene.add(velmar.Material("red"))
        self.scene.add(velmar.Model("model", mesh, [material]))
        mesh.add_faces([(0, 1, 2)], materials=1)
        with self.assertRaisesRegex(ValueError, "use 2 materials, and 1 were given"):
            self.scene.write("scene.xml")


if __name__ == "__main__":
    unittest.main()
