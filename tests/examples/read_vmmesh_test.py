"""Compares the output of the example reader of mesh files with that of the tool: two readers that share no code.

Usage: read_vmmesh_test.py TOOL EMULATOR READER WORK [unittest options]

EMULATOR is empty for the native build.
"""
import itertools
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

TOOL, EMULATOR, READER, WORK = sys.argv[1:5]
WORK = pathlib.Path(WORK)
# Of the packages glmark2-data and assimp-testmodels: smooth and flat, with texture coordinates, with several materials.
MODELS = ["/usr/share/glmark2/models/bunny.obj", "/usr/share/assimp/models/OBJ/spider.obj",
          "/usr/share/assimp/models/OBJ/box.obj", "/usr/share/assimp/models/PLY/cube_uv.ply",
          "/usr/share/assimp/models/STL/Spider_binary.stl"]


def run(*command):
    return subprocess.run([str(part) for part in command], cwd=WORK, stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=250)


def rows(done):
    if done.returncode != 0:
        raise AssertionError(done.stderr.decode())
    return [line.split(None, 1) for line in done.stdout.decode().splitlines()]


def tool(*arguments):
    return run(*([EMULATOR] if EMULATOR else []), TOOL, *arguments)


def reader(file):
    return run(sys.executable, READER, file)


def words(*numbers):
    return struct.pack(f"<{len(numbers)}I", *numbers)


def text(characters):
    return words(len(characters)) + characters


def block(kind, records):
    return words(len(records)) + b"".join(struct.pack(f"<{len(record)}{kind}", *record) for record in records)


def by_hand(version):
    """A plain file with something in every field that its version has."""
    data = words(0x0053436F, version)
    if version == 4:
        data += words(0, 1)
    data += words(2)  # two UV sets
    data += words(2) + text("Häute".encode()) + text(b"")
    data += words(1) + text(b"of no meaning") + words(7)
    data += block("f", [(0, 0, 0), (1, 0, 0), (1, 1.5, 0), (0, 1, -0.1), (3e8, 1, 1e-7)])
    data += block("f", [(0, 0, 1)] * 5)
    if version >= 3:
        data += words(1)
    data += block("f", [(0, 0), (1, 0), (1, 1), (0, 1), (0.5, 0.5), (0.25, 0.75)])
    # First indices that fall, so that their differences wrap.
    data += block("I", [(4, 1, 2, 2, 1, 0, 1), (0, 3, 4, 0, 2, 1, 0), (1, 2, 3, 1, 0, 2, 1)])
    if version >= 2:
        data += block("I", [(3, 2, 1, 0, 2, 1, 0, 1, 0), (0, 1, 2, 3, 0, 0, 1, 2, 1)])
    return data


class ReadVmmesh(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(WORK, ignore_errors=True)
        WORK.mkdir(parents=True)

    def assert_both_say_the_same(self, file):
        said, read = dict(rows(tool("info", file))), dict(rows(reader(file)))
        # The tool may print more than the content of the file.
        self.assertEqual(read, {name: said[name] for name in read})
        self.assertIn("checksum", read)
        return said

    def test_it_reads_what_the_library_writes(self):
        for number, (model, form) in enumerate(itertools.product(MODELS, [[], ["--plain"]])):
            with self.subTest(model=model, form=form):
                file = f"{number}.vmmesh"
                rows(tool("convert", "--quiet", *form, model, file))
                said = self.assert_both_say_the_same(file)
                self.assertGreater(int(said["triangles"]) + int(said["quads"]), 0)
                self.assertEqual(said["kind"], "vmmesh version 4, " + ("not compressed" if form else "compressed"))

    def test_it_reads_every_version(self):
        checksums = {}
        for version in [1, 2, 3, 4]:
            with self.subTest(version=version):
                (WORK / "hand.vmmesh").write_bytes(by_hand(version))
                said = self.assert_both_say_the_same("hand.vmmesh")
                self.assertEqual((said["UVs"], said["quads"]), ("2 sets of 3", "0" if version == 1 else "2"))
                checksums[version] = said["checksum"]
        # The layout of the UVs and the quads are content.
        self.assertEqual(checksums[3], checksums[4])
        self.assertEqual(len(set(checksums.values())), 3)

    def test_differences_that_wrap_come_back(self):
        (WORK / "hand.vmmesh").write_bytes(by_hand(4))
        rows(tool("convert", "--quiet", "hand.vmmesh", "compressed.vmmesh"))
        plain, compressed = (self.assert_both_say_the_same(file) for file in ["hand.vmmesh", "compressed.vmmesh"])
        self.assertEqual(plain["checksum"], compressed["checksum"])

    def test_it_refuses_what_is_no_mesh_or_ends_early(self):
        for damage in [lambda data: b"", lambda data: b"x" + data[1:], lambda data: data[:-1]]:
            (WORK / "bad.vmmesh").write_bytes(damage(by_hand(4)))
            self.assertNotEqual(reader("bad.vmmesh").returncode, 0)
            self.assertEqual(tool("info", "bad.vmmesh").returncode, 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
