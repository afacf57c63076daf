#!/usr/bin/env python3
"""Counts the instructions of two builds on real models and prints how many more the first executes.

Usage: hardening-cost.py BUILD PLAIN_BUILD

Instructions, because timings of two builds scatter more than hardening costs. What a start of the program takes, with the
binding of all functions, is printed apart.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

MODELS = ["bunny.obj", "OBJ/spider.obj", "STL/Spider_ascii.stl", "STL/Wuson.stl"]


def find_models():
    listing = subprocess.run(["dpkg", "-L", "glmark2-data", "assimp-testmodels"], check=True, capture_output=True, text=True)
    paths = listing.stdout.splitlines()
    return [next(path for path in paths if path.endswith("/" + model)) for model in MODELS]


def instructions(command):
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(
            ["valgrind", "--tool=callgrind", "--callgrind-out-file=counts", *command],
            check=True, capture_output=True, text=True, cwd=folder)
    return int(re.search(r"Collected : (\d+)", result.stderr).group(1))


def main():
    hardened, plain = [pathlib.Path(path).resolve() for path in sys.argv[1:3]]
    models = find_models()
    folder = tempfile.TemporaryDirectory()
    ply = f"{folder.name}/bunny.ply"
    subprocess.run([hardened / "velmar", "convert", "--quiet", models[0], ply], check=True)
    cases = {f"`velmar convert {model}`": ["velmar", "convert", "--quiet", path, "out.vmmesh"]
             for model, path in zip(MODELS, models)}
    cases["`velmar convert bunny.ply`"] = ["velmar", "convert", "--quiet", ply, "out.vmmesh"]
    cases["`velmar export bunny.obj`"] = ["velmar", "export", "--quiet", models[0], "scene.xml"]
    cases["a document of 10,000 models"] = ["bench/bench_DocumentBench", "--benchmark_filter=velmarDocument/10000$",
                                            "--benchmark_min_time=0"]
    print("| work | instructions, million | of them hardening, % |\n|---|---|---|")
    start = {}
    for name, (program, *arguments) in cases.items():
        if program not in start:
            start[program] = [instructions([build / program, "--help"]) for build in (hardened, plain)]
            added = start[program][0] - start[program][1]
            print(f"| starting `{program}` | {start[program][0] / 1e6:.1f} | {100 * added / start[program][1]:.2f} |")
        counts = [instructions([build / program, *arguments]) for build in (hardened, plain)]
        work = [count - first for count, first in zip(counts, start[program])]
        print(f"| {name} | {work[0] / 1e6:.1f} | {100 * (work[0] / work[1] - 1):.2f} |", flush=True)


if __name__ == "__main__":
    main()
