"""Converts libraries of mesh files into a store of meshes, on one machine or many, by Dask distributed.

    python -m velmar.farm convert models --store store --local 8
    python -m velmar.farm convert models --store store --scheduler tcp://head:8786

`velmar.farm.convert` does the same from a program. Files are batched into tasks of some seconds; each worker has the command
line tool convert a batch in a process of its own. A task may be done again at any time: the store takes each mesh once, and
a later run converts only what is missing.

Dask distributed is imported when a run begins; the rest of the package works without it.
"""
from __future__ import annotations

import os
import time
from typing import Any, Callable, Optional, Sequence

from .batches import Batches
from .cluster import Cluster, Ended, import_distributed
from .report import Report
from .tool import FarmError, Plan

__all__ = ["FarmError", "Report", "convert"]


def convert(sources: Sequence[str], store: str, *, scheduler: str = "", local: int = 0, options: Sequence[str] = (),
            seconds: float = 5.0, memory: int = 0, dashboard: str = "", retries: int = 3, patience: float = 600.0,
            watch: Optional[Callable[[Report, Plan, Cluster], Any]] = None) -> Report:
    """Converts mesh files, and all of folders, into the store of meshes `store`, and returns what became of them.

    Either `scheduler` is the address of a Dask scheduler, whose workers see sources and store under the same paths, or
    `local` the number of threads to use here. `options` are options of `velmar convert` that change meshes, as
    ["--scale", "2"]. A task takes about `seconds`, longer on
    clusters of more than 50 threads for each of them. With `local`, files converted at once take up to `memory` bytes by
    estimate, 0 for any. A task that fails is done again up to `retries` times; then its files are among the failures. A
    scheduler that is lost is waited for `patience` seconds. `watch` is called now and then. Raises `FarmError`.
    """
    if bool(scheduler) == bool(local):
        raise ValueError("either scheduler or local is needed")
    # Before the store is made.
    import_distributed()
    begin = time.monotonic()
    store = os.path.abspath(store)
    report = Report()
    plan = Plan(store, options, [os.path.abspath(source) for source in sources])
    try:
        try:
            os.makedirs(os.path.join(store, "manifest"), exist_ok=True)
        except OSError as failure:
            raise FarmError(f"{store}: can't be made: {failure.strerror}") from None
        cluster = Cluster(store, options, scheduler=scheduler, local=local, memory=memory, dashboard=dashboard,
                          retries=retries, patience=patience)
        try:
            _run(Batches(plan, seconds), plan, cluster, report, watch or (lambda *_: None))
        except KeyboardInterrupt:
            report.interrupted = True
        finally:
            cluster.close()
        report.repeated = cluster.repeated
    finally:
        plan.close()
    report.unchanged = plan.unchanged
    report.failures.extend(("", message) for message in plan.failures)
    report.seconds = time.monotonic() - begin
    return report


def _run(batches: Batches, plan: Plan, cluster: Cluster, report: Report, watch: Callable[[Report, Plan, Cluster], Any]) -> None:
    while not (batches.complete and cluster.idle):
        batches.set_threads(cluster.threads)
        while cluster.wants_more():
            batch = batches.next()
            if batch is None:
                break
            cluster.send(batch)
        # Shortly while the plan is being made, so that workers don't wait for it.
        for ended in cluster.wait(0.5 if plan.complete else 0.05):
            _note(ended, batches, report)
        watch(report, plan, cluster)


def _note(ended: Ended, batches: Batches, report: Report) -> None:
    if ended.result is None:
        report.tasks += 1
        report.failures.extend((source, ended.error) for source in ended.batch.sources)
        return
    batches.learn(ended.batch.cost, ended.result["seconds"])
    report.add(ended.result)
