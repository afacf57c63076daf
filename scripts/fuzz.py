#!/usr/bin/env python3
"""Runs fuzzers for a given processor time and prints the results as a Markdown table.

Usage: fuzz.py FOLDER_OF_FUZZERS SECONDS [NAME...]

Seeds are the corpora of the repository and small files of Debian's packages of models, by extension; the latter are copied
next to the fuzzers, where the inputs are that the fuzzers add. After a finding, which is kept, a fuzzer continues for the
time that is left. A further run continues where the last one ended, and the table adds up all runs.
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

PACKAGES = ["assimp-testmodels", "glmark2-data"]
MAX_SEED_SIZE = 64 * 1024
ENDINGS = {
    "ObjFuzz": [".obj"],
    "MtlFuzz": [".mtl"],
    "PlyFuzz": [".ply"],
    "PlainPlyFuzz": [".ply"],
    "StlFuzz": [".stl"],
    "ParserFuzz": [".obj", ".mtl", ".stl"],
    "VmmeshFuzz": [".vmmesh"],
}
MAX_FINDINGS = 10
REPOSITORY = pathlib.Path(__file__).resolve().parents[1]


def package_files():
    listing = subprocess.run(["dpkg", "-L", *PACKAGES], check=True, capture_output=True, text=True).stdout
    return [path for path in map(pathlib.Path, listing.splitlines()) if path.is_file()]


def collect_seeds(folder, name, converter):
    """Copies small files. For vmmesh, converts each model by the command line tool."""
    folder.mkdir(parents=True, exist_ok=True)
    endings = ENDINGS.get(name, [])
    for path in package_files():
        seed = folder / "-".join(path.parts[-2:])
        if path.suffix.lower() in endings and path.stat().st_size <= MAX_SEED_SIZE:
            shutil.copyfile(path, seed)
        elif ".vmmesh" in endings and path.suffix.lower() in (".obj", ".ply", ".stl") and converter.exists():
            seed = seed.with_name(seed.name + ".vmmesh")
            subprocess.run([converter, "convert", path, seed], capture_output=True, check=False)
            if seed.exists() and seed.stat().st_size > MAX_SEED_SIZE:
                seed.unlink()
    return folder


def processor_time(pid):
    """The seconds that a process has used so far, with its children: the search for leaks has one of its own each time."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return sum(map(int, fields[11:15])) / os.sysconf("SC_CLK_TCK")


def environment():
    """Temporary files are in memory where that is possible: the disk is slower than any fuzzer."""
    memory = pathlib.Path("/dev/shm")
    return {**os.environ, "TMPDIR": str(memory)} if memory.is_dir() else None


def run_once(command, log, seconds):
    """Runs one process until its time is used up or it finds something. Returns the time used and whether it found."""
    process = subprocess.Popen(command, stdout=log, stderr=log, env=environment())
    used = 0.0
    while process.poll() is None:
        used = processor_time(process.pid)
        if used >= seconds:
            process.send_signal(signal.SIGUSR1)
            process.wait()
            break
        time.sleep(min(1.0, seconds / 10))
    return used, process.returncode != 0


def table_row(name, log):
    """Summarises the log of one or several runs."""
    used = sum(map(float, re.findall(r"^processor time: ([\d.]+)", log, re.MULTILINE)))
    executed = sum(map(int, re.findall(r"stat::number_of_executed_units:\s*(\d+)", log)))
    findings = len(re.findall(r"Test unit written to (?!.*-slow-unit-)", log))
    states = re.findall(r"cov: (\d+) ft: (\d+) corp: (\d+)/(\w+)", log)
    edges, features, inputs, size = states[-1] if states else ("?", "?", "?", "?")
    return f"| {name} | {used:,.0f} | {executed:,} | {edges} | {features} | {inputs} ({size}) | {findings} |"


def fuzz(fuzzer, seconds):
    name = fuzzer.name
    build = fuzzer.parents[1]
    found = build / "found"
    own = build / "corpus" / name
    for folder in (found, own):
        folder.mkdir(parents=True, exist_ok=True)
    seeds = collect_seeds(build / "seeds" / name, name, REPOSITORY / "build/linux/velmar")
    log_path = build / f"{name}.log"
    # New inputs go to the first folder; the others are only read. The time limit of an input is one of the clock, and the
    # machine may be busy: tests count the steps of slow files.
    command = [
        str(fuzzer), f"-max_len={MAX_SEED_SIZE}", "-timeout=300", "-rss_limit_mb=4096", "-print_final_stats=1",
        f"-artifact_prefix={found}/{name}-", str(own), str(seeds), str(REPOSITORY / "tests/fuzz/corpus" / name),
    ]
    left = seconds
    findings = 0
    with open(log_path, "a", encoding="utf-8") as log:
        while left > 0 and findings < MAX_FINDINGS:
            used, failed = run_once(command, log, left)
            log.write(f"\nprocessor time: {used:.2f}\n")
            log.flush()
            left -= max(used, 1.0)
            findings += failed
    print(table_row(name, log_path.read_text(errors="replace")), flush=True)
    if findings:
        print(f"found something: see {found} and the end of {log_path}", file=sys.stderr)
    return findings


def main():
    folder, seconds, names = pathlib.Path(sys.argv[1]), float(sys.argv[2]), sys.argv[3:]
    fuzzers = [path for path in sorted(folder.resolve().iterdir()) if not names or path.name in names]
    if not fuzzers:
        sys.exit("no such fuzzers")
    print("| fuzzer | processor time, s | executions | edges | features | inputs kept | findings |")
    print("|---|---|---|---|---|---|---|", flush=True)
    sys.exit(1 if sum([fuzz(fuzzer, seconds) for fuzzer in fuzzers]) else 0)


if __name__ == "__main__":
    main()
