#!/usr/bin/env python3
"""Prints the tables of docs/performance.md from the output of Google Benchmark.

Usage: bench-report.py FILE.json...

A benchmark whose name contains "velmar" is ours. It is compared with those of the same program with the same text after the
first slash whose names contain the rest of our name: velmarObj/v with tinyObj/v, ParseFloat_Velmar with
ParseFloat_FastFloat. A ratio is the other library's processor time divided by ours, measured in one run; with repetitions
it is the ratio of the medians.
"""
import json
import pathlib
import re
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
OURS = re.compile("velmar", re.IGNORECASE)
# Keys of every run; the others are its counters.
USUAL = {"name", "run_name", "family_index", "per_family_instance_index", "run_type", "repetitions", "repetition_index",
         "threads", "iterations", "real_time", "cpu_time", "time_unit", "label", "aggregate_name", "aggregate_unit",
         "items_per_second", "bytes_per_second"}


def read_runs(path):
    text = path.read_text()
    # A program whose benchmarks are all filtered out writes nothing.
    runs = [r for r in json.loads(text)["benchmarks"] if not r.get("error_occurred")] if text else []
    medians = [r for r in runs if r.get("aggregate_name") == "median"]
    return medians or [r for r in runs if r.get("run_type") == "iteration"]


def time_of(run):
    return run["cpu_time"] * NANOSECONDS[run["time_unit"]]


def show_time(nanoseconds):
    for unit in ("s", "ms", "us"):
        if nanoseconds >= NANOSECONDS[unit]:
            return f"{nanoseconds / NANOSECONDS[unit]:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def show_number(number):
    if number >= 1e6:
        return f"{number / 1e6:.3g} M"
    return f"{number:,.0f}" if number >= 100 else f"{number:.3g}"


def split(run):
    name, _, case = run["run_name"].partition("/")
    return name, run.get("label") or case


def counters_of(run):
    values = {name: run[name] for name in run if name not in USUAL}
    if "items_per_second" in run:
        values["items/s"] = run["items_per_second"]
    if "bytes_per_second" in run:
        values["MB/s"] = run["bytes_per_second"] / 1e6
    return ", ".join(f"{name} {show_number(value)}" for name, value in values.items())


def rows_of(runs):
    """Name, case, our run, and the compared run with its name or None."""
    for ours in runs:
        name, case = split(ours)
        if not OURS.search(name):
            continue
        subject = OURS.sub("", name)
        peers = [r for r in runs if split(r)[1] == case and not OURS.search(split(r)[0]) and subject in split(r)[0]]
        for peer in peers or [None]:
            yield subject.strip("_"), case, ours, peer, peer and split(peer)[0].replace(subject, "").strip("_")


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    for path in map(pathlib.Path, sys.argv[1:]):
        runs = read_runs(path)
        if not runs:
            continue
        print(f"\n### {path.stem.removeprefix('bench_')}\n")
        print("| what | case | time | counters | peer | its time | its counters | ratio |")
        print("|---|---|---|---|---|---|---|---|")
        for subject, case, ours, peer, peer_name in rows_of(runs):
            left = f"| {subject} | {case} | {show_time(time_of(ours))} | {counters_of(ours)} "
            if peer is None:
                print(left + "| | | | |")
            else:
                ratio = time_of(peer) / time_of(ours)
                print(left + f"| {peer_name} | {show_time(time_of(peer))} | {counters_of(peer)} | {ratio:.2f} |")


main()
