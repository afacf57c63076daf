"""Two runs at once, and runs that are interrupted: what is there is always whole."""
import os
import pathlib
import random
import signal
import stat
import subprocess
import time
import unittest

from support import COMMAND, EMULATOR, PREVIEW, ToolTest

# More of both: python3 tests/tools/stress.py
PAIRS = int(os.environ.get("VELMAR_TEST_PAIRS", 3))
KILLS = int(os.environ.get("VELMAR_TEST_KILLS", 4))


def waves(size):
    """An OBJ file that takes a moment to read and to write."""
    lines = [f"v {x} {y} {(x * 7919 + y * 104729) % 97 / 97}" for y in range(size) for x in range(size)]
    for y in range(size - 1):
        for x in range(size - 1):
            corner = y * size + x + 1
            lines.append(f"f {corner} {corner + 1} {corner + size + 1} {corner + size}")
    return "\n".join(lines) + "\n"


class Together(ToolTest):
    """Two processes that write the same files at the same time."""

    def run_together(self, commands):
        running = [subprocess.Popen(COMMAND + command, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                    stderr=subprocess.PIPE) for command in commands]
        return [(process.returncode, error.decode()) for process in running for _, error in (process.communicate(timeout=300),)]

    def expect_whole(self, commands, targets, rounds):
        """In each round all succeed, and each target is as one of them alone makes it; nothing else is left."""
        wholes = []
        for command in commands:
            self.assertEqual(self.run_tool(*command)[0], 0)
            wholes.append([(self.folder / target).read_bytes() for target in targets])
        files = self.files()
        for number in range(rounds):
            if number % 2:
                for file in self.files():
                    if file not in ("a.obj", "b.obj", "square.obj", "triangle.obj", "none.mtl"):
                        (self.folder / file).unlink()
            self.assertEqual(self.run_together(commands), [(0, "")] * len(commands))
            for i, target in enumerate(targets):
                self.assertIn((self.folder / target).read_bytes(), [whole[i] for whole in wholes])
            self.assertLessEqual(set(self.files()), set(files))
            self.assertEqual([file for file in self.files() if "partial" in file], [])

    def test_two_exports_of_one_scene(self):
        self.write("a.obj", waves(40))
        self.expect_whole([["export", "-q", "a.obj", "scene.xml"], ["export", "-q", "a.obj", "triangle.obj", "scene.xml"]],
                          ["scene.xml"], PAIRS)
        self.assertEqual(self.run_tool("info", "-q", "scene.xml"), (0, "", ""))

    def test_two_conversions_to_one_file(self):
        self.write("a.obj", waves(40))
        self.write("b.obj", waves(20))
        self.expect_whole([["convert", "-q", "a.obj", "out.vmmesh"], ["convert", "-q", "b.obj", "out.vmmesh"]],
                          ["out.vmmesh"], PAIRS)


# Wine makes Ctrl-C of the first of them, and ends a program at once for the second.
SIGNALS = (signal.SIGINT,) if EMULATOR else (signal.SIGINT, signal.SIGTERM)
# How a program ends that was interrupted: on Windows by a status, of which a byte is left.
INTERRUPTED = [-number for number in SIGNALS] + ([0xC000013A & 0xFF] if EMULATOR else [])


class Interrupted(ToolTest):
    def run_and_kill(self, command, moment, number):
        process = subprocess.Popen(COMMAND + command, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        if EMULATOR:
            # Wine may wait for ever when Ctrl-C comes while it starts a program.
            while process.poll() is None and not any("-partial-" in file for file in self.files()):
                time.sleep(0.002)
        time.sleep(moment)
        process.send_signal(number)
        try:
            return process.wait(timeout=60)
        finally:
            process.kill()

    def expect_old_or_new(self, command, targets):
        """However early or late it is killed, each target is as before or as after, and no other file is left."""
        before = {target: (self.folder / target).read_bytes() for target in targets if (self.folder / target).exists()}
        files_before = self.files()
        start = time.monotonic()
        self.assertEqual(self.run_tool(*command)[0], 0)
        duration = time.monotonic() - start
        after = {target: (self.folder / target).read_bytes() for target in targets}
        files_after = self.files()
        moments = random.Random(1)
        for kill in range(KILLS):
            for file in set(self.files()) - set(files_before):
                (self.folder / file).unlink()
            for target, content in before.items():
                (self.folder / target).write_bytes(content)
            number = SIGNALS[kill % len(SIGNALS)]
            code = self.run_and_kill(command, moments.uniform(0, duration), number)
            self.assertIn(code, (0, *INTERRUPTED))
            self.assertIn(self.files(), (files_before, files_after), f"after {number.name}")
            whole = after if self.files() == files_after and files_after != files_before else None
            for target in targets:
                path = self.folder / target
                if not path.exists():
                    self.assertNotIn(target, before)
                elif whole:
                    self.assertEqual(path.read_bytes(), after[target])
                else:
                    self.assertIn(path.read_bytes(), (before.get(target), after[target]))

    def test_export(self):
        self.write("a.obj", waves(150))
        self.write("scene.xml", "old")
        self.expect_old_or_new(["export", "-q", "a.obj", "scene.xml"], ["scene.xml"])

    def test_convert(self):
        self.write("a.obj", waves(150))
        self.write("out.ply", "old")
        self.expect_old_or_new(["convert", "-q", "a.obj", "out.ply"], ["out.ply"])

    def test_a_folder_is_converted_as_far_as_it_came(self):
        (self.folder / "in").mkdir()
        for number in range(6):
            self.write(f"in/{number}.obj", waves(40 + number))
        files = self.files()
        self.assertEqual(self.run_tool("convert", "-q", "-r", "in", "out")[0], 0)
        whole = {file: (self.folder / file).read_bytes() for file in self.files() if file.startswith("out/")}
        moments = random.Random(2)
        for kill in range(KILLS):
            for file in whole:
                (self.folder / file).unlink(missing_ok=True)
            self.run_and_kill(["convert", "-q", "-r", "in", "out"], moments.uniform(0, 0.4), SIGNALS[-1])
            for file in set(self.files()) - set(files):
                self.assertEqual((self.folder / file).read_bytes(), whole[file])

    @unittest.skipUnless(PREVIEW, "a build without the preview renderer")
    def test_a_picture(self):
        self.write("a.obj", waves(100))
        self.write("out.png", "old")
        self.expect_old_or_new(["info", "a.obj", "--picture", "out.png", "--width", "200", "--height", "150"], ["out.png"])

    @unittest.skipUnless(PREVIEW, "a build without the preview renderer")
    def test_render(self):
        self.write("a.obj", waves(40))
        self.write("out.png", "old")
        self.expect_old_or_new(["render", "-q", "a.obj", "out.png", "--width", "64", "--height", "48", "--samples", "16",
                                "--threads", "1"], ["out.png"])

    @unittest.skipIf(EMULATOR, "signals of this system")
    def test_a_signal_that_is_ignored_stays_ignored(self):
        self.write("a.obj", waves(150))
        process = subprocess.Popen(COMMAND + ["convert", "-q", "a.obj", "out.vmmesh"], cwd=self.folder,
                                   preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        time.sleep(0.02)
        process.send_signal(signal.SIGHUP)
        self.assertEqual(process.wait(timeout=60), 0)
        self.assertIn("out.vmmesh", self.files())


class Targets(ToolTest):
    """What is at the place of an output."""

    def commands(self, target):
        return (["export", "-q", "triangle.obj", target + ".xml"], ["convert", "-q", "triangle.obj", target + ".vmmesh"])

    def test_a_write_protected_file_is_not_replaced(self):
        for command in self.commands("out"):
            path = self.write(command[-1], "mine")
            path.chmod(0o444)
            self.expect_failure(command, rf"velmar: {command[-1]}: is write-protected, so it isn't replaced")
            self.assertEqual(path.read_text(), "mine")
        self.assertEqual([file for file in self.files() if "partial" in file], [])

    @unittest.skipIf(EMULATOR, "links and permissions of this system")
    def test_a_symbolic_link_is_followed(self):
        (self.folder / "real").mkdir()
        for command in self.commands("link"):
            link = pathlib.Path(self.folder / command[-1])
            for target in ("real/one" + link.suffix, str(self.folder / "real" / ("two" + link.suffix))):
                for _ in range(2):
                    link.unlink(missing_ok=True)
                    link.symlink_to(target)
                    self.expect(command)
                    self.assertTrue(link.is_symlink())
                    self.assertFalse((self.folder / target).is_symlink())
                    self.assertEqual(self.run_tool("info", "-q", command[-1]), (0, "", ""))

    @unittest.skipIf(EMULATOR, "links and permissions of this system")
    def test_a_replaced_file_keeps_its_permissions(self):
        for command in self.commands("out"):
            path = self.write(command[-1], "old")
            path.chmod(0o640)
            self.expect(command)
            self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o640)
