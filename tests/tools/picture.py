"""`velmar info --picture`: pictures of meshes, drawn by the preview renderer."""
import struct

from png import read_png
from support import BOX, SQUARE, TRIANGLE, ToolTest

# A value of 0.8 as sRGB encodes it.
BACKGROUND = 231


class Picture(ToolTest):
    def draw(self, model, *options, up="y"):
        """The rows of the picture: the mesh in greys that are darker than the background."""
        code, output, errors = self.run_tool("info", model, "--picture", "out.png", "--up", up, *options)
        self.assertEqual((code, errors), (0, ""))
        content = (self.folder / "out.png").read_bytes()
        self.assertTrue(output.endswith(f"picture    out.png ({len(content) / 1000:.1f} KB)\n")
                        or output.endswith(f"picture    out.png ({len(content)} bytes)\n"))
        return read_png(content)

    def seen(self, rows):
        """The columns of each row in which the mesh is seen."""
        return [[x for x, grey in enumerate(row) if grey < BACKGROUND - 2] for row in rows]

    def box(self, seen):
        """Left, top, and the pixels after right and bottom."""
        filled = [(min(row), y, max(row) + 1) for y, row in enumerate(seen) if row]
        return min(f[0] for f in filled), filled[0][1], max(f[2] for f in filled), filled[-1][1] + 1

    def test_a_box_from_in_front_is_a_square_in_the_middle(self):
        self.write("box.obj", BOX)
        rows = self.draw("box.obj", "--azimuth", "0", "--elevation", "0", "--width", "60", "--height", "40")
        self.assertEqual((len(rows), {len(row) for row in rows}), (40, {60}))
        # Nine tenths of the height.
        self.assertEqual(self.box(self.seen(rows)), (12, 2, 48, 38))
        inside = [rows[y][x] for y in range(3, 37) for x in range(13, 47)]
        self.assertLessEqual(max(inside) - min(inside), 5)
        self.assertEqual({rows[y][x] for y in range(40) for x in (0, 11, 48, 59)}, {BACKGROUND})

    def test_the_sides_of_a_box_differ_in_light_and_each_is_even(self):
        self.write("box.obj", BOX)
        rows = self.draw("box.obj", "--azimuth", "45", "--elevation", "35", "--width", "90", "--height", "90")
        left, right, top = rows[58][30], rows[58][60], rows[25][45]
        self.assertGreater(min(left, top), right + 20)
        self.assertGreater(abs(left - top), 10)
        for x, y, side in ((30, 50, left), (27, 60, left), (60, 50, right), (63, 60, right), (38, 25, top), (52, 25, top)):
            self.assertAlmostEqual(rows[y][x], side, delta=3)

    def test_the_mesh_throws_a_shadow_on_itself(self):
        # A floor, and a plate above it that is in the way of the light.
        floor = "v -2 0 -2\nv 2 0 -2\nv 2 0 2\nv -2 0 2\nf 1 2 3 4\n"
        plate = "v -1.9 1 -1.9\nv 0 1 -1.9\nv 0 1 1.9\nv -1.9 1 1.9\nf 5 6 7 8\n"
        self.write("floor.obj", floor + "v 0 1 0\n")
        self.write("both.obj", floor + plate)
        above = ["--azimuth", "0", "--elevation", "90", "--width", "40", "--height", "40"]
        free, shadowed = (self.draw(name, *above)[20][22] for name in ("floor.obj", "both.obj"))
        self.assertLess(shadowed, free - 20)

    def test_what_is_nearer_hides_what_is_farther_in_any_order(self):
        near, far = "v 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n", "v 0 0 0\nv 1 0 0.9\nv 1 1 0.9\nv 0 1 0\n"
        front = ["--azimuth", "0", "--elevation", "0", "--width", "30", "--height", "30"]
        self.write("near.obj", near + "f 1 2 3 4\n")
        self.write("far.obj", far + "f 1 2 3 4\n")
        self.write("a.obj", near + far + "f 1 2 3 4\nf 5 6 7 8\n")
        self.write("b.obj", near + far + "f 5 6 7 8\nf 1 2 3 4\n")
        near, far, a, b = (self.draw(name, *front)[15][15] for name in ("near.obj", "far.obj", "a.obj", "b.obj"))
        self.assertGreater(abs(near - far), 10)
        self.assertAlmostEqual(a, near, delta=3)
        self.assertAlmostEqual(b, near, delta=3)

    def test_azimuth_and_elevation_go_around_the_mesh(self):
        # A flat arrow in the plane of the ground: long towards the right.
        self.write("flag.obj", "v 0 0 0\nv 4 0 -1\nv 4 0 1\nf 1 2 3\n")
        size = ["--width", "80", "--height", "80"]
        left, top, right, bottom = self.box(self.seen(self.draw("flag.obj", "--azimuth", "0", "--elevation", "90", *size)))
        self.assertEqual((left, right), (4, 76))
        self.assertAlmostEqual(bottom - top, 36, delta=1)
        columns = [sum(x in row for row in self.seen(self.draw("flag.obj", "--azimuth", "0", "--elevation", "90", *size)))
                   for x in (10, 70)]
        self.assertLess(columns[0], columns[1])
        # From the right the broad end is near, so it is below.
        rows = self.seen(self.draw("flag.obj", "--azimuth", "90", "--elevation", "90", *size))
        self.assertLess(len(rows[10]), len(rows[70]))

    def test_up_says_which_axis_is_the_height(self):
        self.write("tall.obj", "v 0 0 0\nv 1 0 0\nv 0 5 0\nf 1 2 3\n")
        front = ["--azimuth", "0", "--elevation", "10", "--width", "50", "--height", "50"]
        left, top, right, bottom = self.box(self.seen(self.draw("tall.obj", *front, up="y")))
        self.assertGreater(bottom - top, 3 * (right - left))
        self.assertEqual(self.draw("tall.obj", *front, up="auto"), self.draw("tall.obj", *front, up="y"))
        left, top, right, bottom = self.box(self.seen(self.draw("tall.obj", *front, up="z")))
        self.assertLess(bottom - top, 2 * (right - left))
        self.run_tool("convert", "--up", "z", "tall.obj", "tall.vmmesh")
        self.assertEqual(self.draw("tall.vmmesh", *front, up="auto"), self.draw("tall.obj", *front, up="z"))

    def test_edges_are_smooth(self):
        rows = self.draw("triangle.obj", "--azimuth", "0", "--elevation", "0", "--width", "40", "--height", "40")
        inside = rows[30][6]
        between = {grey for row in rows for grey in row if inside + 5 < grey < BACKGROUND - 5}
        self.assertGreater(len(between), 2)

    def test_normals_of_the_mesh_shade_it(self):
        plane = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
        self.write("flat.obj", plane + "f 1 2 3 4\n")
        self.write("bent.obj", plane + "vn -1 0 1\nvn 1 0 1\nf 1//1 2//2 3//2 4//1\n")
        front = ["--azimuth", "0", "--elevation", "0", "--width", "40", "--height", "40"]
        flat, bent = (self.draw(name, *front)[20][4:36] for name in ("flat.obj", "bent.obj"))
        self.assertLessEqual(max(flat) - min(flat), 5)
        self.assertGreater(bent[4], bent[-4] + 20)

    def test_a_face_is_drawn_from_both_sides(self):
        self.write("turned.obj", TRIANGLE.replace("f 1 2 3", "f 1 3 2"))
        front = ["--azimuth", "0", "--elevation", "0", "--width", "20", "--height", "20"]
        turned, straight = (self.draw(name, *front) for name in ("turned.obj", "triangle.obj"))
        for a, b in zip(turned, straight):
            for x in range(20):
                self.assertAlmostEqual(a[x], b[x], delta=3)

    def test_equal_calls_draw_equal_pictures(self):
        self.write("box.obj", BOX)
        self.assertEqual(*(self.draw("box.obj", "--width", "33", "--height", "21") for _ in range(2)))

    def test_extreme_sizes_are_drawn_as_others(self):
        front = ["--azimuth", "0", "--elevation", "0", "--width", "30", "--height", "30"]
        expected = self.draw("triangle.obj", *front)
        for factor in ("3e38", "1e-44"):
            points = struct.pack("<I9f", 3, 0, 0, 0, float(factor), 0, 0, 0, float(factor), 0)
            body = struct.pack("<I", 0) + points + struct.pack("<3I", 0, 0, 0)
            body += struct.pack("<8I", 1, 0, 1, 2, 0, 0, 0, 0) + struct.pack("<I", 0)
            self.write("far.vmmesh", struct.pack("<6I", 5456751, 4, 0, 1, 0, 0) + body)
            self.assertEqual(self.draw("far.vmmesh", *front), expected)

    def test_a_vertex_that_is_not_finite_loses_its_faces_alone(self):
        front = ["--azimuth", "0", "--elevation", "0", "--width", "30", "--height", "30"]
        self.run_tool("convert", "--up", "z", "triangle.obj", "good.vmmesh", "--plain")
        body = struct.pack("<6I", 5456751, 4, 0, 1, 0, 0) + struct.pack("<I", 0)
        body += struct.pack("<I12f", 4, 0, 0, 0, 1, 0, 0, 0, 1, 0, float("nan"), float("inf"), 0)
        body += struct.pack("<3I", 0, 0, 0) + struct.pack("<15I", 2, 0, 1, 2, 0, 0, 0, 0, 0, 1, 3, 0, 0, 0, 0)
        self.write("part.vmmesh", body + struct.pack("<I", 0))
        self.assertEqual(self.draw("part.vmmesh", *front), self.draw("good.vmmesh", *front))

    def test_a_large_picture_is_the_small_one_in_detail(self):
        self.write("box.obj", BOX)
        small = self.draw("box.obj", "--width", "20", "--height", "40")
        large = self.draw("box.obj", "--width", "200", "--height", "400")
        for y in range(0, 40, 2):
            for x in range(0, 20, 2):
                block = large[y * 10 + 5][x * 10 + 5]
                around = [small[v][u] for v in (max(y - 1, 0), y, y + 1) for u in (max(x - 1, 0), x, x + 1)]
                if max(around) - min(around) < 4:
                    self.assertAlmostEqual(block, small[y][x], delta=4)

    def refuse(self, name, reason, *options):
        code, output, errors = self.run_tool("info", name, "--picture", "out.png", *options)
        self.assertEqual((code, errors), (1, f"velmar: {name}: {reason}\n"))
        self.assertFalse((self.folder / "out.png").exists())

    def test_what_cannot_be_drawn_is_reported(self):
        self.write("empty.obj", "")
        self.write("point.obj", "v 1 2 3\nv 1 2 3\nv 1 2 3\nv 1 2 3\nf 1 2 3 4\n")
        self.refuse("empty.obj", "there are no faces to draw")
        self.refuse("point.obj", "the faces have no extent to draw")
        self.refuse("triangle.obj", "all faces are seen from their edges; choose another side",
                    "--azimuth", "0", "--elevation", "90")
        self.run_tool("convert", "--up", "z", "triangle.obj", "bad.vmmesh", "--plain")
        content = bytearray((self.folder / "bad.vmmesh").read_bytes())
        content[-32:-28] = struct.pack("<I", 77)
        self.write("bad.vmmesh", bytes(content))
        self.refuse("bad.vmmesh", "can't be drawn: triangle 0 refers to vertex 77 of 3")

    def test_a_failure_keeps_the_old_picture(self):
        self.write("out.png", "old")
        self.write("empty.obj", "")
        self.assertEqual(self.run_tool("info", "empty.obj", "--picture", "out.png")[0], 1)
        self.assertEqual((self.folder / "out.png").read_text(), "old")

    def test_a_picture_in_a_folder_that_is_not_there(self):
        code, output, errors = self.run_tool("info", "square.obj", "--picture", "nowhere/out.png")
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\Avelmar: nowhere/out\.png: can't be written: .+ \(code \d+\)\n\Z")

    def test_a_finished_picture_is_the_only_new_file(self):
        before = self.files()
        self.draw("triangle.obj", "--width", "16", "--height", "16")
        self.assertEqual(self.files(), sorted([*before, "out.png"]))

    def test_quiet_prints_nothing(self):
        self.expect(["info", "-q", "triangle.obj", "--picture", "out.png", "--width", "16", "--height", "16"])

    def test_options_that_make_no_sense_are_wrong_usage(self):
        for options in (["--width", "100000", "--height", "100000"], ["--width", "0"], ["--height", "-5"],
                        ["--width", "99999999999999999999"], ["--azimuth", "nan"], ["--elevation", "91"], ["--up", "w"]):
            with self.subTest(options=options):
                code, output, errors = self.run_tool("info", "square.obj", "--picture", "out.png", *options)
                self.assertEqual((code, output), (2, ""))
                self.assertIn(options[0], errors)
                self.assertFalse((self.folder / "out.png").exists())
        self.expect_failure(["info", "square.obj", "--picture", "square.obj"],
                            "velmar: square.obj: the picture must end in .png\n'velmar info --help' says more.", 2)
        self.assertEqual((self.folder / "square.obj").read_text(), SQUARE)

    def test_options_of_the_view_need_a_picture(self):
        code, output, errors = self.run_tool("info", "square.obj", "--azimuth", "10")
        self.assertEqual((code, output), (2, ""))
        self.assertIn("--picture", errors)
