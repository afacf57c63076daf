"""Pictures of models by the preview renderer. The scenes are those of exports, which placing.py looks at."""
import struct

from placing import BLOCK
from support import ToolTest

# In uniform light a grey surface is darker than what is around it, also at the edges of the picture, where the lens
# lets less light through.
UNIFORM = ["--light", "uniform", "--ground", "none"]


class Render(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("block.ply", BLOCK)

    def render(self, *arguments):
        """The rows of the picture, bottom row first, with a number for each pixel."""
        self.expect(["render", "-q", "--width", "32", "--height", "16", "--samples", "4", "--threads", "1", *arguments,
                     "picture.pfm"])
        kind, size, scale, pixels = (self.folder / "picture.pfm").read_bytes().split(b"\n", 3)
        self.assertEqual((kind, size, float(scale) < 0), (b"PF", b"32 16", True))
        values = struct.unpack(f"<{32 * 16 * 3}f", pixels)
        return [values[row * 32 * 3:(row + 1) * 32 * 3:3] for row in range(16)]

    def seen(self, rows):
        """The columns and the rows of pixels in which there is a model."""
        pixels = [(x, y) for y, row in enumerate(rows) for x, value in enumerate(row) if value < 0.7]
        return {x for x, _ in pixels}, {y for _, y in pixels}

    def test_the_whole_model_is_seen(self):
        columns, rows = self.seen(self.render("block.ply", *UNIFORM))
        self.assertTrue(columns and 0 < min(columns) and max(columns) < 31)
        self.assertTrue(rows and 0 < min(rows) and max(rows) < 15)

    def test_the_camera_and_the_models_are_where_the_user_wants_them(self):
        view = ["--camera", "2,-20,6.5", *UNIFORM]
        columns, _ = self.seen(self.render(*view, "--target", "2,0,6.5", "block.ply"))
        self.assertTrue(min(columns) <= 15 and max(columns) >= 16)
        columns, _ = self.seen(self.render(*view, "--target", "2,0,6.5", "block.ply", "--at", "4,0,0"))
        self.assertGreater(min(columns), 16)
        columns, _ = self.seen(self.render(*view, "--target", "2,-40,6.5", "block.ply"))
        self.assertEqual(columns, set())

    def test_models_of_a_placement_file_are_drawn(self):
        self.write("places.txt", "block.ply --at -4,0,0\nblock.ply --at 4,0,0\n")
        columns, _ = self.seen(self.render("--placement", "places.txt", "--camera", "2,-20,6.5", "--target", "2,0,6.5",
                                           *UNIFORM))
        self.assertTrue(min(columns) < 15 and max(columns) > 16)
        self.assertNotIn(15, columns)

    def test_a_picture_replaces_another_whole(self):
        self.write("picture.png", "old")
        code, output, errors = self.run_tool("render", "block.ply", "picture.png", "--width", "16", "--height", "8",
                                             "--samples", "1")
        self.assertEqual((code, errors), (0, ""))
        self.assertRegex(output, r"\Ablock\.ply: 8 vertices.*\npicture\.png: 16 x 8 pixels, .*\n\Z")
        self.assertEqual((self.folder / "picture.png").read_bytes()[:4], b"\x89PNG")
        self.assertEqual([file for file in self.files() if "part" in file], [])

    def test_a_failure_leaves_the_old_picture(self):
        self.write("picture.png", "old")
        self.write("empty.obj", "# nothing\n")
        self.expect_failure(["render", "empty.obj", "picture.png"], r"velmar: empty\.obj: has no faces")
        self.assertEqual((self.folder / "picture.png").read_text(), "old")
        self.assertEqual([file for file in self.files() if "part" in file], [])

    def test_a_picture_has_a_known_format_and_an_end(self):
        for arguments, fault in ((["picture.jpg"], r"picture\.jpg: the picture must end in \.png, \.hdr or \.pfm"),
                                 (["picture.png", "--samples", "0"], "a picture without an end: .*")):
            self.expect_failure(["render", "block.ply", *arguments],
                                rf"velmar: {fault}\n'velmar render --help' says more\.", 2)


class RenderDocument(ToolTest):
    """Scene documents, which have a scene of their own."""
    SMALL = ["-q", "--samples", "2", "--threads", "1"]

    def setUp(self):
        super().setUp()
        self.write("block.ply", BLOCK)

    def export(self, *options, to="scene.xml"):
        self.expect(["export", "-q", "--width", "32", "--height", "16", "block.ply", *UNIFORM, *options, to])

    def picture(self, name="picture.pfm"):
        """The size, and the red of each pixel."""
        kind, size, _, pixels = (self.folder / name).read_bytes().split(b"\n", 3)
        self.assertEqual(kind, b"PF")
        width, height = map(int, size.split())
        return (width, height), struct.unpack(f"<{width * height * 3}f", pixels)[::3]

    def test_the_picture_is_that_of_the_scene(self):
        self.export("--camera", "2,-20,6.5", "--target", "2,0,6.5")
        self.expect(["render", *self.SMALL, "scene.xml", "picture.pfm"])
        size, values = self.picture()
        self.assertEqual(size, (32, 16))
        seen = {i % 32 for i, value in enumerate(values) if value < 0.7}
        self.assertTrue(0 < min(seen) <= 15 and 16 <= max(seen) < 31)

    def test_options_replace_what_the_document_says(self):
        self.export("--samples", "100000000")
        self.expect(["render", *self.SMALL, "scene.xml", "--width", "20", "--height", "10", "picture.pfm"])
        self.assertEqual(self.picture()[0], (20, 10))
        code, output, errors = self.run_tool("render", "scene.xml", "a.pfm", "--samples", "3", "--time", "1000")
        self.assertEqual((code, errors), (0, ""))
        self.assertRegex(output, r"\Ascene\.xml: 1 model, 1 mesh\na\.pfm: 32 x 16 pixels, 3 samples each, .*\n\Z")

    def test_seeds_distinguish_pictures(self):
        self.export()
        pictures = []
        for seed in ("1", "1", "2"):
            self.expect(["render", *self.SMALL, "--seed", seed, "scene.xml", "picture.pfm"])
            pictures.append(self.picture())
        self.assertEqual(pictures[0], pictures[1])
        self.assertNotEqual(pictures[0], pictures[2])

    def test_a_document_is_found_from_elsewhere_with_its_meshes(self):
        self.export()
        (self.folder / "sub").mkdir()
        for name in ("scene.xml", "scene_meshes"):
            (self.folder / name).rename(self.folder / "sub" / name)
        self.expect(["render", *self.SMALL, "sub/scene.xml", "picture.pfm"])
        self.expect(["render", *self.SMALL, str(self.folder / "sub/scene.xml"), "picture.pfm"])

    def test_a_scene_without_settings_has_an_end(self):
        self.write("scene.xml", "<scene><camera><uid>1</uid><name>c</name></camera></scene>")
        self.expect(["render", "-q", "--width", "8", "--height", "4", "scene.xml", "picture.pfm"],
                    errors="velmar preview: the scene has no light; the picture is black\n")
        self.expect_failure(["render", "scene.xml", "picture.pfm", "--samples", "0"], "velmar: a picture without an end: "
                            ".*\n'velmar render --help' says more\\.", 2)

    def test_what_a_document_names_and_does_not_have_is_left_out(self):
        self.write("scene.xml", """<scene><camera><uid>1</uid><name>c</name></camera>
<material><uid>2</uid><name>m</name><phong><exponent>5</exponent></phong></material>
<medium><uid>3</uid><name>fog</name><epsilon>1</epsilon></medium>
<sphere><uid>4</uid><name>s</name><keyframe><time>0</time><pos>0 5 0</pos></keyframe><radius>1</radius>
<material_uid>2</material_uid></sphere>
<sphere><uid>5</uid><name>s</name><radius>1</radius><material_uid>77</material_uid></sphere>
<model2><uid>6</uid><name>m</name><geometry_uid>78</geometry_uid><materials><uid>79</uid></materials></model2>
</scene>""")
        code, output, errors = self.run_tool("render", *self.SMALL, "--width", "8", "--height", "4", "scene.xml",
                                             "picture.pfm")
        self.assertEqual((code, output), (0, ""))
        self.assertIn("velmar preview: participating media aren't rendered\n", errors)

    def test_options_of_models_are_refused(self):
        self.export()
        for options in (["--sun", "1,1,1"], ["--at", "1,0,0"], ["--no-ground"], ["--fov", "20"], ["--brightness", "2"],
                        ["--placement", "places.txt"]):
            self.expect_failure(["render", "scene.xml", "picture.png", *options],
                                rf"velmar: {options[0]} is for models; a scene document has its own camera, light and "
                                r"models\n'velmar render --help' says more\.", 2)
        self.expect_failure(["render", "scene.xml", "block.ply", "picture.png"],
                            r"velmar: a scene document is rendered alone: .*\n'velmar render --help' says more\.", 2)

    def test_faults_name_their_place(self):
        self.export()
        (mesh,) = self.mesh_names()
        (self.folder / "scene_meshes" / mesh).unlink()
        self.write("picture.png", "old")
        self.expect_failure(["render", "scene.xml", "picture.png"],
                            rf"velmar: scene\.xml: mesh 'block': .*scene_meshes/{mesh}.*")
        self.write("broken.xml", "<scene>\n  <camera><uid>x</uid></camera></scene>")
        self.expect_failure(["render", "broken.xml", "picture.png"],
                            r"velmar: broken\.xml:2:11: error: 'x' is no whole number, or beyond 32 bits")
        self.write("dark.xml", "<scene></scene>")
        self.expect_failure(["render", "dark.xml", "picture.png"], r"velmar: dark\.xml: the scene has no camera")
        self.expect_failure(["render", "none.xml", "picture.png"], r"velmar: .*none\.xml.*")
        self.assertEqual((self.folder / "picture.png").read_text(), "old")
