"""The connection to Dask distributed: tasks go out and come back, whatever happens to workers and scheduler."""
from __future__ import annotations

import contextlib
import importlib
import os
import queue
import time
import uuid
from typing import Any, Dict, FrozenSet, List, NamedTuple, Optional, Sequence, Set, Tuple

from . import tool
from .batches import Batch
from .tool import FarmError

#: How often the workers are counted and the scheduler is looked for, in seconds.
LOOK_EVERY = 2.0
#: Tasks in the hands of the scheduler, per thread of the cluster: one is done, the next is there already.
TASKS_PER_THREAD = 2
MIN_TASKS = 8
#: How long to wait for a worker that can work where none of those present can, in seconds.
UNFIT_PATIENCE = 10.0
#: Dask looks at its threads 100 times a second, which takes 4 % of a core from a process that does nothing else.
QUIET = {"distributed.admin.tick.interval": "1s", "distributed.admin.system-monitor.interval": "5s",
         "distributed.worker.profile.interval": "1s", "distributed.worker.profile.cycle": "10s"}


def import_distributed() -> Any:
    try:
        return importlib.import_module("distributed")
    except ImportError as failure:
        raise FarmError("velmar.farm needs Dask distributed: pip install velmar[farm], or Debian's package "
                        f"python3-distributed ({failure})") from None


def pack(sources: Sequence[str]) -> bytes:
    """Paths for the way to a worker: they are alike, and the scheduler keeps those of all tasks in flight."""
    # A Python without it has no Dask either, but the help.
    import zlib
    return zlib.compress(b"\0".join(os.fsencode(source) for source in sources), 1)


def unpack(packed: bytes) -> List[str]:
    import zlib
    return [os.fsdecode(source) for source in zlib.decompress(packed).split(b"\0")]


def work(number: int, store: str, options: Sequence[str], packed: bytes) -> Dict[str, Any]:
    """What a worker does."""
    try:
        return {"number": number, **tool.convert(store, options, unpack(packed))}
    except FarmError as failure:
        # Fails fast, so this worker would take one task after the other. It gets none any more.
        return {"number": number, "unfit": str(failure), "worker": import_distributed().get_worker().address}


class Ended(NamedTuple):
    """A task that came back."""
    batch: Batch
    #: What `tool.convert` has returned, or why it has not.
    result: Optional[Dict[str, Any]]
    error: str


class _Task(NamedTuple):
    batch: Batch
    attempt: int
    future: Any
    #: The only workers that may do it; empty for all.
    workers: FrozenSet[str]


class Cluster:
    """Not for several threads. To be closed."""

    def __init__(self, store: str, options: Sequence[str], *, scheduler: str = "", local: int = 0, memory: int = 0,
                 dashboard: str = "", retries: int = 3, patience: float = 600.0) -> None:
        self._distributed = import_distributed()
        self._store, self._options = store, tuple(options)
        self._scheduler, self._retries, self._patience = scheduler, retries, patience
        self._closing = contextlib.ExitStack()
        self._run = uuid.uuid4().hex[:8]
        self._number = 0
        self._tasks: Dict[int, _Task] = {}
        self._again: List[Tuple[Batch, int]] = []
        self._done: "queue.SimpleQueue[Any]" = queue.SimpleQueue()
        self._workers: Dict[str, Any] = {}
        self._next_look = 0.0
        #: What is wrong with workers that can't work.
        self._unfit: Dict[str, str] = {}
        self._unfit_since: Optional[float] = None
        #: Tasks that were sent again.
        self.repeated = 0
        try:
            # Threads suffice here: the work is done by processes of the tool. Its memory isn't this process's.
            self._local: Any = None if scheduler else self._start_local(local, memory, dashboard)
            self._connect(10.0)
        except BaseException:
            self._closing.close()
            raise

    def _start_local(self, threads: int, memory: int, dashboard: str) -> Any:
        with importlib.import_module("dask.config").set(QUIET):
            return self._closing.enter_context(self._distributed.LocalCluster(
                n_workers=1, threads_per_worker=threads, processes=False, memory_limit=0,
                dashboard_address=dashboard or "127.0.0.1:0", resources={"memory": memory} if memory else {}))

    # ---- connection --------------------------------------------------------------------------------------------------

    def _connect(self, patience: float) -> None:
        deadline = time.monotonic() + patience
        while True:
            try:
                self._client: Any = self._distributed.Client(self._local or self._scheduler, timeout=10,
                                                             set_as_default=False)
                self._identity = self._look()
                return
            except (OSError, TimeoutError) as failure:
                if time.monotonic() > deadline:
                    raise FarmError(f"{self._scheduler}: no scheduler answers: {failure}") from None
                time.sleep(1)

    def _look(self) -> str:
        """Counts the workers, and returns who the scheduler is."""
        info = self._client.scheduler_info()
        self._workers = info["workers"]
        self._next_look = time.monotonic() + LOOK_EVERY
        return str(info["id"])

    def _keep_connected(self) -> None:
        """A scheduler that was started again knows nothing of the tasks: all are sent again."""
        if time.monotonic() < self._next_look:
            return
        with contextlib.suppress(OSError, TimeoutError):
            if self._client.status == "running" and self._look() == self._identity:
                self._recall()
                return
        with contextlib.suppress(Exception):
            self._client.close(timeout=5)
        for task in self._tasks.values():
            self._send_again(task.batch, task.attempt)
        self._tasks.clear()
        self._connect(self._patience)

    def _recall(self) -> None:
        """Tasks for workers of which none is left are sent to others."""
        present = self._workers.keys()
        lost = [number for number, task in self._tasks.items() if task.workers and not task.workers & present]
        for number in lost:
            task = self._tasks.pop(number)
            task.future.cancel()
            self._send_again(task.batch, task.attempt)

    @property
    def dashboard(self) -> str:
        """The address of Dask's page about this cluster."""
        return str(self._client.dashboard_link or "")

    @property
    def threads(self) -> int:
        return sum(worker["nthreads"] for worker in self._workers.values())

    def close(self) -> None:
        with contextlib.suppress(Exception):
            self._client.cancel([task.future for task in self._tasks.values()])
            self._client.close(timeout=5)
        self._closing.close()

    # ---- tasks -------------------------------------------------------------------------------------------------------

    @property
    def idle(self) -> bool:
        """Whether there is nothing left to do."""
        return not self._tasks and not self._again

    def wants_more(self) -> bool:
        """Whether to send another batch: few are in flight, however many there will be."""
        return not self._again and self._can_work() and len(self._tasks) < max(TASKS_PER_THREAD * self.threads, MIN_TASKS)

    def send(self, batch: Batch, attempt: int = 0) -> None:
        self._number += 1
        number = self._number
        # Not as a wish: idle workers would take such tasks from others.
        workers = frozenset(self._fit() if self._unfit else ())
        try:
            future = self._client.submit(work, number, self._store, self._options, pack(batch.sources), pure=False,
                                         key=f"velmar-convert-{self._run}-{number}", resources=self._needs(batch),
                                         workers=list(workers) or None)
        except Exception:  # pylint: disable=broad-except
            # Dask has no class of its own for a client that was closed by the loss of its scheduler.
            if self._client.status == "running":
                raise
            self._next_look = 0.0
            self._again.append((batch, attempt))
            return
        self._tasks[number] = _Task(batch, attempt, future, workers)
        future.add_done_callback(lambda _: self._done.put(number))

    def _fit(self) -> List[str]:
        return [address for address in self._workers if address not in self._unfit]

    def _can_work(self) -> bool:
        """Raises `FarmError` when no worker has been able to for long."""
        if not self._unfit or self._fit():
            self._unfit_since = None
            return True
        now = time.monotonic()
        self._unfit_since = self._unfit_since or now
        if now - self._unfit_since > UNFIT_PATIENCE:
            raise FarmError("no worker can work: " + "; ".join(sorted(self._unfit.values())))
        return False

    def _needs(self, batch: Batch) -> Optional[Dict[str, int]]:
        """Of workers that say how much memory they have, a task takes its part; a larger file waits until it is alone."""
        amounts = [worker.get("resources", {}).get("memory") for worker in self._workers.values()]
        if not amounts or None in amounts:
            return None
        return {"memory": min(batch.memory, max(amounts))}

    def _send_again(self, batch: Batch, attempt: int) -> None:
        self.repeated += 1
        self._again.append((batch, attempt))

    def wait(self, seconds: float) -> List[Ended]:
        """The tasks that ended meanwhile; at once if there is one."""
        self._keep_connected()
        while self._again and self._client.status == "running" and self._can_work():
            batch, attempt = self._again.pop()
            self.send(batch, attempt)
        numbers: Set[int] = set()
        with contextlib.suppress(queue.Empty):
            numbers.add(self._done.get(timeout=seconds))
            while True:
                numbers.add(self._done.get_nowait())
        return self._collect([(number, self._tasks.pop(number)) for number in sorted(numbers & self._tasks.keys())])

    def _collect(self, tasks: List[Tuple[int, _Task]]) -> List[Ended]:
        finished = [task.future for _, task in tasks if task.future.status == "finished"]
        try:
            # What is lost on the way is left out.
            results = {result["number"]: result for result in self._client.gather(finished, errors="skip")}
        except Exception:  # pylint: disable=broad-except
            results = {}
        ended = []
        for number, task in tasks:
            result = results.get(number)
            if result and "unfit" in result:
                self._unfit[result["worker"]] = f"{result['worker']}: {result['unfit']}"
                self._send_again(task.batch, task.attempt)
            elif result:
                ended.append(Ended(task.batch, result, ""))
            elif task.future.status != "error":
                # Lost with its scheduler, by no fault of its own.
                self._send_again(task.batch, task.attempt)
            elif task.attempt < self._retries:
                self._send_again(task.batch, task.attempt + 1)
            else:
                ended.append(Ended(task.batch, None, str(task.future.exception()) or "an unknown error"))
        return ended
