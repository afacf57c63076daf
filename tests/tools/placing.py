"""Models where the user wants them, and the camera."""
import re

from support import ToolTest

# Two units wide, one deep and three high, with its lowest corner off the origin. Its height is z.
BLOCK = """ply
format ascii 1.0
element vertex 8
property float x
property float y
property float z
element face 6
property list uchar int vertex_indices
end_header
1 0 5
3 0 5
3 1 5
1 1 5
1 0 8
3 0 8
3 1 8
1 1 8
4 0 3 2 1
4 4 5 6 7
4 0 1 5 4
4 1 2 6 5
4 2 3 7 6
4 3 0 4 7
"""


class Placing(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("block.ply", BLOCK)

    def export(self, *arguments):
        code, output, errors = self.run_tool("export", "-q", "--no-ground", *arguments, "scene.xml")
        self.assertEqual((code, output, errors), (0, "", ""))
        return self.read_document()

    def numbers(self, node, path):
        return [float(number) for number in node.findtext(path).split()]

    def places(self, scene):
        return [self.numbers(model, "pos") for model in scene.iterfind("model2")]

    def test_each_model_is_placed_by_the_options_after_it(self):
        scene = self.export("block.ply", "--at", "1,2,3", "triangle.obj", "square.obj", "--at=-1,0,0.5")
        self.assertEqual(self.places(scene), [[1, 2, 3], [0, 0, 0], [-1, 0, 0.5]])

    def test_options_before_the_first_model_are_for_all(self):
        scene = self.export("--at", "1,1,1", "block.ply", "triangle.obj", "--at", "2,2,2")
        self.assertEqual(self.places(scene), [[1, 1, 1], [2, 2, 2]])

    def test_options_after_the_scene_are_for_all(self):
        self.run_tool("export", "-q", "--no-ground", "block.ply", "triangle.obj", "scene.xml", "--at", "3,2,1")
        self.assertEqual(self.places(self.read_document()), [[3, 2, 1], [3, 2, 1]])

    def test_scale_and_up_axis_belong_to_the_model_before_them_too(self):
        scene = self.export("block.ply", "--scale", "2", "--up", "y", "block.ply")
        files = [mesh.findtext("external/path").replace("\\", "/") for mesh in scene.iter("mesh")]
        self.assertEqual([self.bounds(file)[1] for file in files], [(6, 2, 16), (3, 1, 8)])
        self.assertEqual([model.find("rotation") is None for model in scene.iterfind("model2")], [False, True])
        for arguments in (["--scale", "2", "block.ply", "square.obj"], ["--scale", "2", "--placement", "places.txt"]):
            self.write("places.txt", "block.ply\nsquare.obj\n")
            scene = self.export(*arguments)
            files = [mesh.findtext("external/path").replace("\\", "/") for mesh in scene.iter("mesh")]
            self.assertEqual([self.bounds(file)[1] for file in files], [(6, 2, 16), (4, 4, 3)])

    def test_a_model_is_put_on_the_ground(self):
        scene = self.export("block.ply", "--on-ground", "block.ply", "--at", "1,1,2", "--on-ground")
        self.assertEqual(self.places(scene), [[0, 0, -5], [1, 1, -3]])

    def test_a_model_is_turned(self):
        scene = self.export("block.ply", "--rotate", "90")
        self.assertEqual(self.numbers(scene, "model2/rotation/matrix"), [0, -1, 0, 1, 0, 0, 0, 0, 1])
        scene = self.export("block.ply", "--rotate", "180,0,0", "--on-ground")
        self.assertEqual(self.numbers(scene, "model2/rotation/matrix"), [1, 0, 0, 0, -1, 0, 0, 0, -1])
        self.assertEqual(self.places(scene), [[0, 0, 8]])

    def test_the_height_is_turned_up_before_the_rotation(self):
        scene = self.export("--up", "y", "block.ply", "--rotate", "90")
        self.assertEqual(self.numbers(scene, "model2/rotation/matrix"), [0, 0, 1, 1, 0, 0, 0, 1, 0])

    def test_a_placement_file_names_models_with_their_options(self):
        (self.folder / "sub").mkdir()
        self.write("sub/my block.ply", BLOCK)
        self.write("sub/places.txt", "\ufeff# two blocks\n\n\"my block.ply\"  --at 1,0,0 --name left\r\n"
                                     "../triangle.obj --up z --scale 2 --rotate 90 --on-ground # turned\n")
        scene = self.export("--placement", "sub/places.txt")
        self.assertEqual([model.findtext("name") for model in scene.iterfind("model2")], ["left", "triangle"])
        self.assertEqual(self.places(scene), [[1, 0, 0], [0, 0, 0]])
        self.assertEqual(self.numbers(scene.findall("model2")[1], "rotation/matrix"), [0, -1, 0, 1, 0, 0, 0, 0, 1])

    def test_a_fault_in_a_placement_file_is_named_with_its_line(self):
        for line, fault in (("block.ply --at 1,2", "--at: three numbers .*"), ("block.ply --near 1", "unknown option '--near'"),
                            ("block.ply --at", "--at: a value is missing"), ("block.ply --up w", "--up: 'w' is no axis")):
            self.write("places.txt", "# first\n" + line + "\n")
            self.expect_failure(["export", "--placement", "places.txt", "scene.xml"],
                                rf"velmar: places\.txt: line 2: {fault}")
        self.write("places.txt", "# nothing\n")
        self.expect_failure(["export", "--placement", "places.txt", "scene.xml"], r"velmar: places\.txt: names no model")

    def test_a_file_that_is_placed_twice_is_one_mesh(self):
        scene = self.export("block.ply", "block.ply", "--at", "5,0,0")
        self.assertEqual((len(scene.findall("mesh")), len(scene.findall("model2"))), (1, 2))

    def test_the_camera_is_where_the_user_wants_it(self):
        camera = self.export("--camera", "10,0,6.5", "--target", "2,0,6.5", "block.ply").find("camera")
        self.assertEqual(self.numbers(camera, "keyframe/pos"), [10, 0, 6.5])
        self.assertEqual(self.numbers(camera, "forwards"), [-1, 0, 0])
        self.assertEqual(self.numbers(camera, "focus_distance"), [8])

    def test_without_a_target_the_camera_looks_at_the_models(self):
        camera = self.export("--camera", "2,-9.5,6.5", "block.ply").find("camera")
        self.assertEqual(self.numbers(camera, "forwards"), [0, 1, 0])

    def test_a_camera_that_looks_straight_down_knows_what_is_up(self):
        camera = self.export("--camera", "2,0.5,20", "block.ply").find("camera")
        self.assertEqual((self.numbers(camera, "forwards"), self.numbers(camera, "up")), ([0, 0, -1], [0, 1, 0]))

    def test_the_ground_is_below_the_models_wherever_they_are(self):
        self.run_tool("export", "-q", "block.ply", "--at", "1000,-500,20", "scene.xml", "--ground", "6")
        ground = self.read_document().findall("mesh")[-1].findtext("external/path").replace("\\", "/")
        self.assertEqual(self.bounds(ground), [(999, -502.5, 25), (1005, -496.5, 25)])
        self.run_tool("export", "-q", "block.ply", "--at", "1000,-500,20", "scene.xml")
        ground = self.read_document().findall("mesh")[-1].findtext("external/path").replace("\\", "/")
        low, high = self.bounds(ground)
        self.assertAlmostEqual((low[0] + high[0]) / 2, 1002, places=3)
        self.assertAlmostEqual((low[1] + high[1]) / 2, -499.5, places=3)
        self.assertEqual(low[2], 25)

    def test_a_dry_run_writes_nothing(self):
        before = self.files()
        code, output, errors = self.run_tool("export", "--dry-run", "block.ply", "scene.xml")
        self.assertEqual((code, errors, self.files()), (0, "", before))
        self.assertRegex(output, r"(?s)\Ablock\.ply: 8 vertices.*\ncamera at .*, towards .*\n"
                                 r"scene\.xml \(would be written\)\nscene_meshes/mesh_\d+\.vmmesh \(would be written\)\n")
        real = self.run_tool("export", "block.ply", "scene.xml")[1]
        self.assertEqual(re.findall(r"mesh_\d+", real), re.findall(r"mesh_\d+", output))

    def test_a_model_is_needed(self):
        self.expect_failure(["export", "scene.xml"], "velmar: a model is missing; 'export' needs models and then the file to write\n"
                                                     "'velmar export --help' says more.", 2)
