"""velmar.farm without a cluster: the tool on a worker, tasks of equal duration, the report, the command.

The environment variable VELMAR_TOOL names the tool.
"""
import importlib.util
import json
import os
import pathlib
import stat
import subprocess
import sys
import tempfile
import unittest
from unittest import mock

from velmar.farm import FarmError, Report, batches, cluster, convert, tool
from velmar.farm.__main__ import main

TOOL = os.environ["VELMAR_TOOL"]
WINDOWS = sys.platform == "win32"

# Does as the real tool, until it comes to a file whose name contains "crash".
CRASHING = """#!{python}
import os, signal, subprocess, sys
tool = [{tool!r}] + sys.argv[1:]
if "--force" not in sys.argv:
    os.execv(tool[0], tool)
names = sys.stdin.buffer.read().split(b"\\0")[:-1]
before = next((i for i, name in enumerate(names) if b"crash" in name), len(names))
done = subprocess.run(tool, input=b"".join(name + b"\\0" for name in names[:before]), stdout=subprocess.PIPE)
lines = done.stdout.splitlines(keepends=True)
sys.stdout.buffer.write(b"".join(lines if before == len(names) else lines[:-1]))
sys.stdout.flush()
if before < len(names):
    print("the reader failed", file=sys.stderr, flush=True)
    os.kill(os.getpid(), signal.SIGKILL)
"""


def triangle(height):
    return f"v 0 0 0\nv 1 0 0\nv 0 {height} 0\nf 1 2 3\n"


class FarmTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.store = self.folder / "store"
        (self.store / "manifest").mkdir(parents=True)

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return str(path)

    def use_tool(self, program):
        path = pathlib.Path(self.write("tool", program))
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        patch = mock.patch.dict(os.environ, {tool.ENVIRONMENT: str(path)})
        patch.start()
        self.addCleanup(patch.stop)

    def meshes(self):
        return len(list(self.store.glob("??/*.vmmesh")))

    def manifests(self):
        return len(list((self.store / "manifest").iterdir()))


class OnAWorker(FarmTest):
    def test_counts_what_became_of_the_files(self):
        good = [self.write(f"{i}.obj", triangle(i + 1)) for i in range(3)]
        broken = self.write("broken.obj", "f 1 x")
        result = tool.convert(str(self.store), [], [good[0], broken, *good[1:]])
        self.assertEqual((result["converted"], result["added"], self.meshes()), (3, 3, 3))
        self.assertEqual(result["bytes_in"], sum(os.path.getsize(path) for path in good))
        self.assertEqual(result["bytes_out"], sum(path.stat().st_size for path in self.store.glob("??/*")))
        (source, message), = result["failures"]
        self.assertEqual(source, broken)
        self.assertTrue(message.startswith(broken + ": Position index invalid."), message)

    def test_a_second_time_adds_nothing(self):
        source = self.write("a.obj", triangle(1))
        tool.convert(str(self.store), [], [source])
        again = tool.convert(str(self.store), [], [source])
        self.assertEqual((again["converted"], again["added"], self.meshes()), (1, 0, 1))

    def test_tasks_in_turn_share_a_file_of_the_manifest(self):
        for i in range(3):
            tool.convert(str(self.store), [], [self.write(f"{i}.obj", triangle(i + 1))])
        self.assertEqual(self.manifests(), 1)

    def test_names_beyond_ascii_and_with_blanks(self):
        source = self.write("zwei Häuser 家.obj", triangle(1))
        self.assertEqual(tool.convert(str(self.store), [], [source])["failures"], [])

    def test_no_store_is_made_where_the_disk_is_missing(self):
        with self.assertRaisesRegex(FarmError, "this machine doesn't see the store"):
            tool.convert(str(self.folder / "elsewhere"), [], [self.write("a.obj", triangle(1))])
        self.assertFalse((self.folder / "elsewhere").exists())

    def test_options_that_the_tool_refuses_are_no_fault_of_the_files(self):
        with self.assertRaisesRegex(FarmError, "velmar: --scale: Value 0 not in range"):
            tool.convert(str(self.store), ["--scale", "0"], [self.write("a.obj", triangle(1))])

    @unittest.skipIf(WINDOWS, "needs a script as the tool")
    def test_a_crash_costs_one_file(self):
        self.use_tool(CRASHING.format(python=sys.executable, tool=TOOL))
        names = ["0.obj", "crash-1.obj", "2.obj", "crash-3.obj", "crash-4.obj", "5.obj"]
        sources = [self.write(name, triangle(i + 1)) for i, name in enumerate(names)]
        result = tool.convert(str(self.store), [], sources)
        self.assertEqual(result["failures"], [(sources[i], "velmar ended with SIGKILL: the reader failed") for i in (1, 3, 4)])
        self.assertEqual((result["converted"], self.meshes()), (3, 3))
        # A crash may leave half a line, so the file isn't continued.
        self.assertGreater(self.manifests(), 1)

    @unittest.skipIf(WINDOWS, "needs a script as the tool")
    def test_a_tool_of_another_version_is_refused(self):
        self.use_tool("#!/bin/sh\necho velmar 0.0.1\n")
        with self.assertRaisesRegex(FarmError, r"tool is velmar 0\.0\.1, but velmar [\d.]+ is needed"):
            tool.convert(str(self.store), [], [self.write("a.obj", triangle(1))])

    def test_a_missing_tool_is_described_by_where_it_was_searched(self):
        with mock.patch.dict(os.environ, {tool.ENVIRONMENT: str(self.folder / "none")}):
            with self.assertRaisesRegex(FarmError, "VELMAR_TOOL.*\n.*none"):
                tool.find()


class PlanOfFiles(FarmTest):
    def plan(self, *options):
        plan = tool.Plan(str(self.store), options, [str(self.folder)])
        sources = []
        while not plan.complete:
            source = plan.next()
            sources += [source] if source else []
        return plan, sources

    def test_names_what_the_store_lacks(self):
        done, new = self.write("done.obj", triangle(1)), self.write("new.stl", "solid\n")
        tool.convert(str(self.store), [], [done])
        plan, sources = self.plan()
        self.assertEqual([(os.path.samefile(source.path, new), source.size) for source in sources],
                         [(True, os.path.getsize(new))])
        self.assertEqual((plan.unchanged, plan.size), (1, os.path.getsize(new)))

    def test_other_options_are_another_conversion(self):
        tool.convert(str(self.store), [], [self.write("done.obj", triangle(1))])
        self.assertEqual(len(self.plan("--scale", "2")[1]), 1)

    def test_faults_of_the_options_are_reported(self):
        with self.assertRaisesRegex(FarmError, "--up: sideways not in"):
            self.plan("--up", "sideways")


class Supply:
    """A plan of files of these sizes; None where the next isn't known yet."""

    def __init__(self, sizes):
        self.sizes = list(sizes)

    @property
    def complete(self):
        return not self.sizes

    def next(self):
        size = self.sizes.pop(0) if self.sizes else None
        return None if size is None else tool.Source(f"{size}", size, 4 * size)


class TasksOfEqualDuration(unittest.TestCase):
    def cut(self, sizes, seconds=1.0, rate=None):
        made = batches.Batches(Supply(sizes), seconds)
        if rate:
            for _ in range(100):
                made.learn(rate, 1)
        result = []
        while not made.complete:
            batch = made.next()
            result += [batch] if batch else []
        return result

    def test_each_file_is_in_one_task(self):
        sizes = [i * 1000 for i in range(20000)]
        self.assertEqual([name for batch in self.cut(sizes) for name in batch.sources], [str(size) for size in sizes])

    def test_the_bytes_decide(self):
        cost = 1_000_000 + batches.FILE_COST
        self.assertEqual({len(batch.sources) for batch in self.cut([1_000_000] * 100, rate=9.5 * cost)}, {10})

    def test_small_files_count_too(self):
        self.assertEqual({len(batch.sources) for batch in self.cut([0] * 100, rate=9.5 * batches.FILE_COST)}, {10})

    def test_tasks_grow_with_the_speed(self):
        slow, fast = (len(self.cut([10_000] * 20_000, rate=rate)) for rate in (10**7, 10**8))
        self.assertAlmostEqual(slow / fast, 10, delta=1)

    def test_a_large_file_is_a_task_of_its_own(self):
        first, large, last = self.cut([1000, 10**12, 2000])
        self.assertEqual((first.sources, large.sources, last.sources), (("1000",), (str(10**12),), ("2000",)))
        self.assertEqual((large.size, large.memory), (10**12, 4 * 10**12))

    def test_tasks_of_large_clusters_are_longer(self):
        counts = []
        for threads in (2, 100, 1000):
            made = batches.Batches(Supply([0] * 20_000), 1)
            made.set_threads(threads)
            counts.append(len(made.next().sources))
        self.assertEqual(counts[1], 2 * counts[0])
        self.assertEqual(counts[2], batches.MAX_FILES)

    def test_a_plan_that_is_being_made_is_waited_for(self):
        made = batches.Batches(Supply([1, None, 2]), 1)
        self.assertIsNone(made.next())
        self.assertFalse(made.complete)
        self.assertEqual(made.next().sources, ("1", "2"))
        self.assertTrue(made.complete)

    def test_a_task_has_a_bounded_number_of_files(self):
        self.assertEqual(max(len(batch.sources) for batch in self.cut([0] * 12000, seconds=1e6)), batches.MAX_FILES)


@unittest.skipUnless(importlib.util.find_spec("zlib"), "this Python has no zlib")
class OnTheWay(unittest.TestCase):
    def test_names_arrive_as_they_are(self):
        names = ["/a/b.obj", "/a/zwei Häuser\n家.ply", os.fsdecode(b"/a/c.stl")]
        self.assertEqual(cluster.unpack(cluster.pack(names)), names)

    def test_names_that_are_alike_take_little(self):
        names = [f"/projects/library/{i % 1000:04}/models/part-{i}.obj" for i in range(5000)]
        self.assertLess(len(cluster.pack(names)), sum(map(len, names)) / 5)


class TheReport(unittest.TestCase):
    def setUp(self):
        self.report = Report(converted=2, failures=[("/in/b.obj", "/in/b.obj: is broken"), ("/in/a\x1b.obj", "too")])

    def test_table_has_a_column_for_the_file(self):
        self.assertEqual(self.report.table(), "FILE           MESSAGE\n/in/a\\x1b.obj  too\n/in/b.obj      is broken\n")

    def test_long_tables_are_cut(self):
        self.assertEqual(self.report.table(1).splitlines()[2:], ["and 1 more"])
        self.assertEqual(Report().table(), "")

    def test_json_has_everything(self):
        values = json.loads(self.report.to_json())
        self.assertEqual((values["converted"], values["failed"]), (2, 2))
        self.assertEqual(values["failures"][1], {"source": "/in/b.obj", "message": "/in/b.obj: is broken"})


class TheCommand(FarmTest):
    def run_without_dask(self, *arguments):
        """In a Python that has no distributed, whether or not this one has."""
        program = "import sys; sys.modules['distributed'] = None; from velmar.farm.__main__ import main; sys.exit(main())"
        return subprocess.run([sys.executable, "-c", program, *arguments], capture_output=True, text=True, check=False,
                              stdin=subprocess.DEVNULL)

    def test_says_what_is_missing(self):
        done = self.run_without_dask("convert", str(self.folder), "--store", str(self.folder / "other"), "--local", "2")
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, r"\Avelmar\.farm: velmar\.farm needs Dask distributed: pip install velmar\[farm\]")
        self.assertFalse((self.folder / "other").exists())

    def test_help_needs_no_dask(self):
        self.assertEqual(self.run_without_dask("convert", "--help").returncode, 0)

    def test_wrong_usage(self):
        for arguments in (["a", "--local", "1"], ["a", "--store", "s"], ["--store", "s", "--local", "1"],
                          ["a", "--store", "s", "--local", "0"], ["a", "--store", "s", "--local", "1", "--memory", "x"],
                          ["a", "--store", "s", "--local", "1", "--scheduler", "b"]):
            with self.subTest(arguments=arguments), mock.patch("sys.stderr"), self.assertRaises(SystemExit) as ended:
                main(["convert", *arguments])
            self.assertEqual(ended.exception.code, 2)
        with self.assertRaises(ValueError):
            convert([], "store")


if __name__ == "__main__":
    unittest.main()
