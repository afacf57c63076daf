"""`velmar convert`."""
import contextlib
import os
import struct
import unittest

from support import COMMAND, EMULATOR, SQUARE, TRIANGLE, ToolTest


class Convert(ToolTest):
    def test_tells_the_file_and_its_size(self):
        size = 16 + 4 + 4 + 4 + 3 + 4 + 4 + 4 + (4 + 8 * 12) + 4 + 4 + (4 + 3 * 8) + (4 + 2 * 28) + (4 + 36)
        self.expect(["convert", "square.obj", "out.vmmesh", "--plain"], output=f"out.vmmesh ({size} bytes)\n")
        self.assertEqual((self.folder / "out.vmmesh").stat().st_size, size)

    def test_quiet_writes_nothing_on_success(self):
        self.expect(["convert", "--quiet", "square.obj", "out.vmmesh"])
        self.assertIn("out.vmmesh", self.files())

    def test_a_plain_file_holds_the_records_as_they_are(self):
        self.run_tool("convert", "triangle.obj", "out.vmmesh", "--plain", "--scale", "0.5")
        expected = struct.pack("<6I", 5456751, 4, 0, 1, 0, 1) + struct.pack("<I", 7) + b"default" + struct.pack("<I", 0)
        expected += struct.pack("<I9f", 3, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5) + struct.pack("<I", 0)
        expected += struct.pack("<2I", 0, 0) + struct.pack("<8I", 1, 0, 1, 2, 0, 0, 0, 0) + struct.pack("<I", 0)
        self.assertEqual((self.folder / "out.vmmesh").read_bytes(), expected)

    def test_a_file_converted_onto_itself(self):
        self.run_tool("convert", "square.obj", "a.vmmesh")
        before = self.run_tool("info", "a.vmmesh")[1]
        self.assertEqual(self.run_tool("convert", "a.vmmesh", "a.vmmesh", "--plain")[0], 0)
        self.assertEqual(self.run_tool("info", "a.vmmesh")[1], before.replace(", compressed", ", not compressed"))

    def test_a_failure_leaves_the_old_file_and_nothing_else(self):
        self.write("out.vmmesh", "old")
        self.write("broken.obj", "f 1 x")
        code, output, errors = self.run_tool("convert", "broken.obj", "out.vmmesh")
        self.assertEqual((code, output), (1, ""))
        self.assertIn("line 1", errors)
        self.assertEqual((self.folder / "out.vmmesh").read_text(), "old")
        self.assertEqual(self.files(), ["broken.obj", "none.mtl", "out.vmmesh", "square.obj", "triangle.obj"])

    def test_a_folder_that_is_not_there(self):
        self.expect_failure(["convert", "square.obj", "nowhere/out.vmmesh"],
                            r"velmar: nowhere/out\.vmmesh: can't be written: .+ \(code \d+\)")


class ConvertFolder(ToolTest):
    """`velmar convert --recursive`."""

    def setUp(self):
        super().setUp()
        (self.folder / "in").mkdir()

    def convert(self, *arguments):
        return self.run_tool("convert", "--recursive", *arguments)

    def outputs(self):
        return [name.removeprefix("out/") for name in self.files() if name.startswith("out/")]

    def put(self, name, content=TRIANGLE):
        path = self.folder / "in" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        return self.write("in/" + name, content)

    def put_ply(self, name):
        return self.put(name, "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                              "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
                              "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n")

    def test_every_mesh_file_goes_to_the_same_place(self):
        self.put("a.obj")
        self.put("sub/deep/b.OBJ", SQUARE.replace("mtllib none.mtl\n", ""))
        self.put_ply("sub/c.ply")
        self.put("d.stl", "solid d\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                          "endloop\nendfacet\nendsolid d\n")
        self.run_tool("convert", "square.obj", "in/sub/e.vmmesh", "--plain")
        self.put("notes.txt", "no mesh")
        self.put("obj", "no mesh")
        names = ["a.obj", "sub/deep/b.OBJ", "sub/c.ply", "d.stl", "sub/e.vmmesh"]
        size = sum((self.folder / "in" / name).stat().st_size for name in names)
        code, output, errors = self.convert("in", "out")
        self.assertEqual(self.outputs(), ["a.vmmesh", "d.vmmesh", "sub/c.vmmesh", "sub/deep/b.vmmesh", "sub/e.vmmesh"])
        written = sum((self.folder / "out" / name).stat().st_size for name in self.outputs())
        self.assertEqual((code, output, errors),
                         (0, f"5 files converted, 0 failed; {size} bytes in, {written} bytes out\n", ""))

    def test_a_file_becomes_what_it_becomes_alone(self):
        self.put("a.obj", SQUARE)
        self.put("none.mtl", "")
        for options in ([], ["--plain"], ["--scale", "2"]):
            with self.subTest(options=options):
                self.convert(*options, "in", "out")
                self.run_tool("convert", *options, "square.obj", "alone.vmmesh")
                self.assertEqual((self.folder / "out/a.vmmesh").read_bytes(), (self.folder / "alone.vmmesh").read_bytes())

    def test_bad_files_are_told_and_the_others_go_on(self):
        self.put("a.obj", TRIANGLE + "v 1 2 x\n")
        self.put("b/cut.vmmesh", b"oCS\0")
        self.put("c.obj")
        code, output, errors = self.convert("in", "out")
        self.assertEqual(errors, "velmar: in/a.obj: Parse error while reading position on line 5\n"
                                 "velmar: in/b/cut.vmmesh: Read failed.\n")
        self.assertEqual(code, 1)
        self.assertRegex(output, r"\A1 file converted, 2 failed; \d+ bytes in, \d+ bytes out\n\Z")
        self.assertEqual(self.outputs(), ["c.vmmesh"])
        self.assertFalse((self.folder / "out/b").exists())

    def test_a_failure_keeps_the_output_of_an_earlier_run(self):
        self.put("a.obj")
        self.convert("in", "out")
        before = (self.folder / "out/a.vmmesh").read_bytes()
        self.put("a.obj", "f 1 x")
        self.assertEqual(self.convert("in", "out")[0], 1)
        self.assertEqual((self.folder / "out/a.vmmesh").read_bytes(), before)
        self.assertEqual(self.outputs(), ["a.vmmesh"])

    def test_quiet_tells_failures_alone(self):
        self.put("a.obj")
        self.assertEqual(self.convert("-q", "in", "out"), (0, "", ""))
        self.put("b.obj", "f 1 x")
        code, output, errors = self.convert("-q", "in", "out")
        self.assertEqual((code, output, errors.count("\n")), (1, "", 1))

    def test_any_number_of_jobs_gives_the_same_report_and_files(self):
        for i in range(30):
            self.put(f"{i:02}.obj", TRIANGLE + (f"v {i} 0 x\n" if i % 7 == 3 else f"v {i} 0 0\nf 1 2 4\n"))
        results = []
        for jobs in ("1", "2", "8"):
            self.run_tool("convert", "-r", "in", "out", "-q")
            report = self.convert("in", "out", "--jobs", jobs)
            results.append((report, {name: (self.folder / "out" / name).read_bytes() for name in self.outputs()}))
        self.assertEqual(results[0][0][0], 1)
        self.assertEqual(len(results[0][1]), 26)
        self.assertEqual(results[1:], results[:1] * 2)

    def test_files_wait_when_memory_is_small(self):
        for i in range(6):
            self.put(f"{i}.obj")
        code, output, errors = self.convert("in", "out", "--jobs", "4", "--memory", "1K")
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("6 files converted", output)

    def test_a_folder_without_mesh_files_is_no_failure(self):
        self.assertEqual(self.convert("in", "out"), (0, "0 files converted, 0 failed; 0 bytes in, 0 bytes out\n", ""))

    def test_files_of_one_name_keep_their_extensions(self):
        self.put("a.obj")
        self.put("B.obj")
        self.put_ply("a.ply")
        self.put_ply("b.ply")
        self.put("a.ply.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                              "endloop\nendfacet\nendsolid a\n")
        self.put("c.obj")
        self.put("sub/a.obj")
        self.assertEqual(self.convert("in", "out")[::2], (0, ""))
        self.assertEqual(self.outputs(), ["B.obj.vmmesh", "a.obj.vmmesh", "a.ply.stl.vmmesh", "a.ply.vmmesh",
                                          "b.ply.vmmesh", "c.vmmesh", "sub/a.vmmesh"])

    def test_an_output_folder_inside_the_input_is_not_walked(self):
        self.put("a.obj")
        for _ in range(2):
            self.assertRegex(self.convert("in", "in/made/here")[1], r"\A1 file converted, 0 failed")
        self.assertEqual(self.files(), ["in/a.obj", "in/made/here/a.vmmesh", "none.mtl", "square.obj", "triangle.obj"])

    def test_the_input_folder_as_output_is_wrong_usage(self):
        self.put("a.obj")
        for output in ("in", "in/", "in/../in"):
            self.expect_failure(["convert", "-r", "in", output],
                                f"velmar: {output}: is the folder to convert; another one must take the output\n"
                                "'velmar convert --help' says more.", 2)

    def test_an_input_file_is_never_replaced(self):
        self.put("in/a.obj")
        self.run_tool("convert", "square.obj", "in/a.vmmesh")
        before = (self.folder / "in/a.vmmesh").read_bytes()
        # What in/in/a.obj becomes is to lie where in/a.vmmesh does.
        code, output, errors = self.convert("in", ".")
        self.assertEqual((code, errors), (1, "velmar: in/in/a.obj: ./in/a.vmmesh is not replaced: it is in/a.vmmesh\n"))
        self.assertEqual((self.folder / "in/a.vmmesh").read_bytes(), before)
        self.assertTrue((self.folder / "a.vmmesh").is_file())

    def test_a_folder_wants_recursive(self):
        self.expect_failure(["convert", "in", "out.vmmesh"], "velmar: in: is a folder, which wants --recursive\n"
                                                             "'velmar convert --help' says more.", 2)

    def test_a_folder_that_is_not_there_or_a_file(self):
        self.expect_failure(["convert", "-r", "nowhere", "out"], r"velmar: nowhere: can't be read: .+ \(code \d+\)")
        self.expect_failure(["convert", "-r", "square.obj", "out"], r"velmar: square\.obj: can't be read: .+ \(code \d+\)")
        self.assertFalse((self.folder / "out").exists())

    def test_an_output_folder_that_is_a_file(self):
        self.put("a.obj")
        for output in ("square.obj", "square.obj/out"):
            self.expect_failure(["convert", "-r", "in", output], rf"velmar: .*'?{output}'?.* \(code \d+\)")
        self.assertEqual((self.folder / "square.obj").read_text(), SQUARE)

    def test_a_place_where_a_folder_stands(self):
        self.put("a.obj")
        self.put("b.obj")
        (self.folder / "out/a.vmmesh").mkdir(parents=True)
        code, output, errors = self.convert("in", "out")
        self.assertEqual((code, errors), (1, "velmar: out/a.vmmesh: is a directory\n"))
        self.assertEqual(self.outputs(), ["b.vmmesh"])

    def test_names_of_every_kind(self):
        names = ("with space", "hash#tag", "per%cent & more", "grün-日本-😀", "v1.2")
        for name in names:
            self.put(f"{name}/{name}.obj")
        self.assertEqual(self.convert("in", "out-é")[::2], (0, ""))
        self.assertEqual(sorted(p.name for p in (self.folder / "out-é").rglob("*.vmmesh")),
                         sorted(name + ".vmmesh" for name in names))

    def test_paths_of_more_than_260_characters(self):
        deep = "/".join(["long" * 12] * 8)
        self.put(deep + "/model.obj")
        self.assertEqual(self.convert("in", "out")[::2], (0, ""))
        self.assertEqual(self.outputs(), [deep + "/model.vmmesh"])

    def test_links_to_folders_are_not_followed_round_and_round(self):
        self.put("sub/a.obj")
        (self.folder / "in/sub/up").symlink_to("..", target_is_directory=True)
        (self.folder / "in/sub/self").symlink_to("self")
        code, output, errors = self.convert("in", "out")
        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(self.outputs(), ["sub/a.vmmesh"])
        self.assertIn("1 file converted, 0 failed", output)
        if not EMULATOR:
            # The emulator shows links as what they lead to.
            self.assertIn("1 link to a folder was not followed\n", output)

    @unittest.skipIf(EMULATOR, "files of this system alone")
    def test_what_only_looks_like_a_mesh_file_is_told(self):
        import os
        os.mkfifo(self.folder / "in/pipe.ply")
        self.put("sub\\..\\..\\sly.obj")
        (self.folder / "in/loop.obj").symlink_to("loop.obj")
        self.put("bell\a.obj", "f 1 x")
        code, output, errors = self.convert("in", "out")
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"""\A(velmar: in/pipe\.ply: isn't a regular file
|velmar: in/sub\\\.\.\\\.\.\\sly\.obj: a name with a backslash can't be used
){2}velmar: in/bell\\x07\.obj: [^\n]+ on line 1\)
velmar: Failed to open file 'in/loop\.obj': [^\n]+
\Z""")
        self.assertEqual(self.outputs(), [])

    @unittest.skipIf(EMULATOR, "permissions of this system")
    def test_a_folder_that_cannot_be_read_is_told(self):
        import ctypes

        def give_up_privileges():
            libc = ctypes.CDLL(None)
            for capability in (1, 2):  # CAP_DAC_OVERRIDE and CAP_DAC_READ_SEARCH
                libc.prctl(24, capability, 0, 0, 0)  # PR_CAPBSET_DROP

        self.put("shut/a.obj")
        self.put("z/b.obj")
        (self.folder / "in/shut").chmod(0)
        self.addCleanup((self.folder / "in/shut").chmod, 0o700)
        code, output, errors = self.run_tool("convert", "-r", "in", "out", preexec_fn=give_up_privileges)
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\Avelmar: in/shut/: can't be read: .+ \(code 13\)\n\Z")
        self.assertRegex(output, r"\A1 file converted, 1 failed; ")
        self.assertEqual([p.name for p in (self.folder / "out").rglob("*.vmmesh")], ["b.vmmesh"])

    @unittest.skipIf(EMULATOR, "a terminal of this system")
    def test_a_terminal_shows_the_progress_and_in_the_end_the_errors_alone(self):
        import os
        import pty
        import subprocess
        self.put("a.obj")
        self.put("b\a.obj", "f 1 x")
        terminal, end = pty.openpty()
        subprocess.run(COMMAND + ["convert", "-r", "in", "out"], cwd=self.folder, stdout=subprocess.DEVNULL, stderr=end,
                       timeout=60)
        os.close(end)
        shown = b""
        # What was written may come in several parts. After the last, the terminal is gone.
        with contextlib.suppress(OSError):
            while part := os.read(terminal, 65536):
                shown += part
        os.close(terminal)
        shown = shown.decode()
        self.assertIn("[1/2] a.obj", shown)
        self.assertIn("[2/2] b\\x07.obj", shown)
        self.assertNotIn("\a", shown)
        lines = [""]
        column = 0
        for character in shown:
            if character == "\n":
                lines.append("")
            elif character == "\r":
                column = 0
            else:
                lines[-1] = lines[-1][:column] + character + lines[-1][column + 1:]
                column += 1
        self.assertEqual([line.rstrip() for line in lines][1:], [""])
        self.assertRegex(lines[0].rstrip(), r"\Avelmar: in/b\\x07\.obj: .+ on line 1\)\Z")

    def test_an_output_folder_is_made_with_those_above_it(self):
        self.put("a.obj")
        for output in ("out/deep/er", "out/again/", "out/./x/../y"):
            with self.subTest(output=output):
                self.assertEqual(self.convert("in", output)[::2], (0, ""))
                # Windows leaves "x" out of "x/..", elsewhere it has to be there.
                written = os.path.normpath(self.folder / output / "a.vmmesh")
                self.assertTrue(os.path.isfile(written), written)
