"""What happens when the disk is full."""
import unittest

from support import EMULATOR, SQUARE, TRIANGLE, ToolTest


@unittest.skipIf(EMULATOR, "limits of this system's own")
class FullDisk(ToolTest):
    def run_limited(self, size, *arguments):
        import resource
        import signal

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

        return self.run_tool(*arguments, preexec_fn=limit)

    def test_a_document_cut_short_is_reported(self):
        code, output, errors = self.run_limited(300, "export", "--no-ground", "triangle.obj", "scene.xml")
        self.assertEqual((code, output), (1, ""))
        self.assertRegex(errors, r"wasn't written whole|can't be replaced")
        self.assertEqual(self.files(), ["none.mtl", "square.obj", "triangle.obj"])

    def test_a_mesh_file_cut_short_is_reported_and_removed(self):
        for command in (["export", "square.obj", "scene.xml"], ["convert", "square.obj", "out.vmmesh"]):
            code, output, errors = self.run_limited(100, *command)
            self.assertEqual((code, output), (1, ""))
            self.assertRegex(errors, r"\Avelmar: [^\n]+\n\Z")
            self.assertEqual(self.files(), ["none.mtl", "square.obj", "triangle.obj"])

    def test_a_folder_goes_on_past_a_file_that_found_no_room(self):
        (self.folder / "in").mkdir()
        self.write("in/a.obj", SQUARE)
        self.write("in/none.mtl", "")
        self.write("in/b.obj", TRIANGLE)
        code, output, errors = self.run_limited(200, "convert", "-r", "--plain", "in", "out")
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\Avelmar: [^\n]*'?out/a\.vmmesh\b(?!-)[^\n]*\n\Z")
        self.assertRegex(output, r"\A1 file converted, 1 failed; ")
        self.assertEqual([name for name in self.files() if name.startswith("out")], ["out/b.vmmesh"])
