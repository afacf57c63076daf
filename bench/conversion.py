#!/usr/bin/env python3
"""Measures the conversion of many files: several at once, by the farm, and what limits large stores.

Usage: bench/conversion.py TOOL jobs [FILES [ROUNDS]]        two jobs beside one
       bench/conversion.py TOOL farm [FILES [ROUNDS]]        the farm beside the tool with as many jobs as it has threads
       bench/conversion.py TOOL tasks [FILES]                what a task costs scheduler, client and workers
       bench/conversion.py TOOL store [ENTRIES]              reading the manifest of a large store

TOOL is build/linux/velmar. The files are the bunny of Debian's glmark2-data, each with a triangle of its own; those of `tasks`
have a triangle each. Times are the shortest of the rounds, which alternate.
"""
import contextlib
import json
import os
import pathlib
import resource
import shutil
import socket
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUNNY = pathlib.Path("/usr/share/glmark2/models/bunny.obj")
PYTHON = "/usr/bin/python3"
TICK = os.sysconf("SC_CLK_TCK")
THREADS = 2
# What docs/farm.md advises for the processes of Dask.
QUIET = {"DASK_DISTRIBUTED__ADMIN__TICK__INTERVAL": "1s", "DASK_DISTRIBUTED__ADMIN__SYSTEM_MONITOR__INTERVAL": "5s",
         "DASK_DISTRIBUTED__WORKER__PROFILE__INTERVAL": "1s", "DASK_DISTRIBUTED__WORKER__PROFILE__CYCLE": "10s"}


class Models:
    """A folder of files, and stores that are thrown away."""

    def __init__(self, folder, count, text):
        self.folder, self.count = folder, count
        for i in range(count):
            path = folder / "in" / f"{i % 100:02}" / f"{i}.obj"
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(f"{text}v {i + 1} 0 0\nv 0 1 {i + 1}\nv 0 0 {i}\nf -3 -2 -1\n", encoding="utf-8")
        self.size = sum(path.stat().st_size for path in self.sources.rglob("*.obj"))

    @property
    def sources(self):
        return self.folder / "in"

    def new_store(self):
        store = self.folder / "store"
        shutil.rmtree(store, ignore_errors=True)
        # What was written before must not be written back while the next is measured.
        os.sync()
        return store


def processor_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def measure(command, **variables):
    """Clock and processor time of a process with its children."""
    begin, used = time.monotonic(), processor_time()
    subprocess.run(list(map(str, command)), check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "PYTHONPATH": str(ROOT / "python"), **variables})
    return time.monotonic() - begin, processor_time() - used


def time_of_process(pid):
    """The processor time of a running process and of its children that have ended."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rpartition(")")[2].split()
    return sum(map(int, fields[11:13])) / TICK, sum(map(int, fields[13:15])) / TICK


@contextlib.contextmanager
def cluster(tool, workers):
    """The address of a cluster with workers of one thread each, and the ids of its processes, the scheduler's first."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        address = f"127.0.0.1:{probe.getsockname()[1]}"
    environment = {**os.environ, **QUIET, "PYTHONPATH": str(ROOT / "python"), "VELMAR_TOOL": str(tool)}
    scheduler = [PYTHON, "-m", "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", address.split(":")[1],
                 "--no-dashboard"]
    worker = [PYTHON, "-m", "distributed.cli.dask_worker", address, "--nthreads", "1", "--no-nanny", "--no-dashboard"]
    with tempfile.TemporaryDirectory() as folder:
        started = [subprocess.Popen(command, env=environment, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                   for command in [scheduler] + [worker] * workers]
        try:
            # Until they have connected, and are at rest.
            time.sleep(8)
            yield address, [process.pid for process in started]
        finally:
            for process in started:
                process.kill()
                process.wait()


def bunnies(folder, arguments, files, rounds):
    count = int(arguments[0]) if arguments else files
    models = Models(folder, count, BUNNY.read_text(encoding="utf-8"))
    print(f"{count} files, {models.size / 1e6:.0f} MB; clock and processor time in seconds")
    return models, int(arguments[1]) if len(arguments) > 1 else rounds


def jobs(tool, folder, arguments):
    models, rounds = bunnies(folder, arguments, 100, 5)
    times = {1: [], 2: []}
    for _ in range(rounds):
        for count, results in times.items():
            results.append(measure([tool, "convert", "-r", models.sources, "--store", models.new_store(), "--jobs", count]))
    for count, results in times.items():
        print(f"--jobs {count}: {min(clock for clock, _ in results):.3f} clock, {min(used for _, used in results):.3f} processor")
    print(f"ratio by the clock: {min(times[1])[0] / min(times[2])[0]:.2f}")


def farm(tool, folder, arguments):
    models, rounds = bunnies(folder, arguments, 400, 3)
    convert = [PYTHON, "-m", "velmar.farm", "convert", models.sources, "--store"]
    times = {"velmar": [], "farm --local": [], "farm --scheduler": []}
    with cluster(tool, THREADS) as (address, processes):
        for _ in range(rounds):
            times["velmar"].append(measure([tool, "convert", "-r", models.sources, "--store", models.new_store(), "--jobs",
                                            THREADS]))
            times["farm --local"].append(measure([*convert, models.new_store(), "--local", THREADS], VELMAR_TOOL=str(tool)))
            before = sum(sum(time_of_process(pid)) for pid in processes)
            clock, used = measure([*convert, models.new_store(), "--scheduler", address], VELMAR_TOOL=str(tool))
            used += sum(sum(time_of_process(pid)) for pid in processes) - before
            times["farm --scheduler"].append((clock, used))
    best = {name: [min(result[i] for result in results) for i in range(2)] for name, results in times.items()}
    for name, (clock, used) in best.items():
        ratios = clock / best["velmar"][0], used / best["velmar"][1]
        print(f"{name:<17} {clock:8.3f} clock ({ratios[0]:.3f}) {used:8.3f} processor ({ratios[1]:.3f})")


def tasks(tool, folder, arguments):
    models = Models(folder, int(arguments[0]) if arguments else 20000, "")
    store = models.new_store()
    with cluster(tool, THREADS) as (address, (scheduler, *workers)):
        report = folder / "report.json"
        times = {"scheduler": [time_of_process(scheduler)[0]], "workers": [sum(time_of_process(pid)[0] for pid in workers)]}
        client = processor_time()
        measure([PYTHON, "-m", "velmar.farm", "convert", models.sources, "--store", store, "--scheduler", address, "--seconds",
                 "0.05", "--report", report], VELMAR_TOOL=str(tool))
        client = processor_time() - client
        times["scheduler"].append(time_of_process(scheduler)[0])
        times["workers"].append(sum(time_of_process(pid)[0] for pid in workers))
    result = json.loads(report.read_text(encoding="utf-8"))
    count = result["tasks"]
    print(f"{models.count} files in {count} tasks, {result['seconds']:.1f} s; processor time for each task in ms:")
    for name, (before, after) in times.items():
        print(f"{name:<10} {(after - before) / count * 1000:.2f}")
    print(f"client     {client / count * 1000:.2f}, with its start and the plan")
    print(f"manifest: {len(list((store / 'manifest').iterdir()))} files")


def store(tool, folder, arguments):
    count = int(arguments[0]) if arguments else 1_000_000
    target = folder / "store" / "manifest"
    target.mkdir(parents=True)
    with open(target / "all.jsonl", "w", encoding="utf-8") as manifest:
        for i in range(count):
            manifest.write(json.dumps({
                "source": f"/projects/library/{i % 1000:04}/models/part-{i}.obj", "size": 1_000_000 + i,
                "time": 1_700_000_000_000_000_000 + i, "settings": "scale 1, up auto",
                "checksum": str(i * 0x9E3779B97F4A7C15 % 2**64),
                "vertices": 35947, "triangles": 69451, "quads": 0, "bounds": [-0.5, -0.25, 0.125, 0.5, 0.25, 1.125],
                "materials": ["default"], "converted": 1_700_000_000_000_000_000 + i}) + "\n")
    size = (target / "all.jsonl").stat().st_size
    # Its memory is the largest of all children, as nothing else is started.
    clock, used = measure([tool, "convert", "-r", folder / "store" / "manifest", "--store", folder / "store", "--dry-run"])
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024
    print(f"manifest of {count} entries, {size / 1e6:.0f} MB: {clock:.2f} s clock, {used:.2f} s processor, {peak / 1e6:.0f} MB, "
          f"{peak / count:.0f} bytes for each")


def main():
    commands = {command.__name__: command for command in (jobs, farm, tasks, store)}
    if len(sys.argv) < 3 or sys.argv[2] not in commands:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory(prefix="velmar-bench-") as folder:
        commands[sys.argv[2]](pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(folder), sys.argv[3:])


if __name__ == "__main__":
    main()
