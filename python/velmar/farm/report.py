"""What became of a run."""
from __future__ import annotations

import dataclasses
import json
from typing import Any, Dict, List, Tuple


@dataclasses.dataclass
class Report:
    """Counts of files and bytes, and what failed."""
    converted: int = 0
    #: Already in the store.
    unchanged: int = 0
    #: Meshes that the store didn't have.
    added: int = 0
    bytes_in: int = 0
    bytes_out: int = 0
    tasks: int = 0
    #: Tasks that were done again, since a worker or the scheduler was lost.
    repeated: int = 0
    #: From the begin to the end, by the clock.
    seconds: float = 0.0
    #: Of all workers together.
    work_seconds: float = 0.0
    #: Whether the run was ended before all was done.
    interrupted: bool = False
    #: Files and messages.
    failures: List[Tuple[str, str]] = dataclasses.field(default_factory=list)
    #: Files that were converted, and what was left out of them.
    notes: List[Tuple[str, List[str]]] = dataclasses.field(default_factory=list)

    @property
    def failed(self) -> int:
        return len(self.failures)

    def add(self, result: Dict[str, Any]) -> None:
        """Adds what `tool.convert` has returned."""
        for name in ("converted", "added", "bytes_in", "bytes_out"):
            setattr(self, name, getattr(self, name) + result[name])
        self.tasks += 1
        self.work_seconds += result["seconds"]
        self.failures.extend((source, message) for source, message in result["failures"])
        self.notes.extend((source, notes) for source, notes in result["notes"])

    def to_json(self) -> str:
        values = dataclasses.asdict(self)
        values["failed"] = self.failed
        values["failures"] = [{"source": source, "message": message} for source, message in sorted(self.failures)]
        values["notes"] = [{"source": source, "notes": notes} for source, notes in sorted(self.notes)]
        return json.dumps(values, indent=2, ensure_ascii=False) + "\n"

    def summary(self) -> str:
        ended = "interrupted: " if self.interrupted else ""
        meshes = "mesh" if self.added == 1 else "meshes"
        return (f"{ended}{self.converted} converted, {self.unchanged} unchanged, {self.failed} failed; {self.added} {meshes} "
                f"added; {size(self.bytes_in)} in, {size(self.bytes_out)} out; {self.tasks} tasks, {self.repeated} repeated; "
                f"{self.seconds:.1f} s")

    def table(self, rows: int = 50) -> str:
        """The failures, a line for each of the first `rows`; empty without any."""
        failures = sorted(self.failures)[:rows]
        if not failures:
            return ""
        lines = [(_printable(source), _printable(_without(source, message))) for source, message in failures]
        width = min(max(len(source) for source, _ in lines), 60)
        text = "".join(f"{source:<{width}}  {message}\n" for source, message in [("FILE", "MESSAGE"), *lines])
        rest = self.failed - len(failures)
        return text + (f"and {rest} more\n" if rest else "")


def size(count: float) -> str:
    """512 bytes, 3.1 KB, 1.2 GB."""
    if count < 1000:
        return f"{count:.0f} bytes"
    for unit in ("KB", "MB", "GB"):
        count /= 1000
        if count < 999.95:
            return f"{count:.1f} {unit}"
    return f"{count / 1000:.1f} TB"


def _without(source: str, message: str) -> str:
    """Most messages begin with the file, which has a column of its own."""
    start = source + ": "
    return message[len(start):] if source and message.startswith(start) else message


def _printable(text: str) -> str:
    """Names come from disks, and a terminal obeys some characters."""
    return "".join(c if c.isprintable() else f"\\x{ord(c):02x}" for c in text)
