"""The command line tool, as the farm runs it: it says what is to be converted, and converts on each worker.

The tool is a process of its own, so a file that crashes it costs that file and a start of the tool.
"""
from __future__ import annotations

import functools
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import uuid
from typing import Any, Dict, Iterator, List, NamedTuple, Optional, Sequence, Tuple

from .._functions import VERSION
from ..errors import VelmarError

ENVIRONMENT = "VELMAR_TOOL"


class FarmError(VelmarError):
    """The farm can't work here: the tool or the store is missing, or the cluster isn't there."""


# ---- finding the tool ------------------------------------------------------------------------------------------------


def candidates() -> Iterator[str]:
    """Where the tool may be, in the order of the search."""
    named = os.environ.get(ENVIRONMENT)
    if named:
        yield named
        return
    package = pathlib.Path(__file__).resolve().parents[1]
    name = "velmar.exe" if sys.platform == "win32" else "velmar"
    # Next to its library: on Windows in one folder, elsewhere in bin and lib.
    yield str(package / name if sys.platform == "win32" else package / "bin" / name)
    if package.parts[-4:-1] == ("share", "velmar", "python"):
        yield str(package.parents[3] / "bin" / name)
    yield str(pathlib.Path(sys.prefix) / "bin" / name)
    found = shutil.which(name)
    if found:
        yield found


def find() -> str:
    """The path of the tool. Raises `FarmError`."""
    tried = []
    for path in candidates():
        if os.path.isfile(path):
            return os.path.abspath(path)
        tried.append(f"\n  {path}")
    raise FarmError(f"The tool velmar wasn't found; name it in the environment variable {ENVIRONMENT}. Searched:"
                    + "".join(tried))


@functools.lru_cache(maxsize=None)
def _version(path: str) -> str:
    try:
        done = subprocess.run([path, "--version"], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    except OSError as failure:
        raise FarmError(f"{path} can't be run: {failure}") from None
    return done.stdout.strip()


def require(path: str) -> None:
    """Raises `FarmError` unless the tool is of the package's version: other versions may make other meshes."""
    found = _version(path)
    if found != f"velmar {VERSION}":
        raise FarmError(f"{path} is {found or 'no tool of this name'}, but velmar {VERSION} is needed")


def require_store(store: str) -> None:
    """Raises `FarmError` unless the store is there: where the disk isn't mounted, the tool would make another one."""
    if not os.path.isdir(os.path.join(store, "manifest")):
        raise FarmError(f"{store}: this machine doesn't see the store")


# ---- what is to be converted -----------------------------------------------------------------------------------------


class Source(NamedTuple):
    path: str
    size: int
    #: What its conversion may take, in bytes.
    memory: int


class Plan:
    """What a store lacks of the sources. The tool writes it into a file while it is read, so that work starts early."""

    def __init__(self, store: str, options: Sequence[str], sources: Sequence[str]) -> None:
        tool = find()
        require(tool)
        self.unchanged = 0
        #: Of all files; known when the plan is complete.
        self.size: Optional[int] = None
        self.failures: List[str] = []
        self._position = 0
        self._folder = tempfile.TemporaryDirectory(prefix="velmar-farm-")
        names = pathlib.Path(self._folder.name, "sources")
        names.write_bytes(b"".join(os.fsencode(source) + b"\0" for source in sources))
        self._path = pathlib.Path(self._folder.name, "plan")
        with open(self._path, "wb") as output, open(pathlib.Path(self._folder.name, "errors"), "wb") as errors:
            self._process = subprocess.Popen(
                [tool, "convert", "--store", store, "--dry-run", "--json", "--recursive", "--list", str(names), *options],
                stdin=subprocess.DEVNULL, stdout=output, stderr=errors)
        self._lines = open(self._path, "rb")

    @property
    def complete(self) -> bool:
        """Whether all was read."""
        return self.size is not None

    def next(self) -> Optional[Source]:
        """The next file; None if the plan is complete, or if the tool hasn't found it yet."""
        while not self.complete:
            # Before reading, or what it writes in between would be missed.
            ended = self._process.poll() is not None
            text = self._lines.readline()
            if not text.endswith(b"\n"):
                if ended:
                    errors = pathlib.Path(self._folder.name, "errors").read_bytes()
                    self.close()
                    raise FarmError(_reason(errors) or f"velmar ended with {_describe_end(self._process.returncode)}")
                # Anew, since Wine doesn't read on after the end of a file.
                self._lines.close()
                self._lines = open(self._path, "rb")
                self._lines.seek(self._position)
                return None
            self._position += len(text)
            line = json.loads(text)
            if "summary" in line:
                self.unchanged, self.size = line["summary"]["unchanged"], line["summary"]["bytes_in"]
                self.close()
            elif line["state"] == "failed":
                self.failures.append(line["message"])
            else:
                return Source(line["source"], line["size"], line["memory"])
        return None

    def close(self) -> None:
        if self._process.poll() is None and not self.complete:
            self._process.kill()
        self._process.wait()
        self._lines.close()
        self._folder.cleanup()


# ---- converting ------------------------------------------------------------------------------------------------------


#: The file of the manifest that a thread's tools continue in turn: one file per thread, not one per task.
_of_thread = threading.local()


def convert(store: str, options: Sequence[str], sources: Sequence[str]) -> Dict[str, Any]:
    """Converts files into a store; those that fail are in the result, with their messages. Doing it again changes
    nothing. Raises `FarmError` when this machine can't do it."""
    tool = find()
    require(tool)
    require_store(store)
    begin = time.monotonic()
    result: Dict[str, Any] = {"converted": 0, "added": 0, "bytes_in": 0, "bytes_out": 0, "failures": [], "notes": []}
    rest = list(sources)
    suspect = ""
    while rest:
        lines, end = _run(tool, store, options, rest)
        for source, line in zip(rest, lines):
            _count(result, source, line)
        del rest[:len(lines)]
        if not rest:
            break
        # It ended while it worked on the first without a line. The system may have killed it for another's sake, so the
        # file has a second chance.
        if rest[0] == suspect:
            result["failures"].append((rest.pop(0), f"velmar ended with {end}"))
        suspect = rest[0] if rest else ""
    result["seconds"] = time.monotonic() - begin
    return result


def _count(result: Dict[str, Any], source: str, line: Dict[str, Any]) -> None:
    if line["state"] == "failed":
        result["failures"].append((source, line["message"]))
        return
    result["converted"] += 1
    result["added"] += line["written"] != 0
    result["bytes_in"] += line["size"]
    result["bytes_out"] += line["written"]
    if line["notes"]:
        result["notes"].append((source, line["notes"]))


def _run(tool: str, store: str, options: Sequence[str], sources: Sequence[str]) -> Tuple[List[Dict[str, Any]], str]:
    """The lines of the files that the tool has done, in order, and how it ended."""
    if not getattr(_of_thread, "manifest", ""):
        _of_thread.manifest = uuid.uuid4().hex
    # One file at a time: the cluster has a thread for each core. What changed was found by the plan.
    ended = subprocess.run([tool, "convert", "--store", store, "--list", "-", "--json", "--force", "--jobs", "1",
                            "--manifest", _of_thread.manifest, *options],
                           input=b"".join(os.fsencode(source) + b"\0" for source in sources), capture_output=True,
                           check=False)
    lines: List[Dict[str, Any]] = []
    for text in ended.stdout.split(b"\n")[:-1]:
        line = json.loads(text)
        if "summary" in line:
            return lines, ""
        lines.append(line)
    # It may have left half a line at the end.
    _of_thread.manifest = ""
    message = _reason(ended.stderr)
    if not lines and ended.returncode in (1, 2) and message.startswith("velmar: "):
        raise FarmError(message)
    return lines, _describe_end(ended.returncode) + (f": {message}" if message else "")


def _reason(errors: bytes) -> str:
    """The tool's own message, or else the last line, as a crash leaves it."""
    lines = [line.strip()[:500] for line in errors.decode("utf-8", "replace").splitlines() if line.strip()]
    return next((line for line in reversed(lines) if line.startswith("velmar: ")), lines[-1] if lines else "")


def _describe_end(code: int) -> str:
    if code >= 0:
        return f"code {code:#x}" if code > 255 else f"code {code}"
    try:
        return signal.Signals(-code).name
    except ValueError:
        return f"signal {-code}"
