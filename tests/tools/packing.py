"""`velmar pack` and `velmar unpack`: a document with all its files as one folder or archive."""
import struct
import zipfile

from editing import LAMPS, DocumentTest
from support import ToolTest


class Pack(DocumentTest):
    FILES = {"maps/leaves.png": b"leaves", "maps/wood & steel.png": b"wood", "meshes/lamp.obj": b"v 0 0 0\n",
             "lamp.ies": b"IESNA\n"}
    PACKED = ["lamps.xml", "lamps_files/lamp.ies", "lamps_files/leaves.png", "lamps_files/wood & steel.png",
              "lamps_meshes/lamp.obj"]

    def setUp(self):
        super().setUp()
        for name, content in self.FILES.items():
            (self.folder / name).parent.mkdir(exist_ok=True)
            self.write(name, content)

    def content_of(self, folder):
        return {path.relative_to(self.folder / folder).as_posix(): path.read_bytes()
                for path in sorted((self.folder / folder).rglob("*")) if path.is_file()}

    def check(self, folder):
        """The document names the files that are there, and these are the ones that were packed."""
        content = self.content_of(folder)
        self.assertEqual(sorted(content), self.PACKED)
        paths = [path.replace("\\", "/") for path in self.paths(f"{folder}/lamps.xml")]
        self.assertEqual([content[path] for path in paths], [b"leaves", b"wood", b"v 0 0 0\n", b"IESNA\n"])

    def test_a_folder_has_all_files(self):
        code, output, errors = self.run_tool("pack", "lamps.xml", "packed")
        self.assertEqual((code, errors), (0, ""))
        self.assertRegex(output, r"\Apacked: lamps\.xml and 4 files \(.*\)\n\Z")
        self.check("packed")

    def test_an_archive_has_all_files(self):
        code, output, errors = self.run_tool("pack", "lamps.xml", "lamps.zip")
        self.assertEqual((code, errors), (0, ""))
        self.assertRegex(output, r"\Alamps\.zip: lamps\.xml and 4 files \(.*\)\n\Z")
        with zipfile.ZipFile(self.folder / "lamps.zip") as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(sorted(archive.namelist()), self.PACKED)
            archive.extractall(self.folder / "by_python")
        self.check("by_python")
        self.expect(["unpack", "-q", "lamps.zip", "by_velmar"])
        self.check("by_velmar")
        code, output, errors = self.run_tool("unpack", "lamps.zip")
        self.assertRegex(output, r"\Alamps/lamps\.xml\nlamps: 5 files \(.*\)\n\Z")
        self.check("lamps")

    def test_the_same_scene_gives_the_same_bytes(self):
        self.expect(["pack", "-q", "lamps.xml", "a.zip"])
        self.expect(["pack", "-q", "lamps.xml", "b.zip"])
        self.assertEqual((self.folder / "a.zip").read_bytes(), (self.folder / "b.zip").read_bytes())

    def test_a_packed_scene_is_whole_wherever_it_is(self):
        self.run_tool("export", "-q", "square.obj", "scene.xml")
        self.expect(["pack", "-q", "scene.xml", "scene.zip"])
        (self.folder / "elsewhere").mkdir()
        self.expect(["unpack", "-q", "scene.zip", "elsewhere/deep"])
        self.assertEqual(self.run_tool("info", "-q", "elsewhere/deep/scene.xml"), (0, "", ""))
        # Packed again, it is the same.
        self.expect(["pack", "-q", "elsewhere/deep/scene.xml", "again.zip"])
        self.assertEqual((self.folder / "again.zip").read_bytes(), (self.folder / "scene.zip").read_bytes())

    def test_files_of_one_name_are_kept_apart(self):
        (self.folder / "other").mkdir()
        self.write("other/LAMP.IES", b"other")
        self.write("lamps.xml", LAMPS.replace("maps/leaves.png", "other/LAMP.IES"))
        self.expect(["pack", "-q", "lamps.xml", "packed"])
        content = self.content_of("packed")
        self.assertEqual((content["lamps_files/LAMP.IES"], content["lamps_files/lamp-2.ies"]), (b"other", b"IESNA\n"))

    def test_response_functions_are_packed_where_the_document_has_them(self):
        camera = ("<scene><tonemapping><uid>1</uid><name>t</name><camera><response_function_path>%s"
                  "</response_function_path></camera></tonemapping></scene>")
        self.write("film.txt", b"curve")
        for path, name, files in (("film.txt", "film.txt", ["film.txt", "scene.xml"]),
                                  ("data/of_the_renderer.txt", "data/of_the_renderer.txt", ["scene.xml"]),
                                  (str(self.folder / "film.txt"), r"scene_files\film.txt",
                                   ["scene.xml", "scene_files/film.txt"])):
            self.write("scene.xml", camera % path)
            folder = "packed_" + name.replace("/", "_").replace("\\", "_")
            self.expect(["pack", "-q", "scene.xml", folder])
            self.assertEqual(sorted(self.content_of(folder)), files)
            self.assertEqual(self.read_document(f"{folder}/scene.xml").findtext(".//response_function_path"), name)

    def test_missing_files_are_named_and_nothing_is_packed(self):
        (self.folder / "lamp.ies").unlink()
        (self.folder / "meshes/lamp.obj").unlink()
        for target in ("packed", "packed.zip"):
            self.expect_failure(["pack", "lamps.xml", target],
                                r"velmar: lamps\.xml: 2 files are missing: meshes/lamp\.obj, lamp\.ies")
        self.assertEqual([name for name in self.files() if name.startswith("packed")], [])

    def test_other_files_are_not_replaced(self):
        (self.folder / "packed").mkdir()
        self.write("packed/mine.txt", "mine")
        self.expect_failure(["pack", "lamps.xml", "packed"], r"velmar: packed: isn't empty; --force writes into it .*")
        self.expect(["pack", "-q", "--force", "lamps.xml", "packed"])
        self.assertEqual(sorted(self.content_of("packed")), sorted([*self.PACKED, "mine.txt"]))
        self.expect_failure(["pack", "--force", "lamps.xml", "."], r"velmar: \.: is the folder of the document itself")
        self.assertEqual((self.folder / "lamps.xml").read_text(), LAMPS)


class Unpack(ToolTest):
    def archive(self, *names, content=b"content"):
        """An archive of entries with any names."""
        with zipfile.ZipFile(self.folder / "a.zip", "w", zipfile.ZIP_DEFLATED) as archive:
            for name in names:
                info = zipfile.ZipInfo("x")
                # As it is, while the constructor would change some.
                info.filename = name
                info.compress_type = zipfile.ZIP_DEFLATED
                archive.writestr(info, content)

    def unpacked(self):
        return [name for name in self.files() if name not in ("a.zip", "none.mtl", "square.obj", "triangle.obj")]

    def refuse(self, fault, *options):
        before = self.unpacked()
        self.expect_failure(["unpack", "a.zip", "out", *options], rf"velmar: {fault}")
        self.assertEqual(self.unpacked(), before)

    def test_names_that_lead_out_of_the_folder_are_refused(self):
        for name, fault in (("../x", "leads out of the folder"), ("a/../../x", "leads out of the folder"),
                            ("..\\x", "leads out of the folder"), ("a\\..\\..\\x", "leads out of the folder"),
                            ("..", "leads out of the folder"), ("../", "leads out of the folder"),
                            ("/etc/x", "is absolute"), ("\\x", "is absolute"), ("\\\\server\\share\\x", "is absolute"),
                            ("C:x", "has a drive"), ("c:/x", "has a drive"), ("C:\\x", "has a drive")):
            self.archive("good.txt", name)
            self.refuse(r"a\.zip: '.*' " + fault + ", so nothing is unpacked")

    def test_names_that_not_all_systems_take_are_refused(self):
        for name in ("NUL", "nul.txt", "a/con", "COM1", "com9.xml", "LPT\u00b9", "CONOUT$", "aux .txt", "a/PRN/b"):
            self.archive(name)
            self.refuse(r"a\.zip: '.*' is the name of a device, so nothing is unpacked")
        for name, fault in (("ab:stream", "has a character that not all systems take"),
                            ("what?", "has a character that not all systems take"),
                            ("a\nb", "has a character that not all systems take"),
                            ("a.", "has a part that ends in a dot or a blank"), ("a /b", "has a part that ends in .*"),
                            ("a//b", "has an empty part"), ("./a", "has an empty part"), ("x" * 256, "is too long")):
            self.archive(name)
            self.refuse(r"a\.zip: '.*' " + fault + ", so nothing is unpacked")

    def test_entries_that_exclude_each_other_are_refused(self):
        self.archive("a.txt", "A.TXT")
        self.refuse(r"a\.zip: 'A\.TXT' is in it twice, so nothing is unpacked")
        self.archive("a", "a/b")
        self.refuse(r"a\.zip: 'a' is a file and a folder, so nothing is unpacked")

    def test_links_in_the_archive_are_refused(self):
        info = zipfile.ZipInfo("link")
        info.create_system, info.external_attr = 3, 0o120777 << 16
        with zipfile.ZipFile(self.folder / "a.zip", "w") as archive:
            archive.writestr(info, "/etc/passwd")
        self.refuse(r"a\.zip: 'link' is a link, so nothing is unpacked")

    def test_existing_files_stay_without_force(self):
        self.archive("x.txt", "sub/y.txt")
        (self.folder / "out/sub").mkdir(parents=True)
        self.write("out/sub/y.txt", "old")
        self.refuse(r"out/sub/y\.txt: exists already; --force replaces it")
        self.assertEqual((self.folder / "out/sub/y.txt").read_text(), "old")
        self.expect(["unpack", "-q", "--force", "a.zip", "out"])
        self.assertEqual((self.folder / "out/sub/y.txt").read_text(), "content")

    def test_sizes_and_counts_have_limits(self):
        self.archive("bomb", content=bytes(5_000_000))
        self.assertLess((self.folder / "a.zip").stat().st_size, 20_000)
        self.refuse(r"a\.zip: its files have more than 1\.0 MB, so nothing is unpacked; --max-size allows more",
                    "--max-size", "0.001")
        # Each is within the limit, but not all together.
        self.archive("a", "b", content=bytes(600_000))
        self.refuse(r"a\.zip: its files have more than 1\.0 MB, .*", "--max-size", "0.001")
        self.archive(*(f"{i}.txt" for i in range(11)))
        self.refuse(r"a\.zip: holds 11 files, and the limit is 10", "--max-files", "10")
        self.expect(["unpack", "-q", "a.zip", "out", "--max-files", "11"])

    def test_content_beyond_the_size_that_is_declared_is_refused(self):
        self.archive("bomb", content=bytes(5_000_000))
        data = (self.folder / "a.zip").read_bytes()
        self.assertEqual(data.count(struct.pack("<I", 5_000_000)), 2)
        self.write("a.zip", data.replace(struct.pack("<I", 5_000_000), struct.pack("<I", 1000)))
        self.refuse(r"a\.zip: 'bomb' is damaged")

    def test_damaged_archives_leave_nothing(self):
        self.archive("one.txt", "sub/two.txt", content=b"some content that is long enough to be compressed" * 3)
        data = (self.folder / "a.zip").read_bytes()
        # The end of the last record says how long a comment is.
        for end in range(0, len(data) - 2, 23):
            self.write("a.zip", data[:end])
            self.refuse(r"a\.zip: .*|.*a\.zip.*")
        changed = 0
        for i in range(0, len(data), 19):
            self.write("a.zip", data[:i] + bytes([data[i] ^ 0xFF]) + data[i + 1:])
            code, _, _ = self.run_tool("unpack", "-q", "a.zip", f"out{i}")
            self.assertIn(code, (0, 1))
            changed += code
            if code == 1:
                self.assertFalse((self.folder / f"out{i}").exists())
        self.assertGreater(changed, 5)
        self.write("a.zip", b"no archive")
        self.refuse(r"a\.zip: is no zip archive, or isn't whole")

    def test_encrypted_files_and_other_methods_are_refused(self):
        with zipfile.ZipFile(self.folder / "a.zip", "w", zipfile.ZIP_LZMA) as archive:
            archive.writestr("x", b"content")
        self.refuse(r"a\.zip: 'x' is compressed by a method other than deflate, so nothing is unpacked")
        self.archive("x")
        data = bytearray((self.folder / "a.zip").read_bytes())
        for header, flags in ((b"PK\x03\x04", 6), (b"PK\x01\x02", 8)):
            data[data.index(header) + flags] |= 1
        self.write("a.zip", bytes(data))
        self.refuse(r"a\.zip: 'x' is encrypted, so nothing is unpacked")

    def test_folders_of_an_archive_are_made_as_files_need_them(self):
        self.archive("sub/", "sub/deep/x.txt")
        self.expect(["unpack", "-q", "a.zip", "out"])
        self.assertEqual(self.unpacked(), ["out/sub/deep/x.txt"])


class UnpackLinks(ToolTest):
    """Where the file system has symbolic links."""

    def test_links_in_the_folder_are_not_followed(self):
        with zipfile.ZipFile(self.folder / "a.zip", "w") as archive:
            archive.writestr("sub/x.txt", "content")
        (self.folder / "outside").mkdir()
        (self.folder / "out").mkdir()
        (self.folder / "out/sub").symlink_to(self.folder / "outside")
        for options in ([], ["--force"]):
            self.expect_failure(["unpack", "a.zip", "out", *options],
                                r"velmar: out/sub: is a link, through which nothing is unpacked")
        (self.folder / "out/sub").unlink()
        (self.folder / "out/sub").mkdir()
        (self.folder / "out/sub/x.txt").symlink_to(self.folder / "outside/x.txt")
        self.expect_failure(["unpack", "a.zip", "out", "--force"],
                            r"velmar: out/sub/x\.txt: is a link, through which nothing is unpacked")
        self.assertEqual(list((self.folder / "outside").iterdir()), [])
