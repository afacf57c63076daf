"""Finds and loads the library."""
from __future__ import annotations

import ctypes
import ctypes.util
import functools
import os
import pathlib
import sys
from typing import Any, Callable, Iterator, Optional

from . import _functions
from .errors import CLASS_OF_STATUS, InternalError, LibraryError

ENVIRONMENT = "VELMAR_LIBRARY"


def file_name() -> str:
    return "velmarkit.dll" if sys.platform == "win32" else "libvelmarkit.so"


def candidates() -> Iterator[str]:
    """Where the library may be, in the order of the search."""
    named = os.environ.get(ENVIRONMENT)
    if named:
        yield named
        return
    here = pathlib.Path(__file__).resolve().parent
    name = file_name()
    yield str(here / name)
    # The package may be in share/velmar/python of the installed tree, or in the tree's Python.
    prefixes = [here.parents[3]] if here.parts[-4:-1] == ("share", "velmar", "python") else []
    prefixes.append(pathlib.Path(sys.prefix))
    for prefix in prefixes:
        if sys.platform == "win32":
            yield str(prefix / "bin" / name)
        else:
            yield str(prefix / "lib" / name)
            yield str(prefix / "lib64" / name)
            # On Debian: lib/x86_64-linux-gnu.
            yield from sorted(str(path) for path in prefix.glob(f"lib/*-linux-*/{name}"))
    found = ctypes.util.find_library("velmarkit")
    if found:
        yield found


@functools.lru_cache(maxsize=None)
def library() -> Any:
    """The loaded library, with every function declared. A call that fails raises the exception of its status."""
    tried = []
    for path in candidates():
        # The system searches for a name without a directory.
        if os.path.dirname(path) and not os.path.isfile(path):
            tried.append(f"{path}: no such file")
            continue
        try:
            return declare(ctypes.CDLL(os.path.abspath(path) if os.path.dirname(path) else path))
        except OSError as failure:
            tried.append(f"{path}: {failure}")
    places = "".join(f"\n  {place}" for place in tried) or " nowhere"
    raise LibraryError(f"The library velmarkit wasn't found; name it in the environment variable {ENVIRONMENT}. "
                       f"Searched:{places}")


def declare(loaded: Any) -> Any:
    def function(name: str) -> Any:
        try:
            return getattr(loaded, name)
        except AttributeError:
            raise LibraryError(f"{loaded._name} has no function {name}") from None

    last_error = function("VelmarKit_LastError")
    last_error.restype = ctypes.c_char_p

    def raise_failure(status: int, called: Any, arguments: Any) -> int:
        if status != 0:
            text = (last_error() or b"").decode("utf-8", "replace")
            raise CLASS_OF_STATUS.get(status, InternalError)(text)
        return status

    for name, arguments in _functions.FUNCTIONS.items():
        declared = function(name)
        declared.restype = ctypes.c_int32
        declared.argtypes = arguments
        declared.errcheck = raise_failure
    return loaded


#: Called by the library, so it must stay alive.
_line_callback: Any = None


def set_line_handler(handler: Optional[Callable[[bool, str], None]]) -> None:
    """Sets who receives the lines that the library reports, as "Num materials: 2", instead of the standard streams; None
    for these. The handler gets whether it is a line for the standard error stream, and the line."""
    global _line_callback
    null: Any = None
    callback: Any = ctypes.cast(null, _functions.LineCallback)
    if handler is not None:
        receiver = handler

        def receive(_user: Any, is_error: int, line: bytes) -> None:
            receiver(bool(is_error), line.decode("utf-8", "replace"))

        callback = _functions.LineCallback(receive)
    library().VelmarKit_SetLineCallback(callback, None)
    _line_callback = callback
