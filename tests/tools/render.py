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
