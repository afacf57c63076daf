"""What the package raises besides TypeError, ValueError and OSError."""


class VelmarError(Exception):
    """The base of the package's own exceptions."""


class LibraryError(VelmarError, OSError):
    """The library VelmarAPI wasn't found, or isn't one that this package knows."""


class ClosedError(VelmarError, ValueError):
    """An object was used that was closed, or destroyed with the scene or model that owned it."""


class OwnershipError(VelmarError, ValueError):
    """An object that a scene or model owns was added or closed again."""


class WriteError(VelmarError, OSError):
    """A document or file wasn't written, or not to its end."""


class RendererError(VelmarError, RuntimeError):
    """There is no renderer library, or it couldn't be set up. The reason is on the standard error stream."""
