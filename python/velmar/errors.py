"""What the package raises besides TypeError and ValueError for arguments."""
from typing import Dict, Type


class VelmarError(Exception):
    """The base of the package's own exceptions. Those of the library have its whole text."""


class BadArgumentError(VelmarError, ValueError):
    """The library refused an argument. Nothing was changed."""


class OutOfMemoryError(VelmarError, MemoryError):
    """Memory is exhausted. Every object is still alive."""


class FileError(VelmarError, OSError):
    """A file or folder can't be read or written."""


class MeshError(VelmarError, ValueError):
    """A mesh or mesh file isn't valid."""


class DocumentError(VelmarError, ValueError):
    """The scene can't be written as a document."""


class RendererError(VelmarError, RuntimeError):
    """There is no renderer library, or it failed."""


class InternalError(VelmarError, RuntimeError):
    """A failed assertion of the library."""


class LibraryError(VelmarError, OSError):
    """The library wasn't found, or isn't one that this package knows."""


class ClosedError(VelmarError, ValueError):
    """An object was used that was closed, or destroyed with the scene or model that owned it."""


class OwnershipError(VelmarError, ValueError):
    """An object that a scene or model owns was added or closed again."""


#: The class of each status of the library.
CLASS_OF_STATUS: Dict[int, Type[VelmarError]] = {
    1: BadArgumentError, 2: OutOfMemoryError, 3: FileError, 4: MeshError, 5: DocumentError, 6: RendererError,
    7: InternalError,
}
