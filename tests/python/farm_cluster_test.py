"""velmar.farm on clusters of Dask: 2,000 files of all formats while workers and scheduler are killed.

The environment variable VELMAR_TOOL names the tool, VELMAR_TEST_FILES another number of files.
"""
import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import stat
import struct
import subprocess
import sys
import tempfile
import time
import unittest

TOOL = os.environ["VELMAR_TOOL"]
FILES = int(os.environ.get("VELMAR_TEST_FILES", 2000))
FORMATS = 7

# The real tool, which waits as long as a file exists. Thus a worker is killed in the middle of a task, not between two.
HELD = """#!/bin/sh
while [ -e "{hold}" ]; do sleep 0.02; done
exec "{tool}" "$@"
"""


def ply(form, height, code):
    header = f"ply\nformat {form} 1.0\nelement vertex 3\n" + "".join(f"property float {axis}\n" for axis in "xyz")
    header += "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
    points = [0, 0, 0, 1, 0, 0, 0, height, 0]
    if code is None:
        return (header + "0 0 0\n1 0 0\n" + f"0 {height} 0\n3 0 1 2\n").encode()
    return header.encode() + struct.pack(f"{code}9fB3i", *points, 3, 0, 1, 2)


def vmmesh(height):
    """Made once of an OBJ file, since the format isn't this test's business."""
    with tempfile.TemporaryDirectory() as folder:
        source, target = pathlib.Path(folder, "a.obj"), pathlib.Path(folder, "a.vmmesh")
        source.write_bytes(obj(height))
        subprocess.run([TOOL, "convert", "--plain", source, target], check=True, stdout=subprocess.DEVNULL)
        return target.read_bytes()


def obj(height):
    return f"v 0 0 0\nv 1 0 0\nv 0 {height} 0\nf 1 2 3\n".encode()


def stl_text(height):
    return (f"solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 {height} 0\n"
            "endloop\nendfacet\nendsolid\n").encode()


def stl_binary(height):
    return bytes(80) + struct.pack("<I12fH", 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, height, 0, 0)


def make_file(number, template):
    """The name of a file of its own content, the content, and whether it is good."""
    height = 1 + number
    kind = number % FORMATS
    extension, content = (
        (".obj", obj(height)), (".ply", ply("ascii", height, None)), (".ply", ply("binary_little_endian", height, "<")),
        (".ply", ply("binary_big_endian", height, ">")), (".stl", stl_text(height)), (".stl", stl_binary(height)),
        # The height of the template is a power of two that nothing else in it equals.
        (".vmmesh", template.replace(struct.pack("<f", 65536), struct.pack("<f", height))))[kind]
    good = number % 10 != 9
    if not good:
        content = content[:len(content) // 2] if kind in (1, 2, 3, 6) else b"f 1 x\n" if kind == 0 else content[:40]
    return f"{number % 16:x}/{number}{extension}", content, good


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Processes(contextlib.ExitStack):
    """Ends what it has started."""

    def start(self, *command, **options):
        process = subprocess.Popen([sys.executable, *map(str, command)], stdin=subprocess.DEVNULL, **options)
        self.callback(self.end, process)
        return process

    @staticmethod
    def end(process):
        process.kill()
        process.wait()


class ClusterTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.sources, self.store = self.folder / "in", self.folder / "store"
        self.hold = self.folder / "hold"
        tool = self.folder / "tool"
        tool.write_text(HELD.format(hold=self.hold, tool=TOOL), encoding="utf-8")
        tool.chmod(tool.stat().st_mode | stat.S_IXUSR)
        # Dask would write its workers' folders into the current one.
        self.environment = {**os.environ, "VELMAR_TOOL": str(tool), "DASK_TEMPORARY_DIRECTORY": str(self.folder / "dask")}
        self.processes = Processes()
        self.addCleanup(self.processes.close)
        self.log = open(self.folder / "log", "wb")
        self.addCleanup(self.log.close)

    def make_files(self, count):
        template = vmmesh(65536)
        self.assertEqual(template.count(struct.pack("<f", 65536)), 1)
        self.good, self.broken = set(), set()
        for number in range(count):
            name, content, good = make_file(number, template)
            path = self.sources / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
            (self.good if good else self.broken).add(str(path))

    def start(self, *command):
        return self.processes.start(*command, cwd=self.folder, env=self.environment, stdout=self.log, stderr=self.log)

    def start_scheduler(self, port):
        return self.start("-m", "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", port, "--no-dashboard")

    def start_worker(self, address):
        return self.start("-m", "distributed.cli.dask_worker", address, "--nthreads", 1, "--no-nanny", "--no-dashboard")

    def start_farm(self, *options):
        return self.start("-m", "velmar.farm", "convert", self.sources, "--store", self.store, "--report",
                          self.folder / "report.json", *options)

    def farm(self, *options):
        """The exit code and the report of a whole run."""
        code = self.start_farm(*options).wait(300)
        return code, self.report()

    def report(self):
        return json.loads((self.folder / "report.json").read_text("utf-8"))

    def entries(self):
        lines = [line for path in self.store.glob("manifest/*.jsonl") for line in path.read_bytes().split(b"\n")[:-1]]
        return [json.loads(line) for line in lines]

    def count_entries(self):
        return sum(path.read_bytes().count(b"\n") for path in self.store.glob("manifest/*.jsonl"))

    def wait_until(self, condition, process):
        """Fails if the process ends before."""
        while not condition():
            self.assertIsNone(process.poll(), (self.folder / "log").read_text("utf-8", "replace"))
            time.sleep(0.03)

    def hold_tools(self, farm, workers):
        """Returns when each worker has a task and can't go on with it."""
        self.hold.touch()
        for worker in workers:
            self.wait_until(lambda worker=worker: subprocess.run(["pgrep", "-P", str(worker.pid)], check=False,
                                                                 stdout=subprocess.DEVNULL).returncode == 0, farm)

    def expect_complete_store(self, report):
        """Each good file is in the store, its mesh once; each broken one is in the report, once."""
        self.assertEqual({entry["source"] for entry in self.entries()}, self.good)
        checksums = {entry["source"]: entry["checksum"] for entry in self.entries()}
        # All have a content of their own.
        self.assertEqual(len(set(checksums.values())), len(self.good))
        self.assertEqual(sorted(path.stem for path in self.store.glob("??/*")),
                         sorted(f"mesh_{checksum}" for checksum in checksums.values()))
        self.assertEqual(sorted(failure["source"] for failure in report["failures"]), sorted(self.broken))
        for failure in report["failures"]:
            self.assertIn(failure["source"], failure["message"])
        verified = subprocess.run([TOOL, "store", "verify", self.store], capture_output=True, text=True, check=False)
        self.assertEqual((verified.stdout, verified.stderr),
                         (f"{len(self.good)} meshes, {len(self.good)} sources, 0 faults\n", ""))


class Killed(ClusterTest):
    def test_a_killed_worker_and_a_new_scheduler_lose_nothing(self):
        self.make_files(FILES)
        port = free_port()
        address = f"tcp://127.0.0.1:{port}"
        scheduler = self.start_scheduler(port)
        workers = [self.start_worker(address) for _ in range(3)]
        farm = self.start_farm("--scheduler", address, "--seconds", "0.1")

        self.wait_until(lambda: self.count_entries() > FILES // 8, farm)
        self.hold_tools(farm, workers)
        workers[0].kill()
        workers[0].wait()
        self.hold.unlink()

        done = self.count_entries()
        self.wait_until(lambda: self.count_entries() > done + FILES // 8, farm)
        self.hold_tools(farm, workers[1:])
        scheduler.kill()
        scheduler.wait()
        self.start_scheduler(port)
        # Workers end with their scheduler, so those who run them start them again.
        for _ in range(3):
            self.start_worker(address)
        self.hold.unlink()

        self.assertEqual(farm.wait(300), 1)
        report = self.report()
        self.expect_complete_store(report)
        self.assertGreater(report["repeated"], 0)
        # What two workers did is counted once.
        self.assertEqual((report["converted"], report["failed"]), (len(self.good), len(self.broken)))

        code, again = self.farm("--scheduler", address)
        self.assertEqual((code, again["converted"], again["unchanged"], again["failed"]),
                         (1, 0, len(self.good), len(self.broken)))
        self.expect_complete_store(again)


class OnOneMachine(ClusterTest):
    def test_an_interrupted_run_is_continued(self):
        self.make_files(400)
        farm = self.start_farm("--local", "2", "--seconds", "0.05")
        self.wait_until(lambda: self.count_entries() > 50, farm)
        self.hold.touch()
        farm.send_signal(signal.SIGINT)
        self.hold.unlink()
        self.assertEqual(farm.wait(60), 130)
        first = self.report()
        self.assertTrue(first["interrupted"])
        before = {entry["source"] for entry in self.entries()}
        self.assertLess(len(before), len(self.good))

        code, second = self.farm("--local", "2")
        self.assertEqual(code, 1)
        self.assertEqual((second["unchanged"], second["converted"]), (len(before), len(self.good) - len(before)))
        self.expect_complete_store(second)

    def test_good_files_alone_are_a_success(self):
        self.make_files(9)
        done = subprocess.run([sys.executable, "-m", "velmar.farm", "convert", self.sources, "--store", self.store, "--local",
                               "1", "--scale", "2"], env=self.environment, capture_output=True, text=True, check=False)
        self.assertRegex(done.stdout, r"\A9 converted, 0 unchanged, 0 failed; 9 meshes added; .*\n\Z")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual({entry["settings"] for entry in self.entries()}, {"scale 2, up auto"})

    def test_little_memory_delays_files_and_loses_none(self):
        self.make_files(100)
        code, report = self.farm("--local", "3", "--memory", "1K", "--seconds", "0.01")
        self.assertEqual((code, report["converted"]), (1, len(self.good)))
        self.expect_complete_store(report)


class Unfit(ClusterTest):
    def test_a_worker_that_can_not_work_gets_no_tasks(self):
        """Not even when the only other worker is replaced."""
        self.make_files(200)
        port = free_port()
        address = f"tcp://127.0.0.1:{port}"
        self.start_scheduler(port)
        worker = self.start_worker(address)
        held, self.environment["VELMAR_TOOL"] = self.environment["VELMAR_TOOL"], str(self.folder / "none")
        self.start_worker(address)
        self.environment["VELMAR_TOOL"] = held
        farm = self.start_farm("--scheduler", address, "--seconds", "0.05")
        self.wait_until(lambda: self.count_entries() > 5, farm)
        self.hold_tools(farm, [worker])
        worker.kill()
        worker.wait()
        self.start_worker(address)
        self.hold.unlink()
        self.assertEqual(farm.wait(300), 1)
        self.expect_complete_store(self.report())

    def test_a_cluster_that_sees_no_store_is_an_error(self):
        self.make_files(9)
        port = free_port()
        address = f"tcp://127.0.0.1:{port}"
        self.start_scheduler(port)
        self.environment["VELMAR_TOOL"] = str(self.folder / "none")
        self.start_worker(address)
        self.environment["VELMAR_TOOL"] = TOOL
        self.assertEqual(self.start_farm("--scheduler", address).wait(120), 1)
        log = (self.folder / "log").read_text("utf-8", "replace")
        self.assertRegex(log, r"velmar\.farm: no worker can work: tcp://127\.0\.0\.1:\d+: The tool velmar wasn't found")

    def test_a_scheduler_that_is_not_there_is_an_error(self):
        self.make_files(1)
        self.assertEqual(self.start_farm("--scheduler", f"tcp://127.0.0.1:{free_port()}").wait(120), 1)
        self.assertIn("no scheduler answers", (self.folder / "log").read_text("utf-8", "replace"))


if __name__ == "__main__":
    if not shutil.which("pgrep"):
        sys.exit("pgrep is needed: Debian's package procps")
    unittest.main()
