"""Cuts the files of a plan into tasks of about the same duration."""
from __future__ import annotations

from typing import List, NamedTuple, Optional, Protocol, Tuple

from .tool import Source

#: A file costs as much as so many bytes more: opening it, the name in the store, the entry in the manifest.
FILE_COST = 100_000
#: Bytes per second of one thread before the first task has shown it.
FIRST_RATE = 50e6
#: More files than this make a task large for the scheduler, whatever their size.
MAX_FILES = 5000
#: The scheduler is one thread, which a task takes some milliseconds of.
MAX_TASKS_PER_SECOND = 50


class Batch(NamedTuple):
    """The files of a task."""
    sources: Tuple[str, ...]
    #: Of the files, in bytes.
    size: int
    #: Size and number of the files, in bytes.
    cost: int
    #: What the largest of them may take, in bytes: they are converted one after the other.
    memory: int


class Supply(Protocol):
    """A plan: `tool.Plan`, or another that gives files."""

    @property
    def complete(self) -> bool: ...

    def next(self) -> Optional[Source]: ...


class Batches:
    def __init__(self, plan: Supply, seconds: float) -> None:
        self._plan = plan
        self._seconds = self._limit_seconds = seconds
        self._rate = FIRST_RATE
        self._open: List[Source] = []
        self._cost = 0

    @property
    def complete(self) -> bool:
        """Whether every file is in a batch that was given out."""
        return self._plan.complete and not self._open

    def set_threads(self, count: int) -> None:
        """The more threads the cluster has, the longer the tasks."""
        self._limit_seconds = max(self._seconds, count / MAX_TASKS_PER_SECOND)

    def learn(self, cost: int, seconds: float) -> None:
        """Notes the duration of a task, from which later ones get their size."""
        if seconds > 0:
            # Recent tasks count most: files that are next to each other are like each other.
            self._rate += 0.2 * (cost / seconds - self._rate)

    def next(self) -> Optional[Batch]:
        """The next batch; None if there is none, or if the plan isn't that far yet."""
        limit = self._rate * self._limit_seconds
        while self._cost < limit and len(self._open) < MAX_FILES:
            source = self._plan.next()
            if source is None:
                if self._plan.complete and self._open:
                    return self._close()
                return None
            cost = source.size + FILE_COST
            # A large file is a task of its own.
            if self._open and self._cost + cost > 2 * limit:
                batch = self._close()
                self._add(source, cost)
                return batch
            self._add(source, cost)
        return self._close()

    def _add(self, source: Source, cost: int) -> None:
        self._open.append(source)
        self._cost += cost

    def _close(self) -> Batch:
        batch = Batch(tuple(source.path for source in self._open), sum(source.size for source in self._open), self._cost,
                      max(source.memory for source in self._open))
        self._open, self._cost = [], 0
        return batch
