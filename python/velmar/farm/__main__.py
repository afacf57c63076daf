"""The command `python -m velmar.farm`."""
from __future__ import annotations

import argparse
import importlib
import logging
import os
import pathlib
import re
import sys
from typing import Any, List, Optional

from . import FarmError, Report, convert
from .cluster import Cluster
from .tool import Plan

UNITS = {"": 1, "K": 1 << 10, "M": 1 << 20, "G": 1 << 30, "T": 1 << 40}


def _size(text: str) -> int:
    match = re.fullmatch(r"(\d+)([KMGT]?)B?", text.upper())
    if not match:
        raise argparse.ArgumentTypeError(f"'{text}' is no size, such as 8G")
    return int(match.group(1)) * UNITS[match.group(2)]


def _count(text: str) -> int:
    if not text.isdecimal() or not 1 <= int(text) <= 1024:
        raise argparse.ArgumentTypeError(f"'{text}' is no number from 1 to 1024")
    return int(text)


def _seconds(text: str) -> float:
    try:
        value = float(text)
    except ValueError:
        value = 0.0
    if not 0.01 <= value <= 86400:
        raise argparse.ArgumentTypeError(f"'{text}' is no number of seconds from 0.01 to 86400")
    return value


def _physical_memory() -> int:
    """0 where it isn't known."""
    try:
        return os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
    except (AttributeError, OSError, ValueError):
        return 0


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python -m velmar.farm", description="Work on many machines, by Dask distributed.")
    commands = parser.add_subparsers(metavar="COMMAND", required=True)
    app = commands.add_parser("convert", help="convert mesh files into a store of meshes",
                              description="Converts mesh files into a store of meshes. Files that didn't change since they "
                                          "were converted are left out, so a run that was interrupted is continued by the "
                                          "same command. Exit codes: 0 done, 1 failed, 2 wrong usage, 130 interrupted.")
    app.add_argument("sources", nargs="*", metavar="SOURCE", help="a mesh file, or a folder: all mesh files below")
    app.add_argument("--list", metavar="FILE", help="a file with names of further sources, one on a line")
    app.add_argument("--store", required=True, metavar="DIR", help="the store, which is made where it doesn't exist")
    where = app.add_mutually_exclusive_group(required=True)
    where.add_argument("--scheduler", default="", metavar="ADDRESS",
                       help="the Dask scheduler, as tcp://head:8786; its workers see sources and store under the same paths")
    where.add_argument("--local", type=_count, default=0, metavar="N", help="N files at once on this machine, without a cluster")
    app.add_argument("--scale", metavar="FACTOR", help="as in velmar convert")
    app.add_argument("--up", metavar="AXIS", help="as in velmar convert")
    app.add_argument("--plain", action="store_true", help="as in velmar convert")
    app.add_argument("--seconds", type=_seconds, default=5.0, metavar="S", help="about what a task takes (5)")
    app.add_argument("--retries", type=_count, default=3, metavar="N", help="how often a task that failed is done again (3)")
    app.add_argument("--patience", type=_seconds, default=600.0, metavar="S",
                     help="how long a lost scheduler is waited for (600)")
    app.add_argument("--memory", type=_size, default=_physical_memory() // 2, metavar="SIZE",
                     help="with --local, what files converted at once may take, such as 8G (half of the machine's memory)")
    app.add_argument("--dashboard", default="", metavar="ADDRESS",
                     help="with --local, where Dask shows its page, such as :8787; needs bokeh")
    app.add_argument("--report", metavar="FILE", help="write a report as JSON")
    app.add_argument("-q", "--quiet", action="store_true", help="print nothing on success, and no progress")
    app.add_argument("--verbose", action="store_true", help="print what Dask has to say")
    return parser


class _Bar:
    """The progress, where somebody watches and tqdm is installed."""

    def __init__(self, quiet: bool) -> None:
        self._bar: Any = None
        if quiet or not sys.stderr.isatty():
            return
        try:
            self._bar = importlib.import_module("tqdm").tqdm(unit="B", unit_scale=True, file=sys.stderr, leave=False)
        except ImportError:
            print("without tqdm no progress is shown", file=sys.stderr)

    def show(self, report: Report, plan: Plan, cluster: Cluster) -> None:
        if self._bar is None:
            return
        self._bar.total = plan.size
        self._bar.n = report.bytes_in
        threads = f"{cluster.threads} threads" if cluster.threads else "waiting for workers"
        self._bar.set_postfix_str(f"{report.converted} files, {report.failed} failed, {threads}", refresh=False)
        self._bar.refresh()

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()


def _options(arguments: argparse.Namespace) -> List[str]:
    options = []
    for name in ("scale", "up"):
        value = getattr(arguments, name)
        if value is not None:
            options += [f"--{name}", value]
    return options + (["--plain"] if arguments.plain else [])


def _sources(arguments: argparse.Namespace) -> List[str]:
    sources = list(arguments.sources)
    if arguments.list:
        text = sys.stdin.read() if arguments.list == "-" else pathlib.Path(arguments.list).read_text(
            encoding="utf-8", errors="surrogateescape")
        sources += [line for line in text.split("\n") if line]
    return sources


def main(arguments: Optional[List[str]] = None) -> int:
    parser = _parser()
    chosen = parser.parse_args(arguments)
    if not chosen.sources and not chosen.list:
        parser.error("a SOURCE or --list is needed")
    if not chosen.verbose:
        # What matters is in the report; the rest is Dask's account of how it got over it.
        for name in ("distributed", "asyncio"):
            logging.getLogger(name).setLevel(logging.CRITICAL)
    bar = _Bar(chosen.quiet)
    try:
        report = convert(_sources(chosen), chosen.store, scheduler=chosen.scheduler, local=chosen.local,
                         options=_options(chosen), seconds=chosen.seconds, memory=chosen.memory if chosen.local else 0,
                         dashboard=chosen.dashboard, retries=chosen.retries, patience=chosen.patience, watch=bar.show)
    except (FarmError, OSError) as failure:
        bar.close()
        print(f"velmar.farm: {failure}", file=sys.stderr)
        return 1
    bar.close()
    if report.failures:
        print(report.table(), end="", file=sys.stderr)
    if not chosen.quiet:
        print(report.summary())
    if chosen.report:
        try:
            pathlib.Path(chosen.report).write_text(report.to_json(), encoding="utf-8", errors="surrogateescape")
        except OSError as failure:
            print(f"velmar.farm: {chosen.report}: can't be written: {failure.strerror}", file=sys.stderr)
            return 1
    if report.interrupted:
        return 130
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
