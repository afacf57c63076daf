"""Finds and loads the library."""
from __future__ import annotations

import ctypes
import ctypes.util
import functools
import os
import pathlib
import sys
from typing import Any, Iterator

from . import _functions
from .errors import LibraryError

ENVIRONMENT = "VELMAR_LIBRARY"


def file_name() -> str:
    return "VelmarAPI.dll" if sys.platform == "win32" else "libVelmarAPI.so"


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
    found = ctypes.util.find_library("VelmarAPI")
    if found:
        yield found


@functools.lru_cache(maxsize=None)
def library() -> Any:
    """The loaded library, with every function declared."""
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
    raise LibraryError(f"The library VelmarAPI wasn't found; name it in the environment variable {ENVIRONMENT}. "
                       f"Searched:{places}")


def declare(loaded: Any) -> Any:
    for name, (result, *arguments) in _functions.FUNCTIONS.items():
        try:
            function = getattr(loaded, name)
        except AttributeError:
            raise LibraryError(f"{loaded._name} has no function {name}") from None
        function.restype = result
        function.argtypes = arguments
    return loaded
