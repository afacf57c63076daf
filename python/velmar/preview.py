"""Pictures of scenes by the preview renderer."""
from __future__ import annotations

import ctypes
import functools
import math
import os
import pathlib
import sys
from typing import TYPE_CHECKING, Any, Callable, Dict, Iterator, List, NamedTuple, Optional

from . import _functions
from ._library import library
from ._objects import created
from ._values import number, uint32
from .errors import RendererError, VelmarError
from .nodes import Camera
from .scene import Scene

if TYPE_CHECKING:
    import numpy
    from numpy.typing import NDArray

ENVIRONMENT = "VELMAR_PREVIEW"
#: Where a renderer library is, in the folder of a program.
FOLDER = "vs2017_64"
DEFAULT_SAMPLES = 64
MAX_THREADS = 256

# Numbers of velmarpreview.h.
SEED, THREADS, SAMPLES, SECONDS = range(4)
FINISHED = 4


class Picture(NamedTuple):
    """A rendered picture, from the top left on."""

    #: (height, width, 3) of float32: linear red, green and blue.
    light: "NDArray[numpy.float32]"
    #: (height, width, 3) of uint8: as a display shows it, by the scene's tone mapping.
    pixels: "NDArray[numpy.uint8]"


class Progress(ctypes.Structure):
    """The structure VelmarPreviewProgress."""

    _fields_ = [("state", ctypes.c_int32), ("width", ctypes.c_uint32), ("height", ctypes.c_uint32),
                ("threads", ctypes.c_uint32), ("samples", ctypes.c_double), ("halt_samples", ctypes.c_double),
                ("seconds", ctypes.c_double), ("halt_seconds", ctypes.c_double), ("pictures", ctypes.c_uint64),
                ("memory", ctypes.c_uint64)]


def render(scene: Scene, samples: Optional[float] = None, *, seconds: Optional[float] = None, threads: int = 0,
           seed: int = 0, progress: Optional[Callable[[float], None]] = None) -> Picture:
    """Renders a scene by the preview renderer and returns the picture. The scene stays as it is. Needs numpy.

    samples   of each pixel, at which the render ends. By default the limit of the scene's render settings, or 64 if they
              have none and `seconds` isn't given either.
    seconds   after which the render ends; by default the limit of the render settings.
    threads   how many threads render; 0 for one for each processor.
    seed      of the random numbers: equal seeds give equal pictures, for any number of threads.
    progress  called several times a second with the samples of each pixel so far.

    ValueError: the scene has no camera, or no render settings with a width and a height.
    RendererError: there is no preview renderer, or nothing was rendered; the reason of the latter is on the standard
    error stream.
    """
    numpy = _numpy()
    if not isinstance(scene, Scene):
        raise TypeError(f"scene must be a Scene, not {type(scene).__name__}")
    settings = scene._settings_for_renderer("width", "height")
    if not any(isinstance(node, Camera) for node in scene.nodes):
        raise ValueError("the scene needs a camera")
    options = {THREADS: uint32("threads", threads), SEED: uint32("seed", seed),
               SAMPLES: _limit("samples", samples), SECONDS: _limit("seconds", seconds)}
    if options[THREADS] > MAX_THREADS:
        raise ValueError(f"threads must be from 0 to {MAX_THREADS}, not {threads}")
    if samples is None and seconds is None:
        if not any((getattr(settings, name) or 0) > 0 for name in ("halt_samples_per_pixel", "halt_time")):
            options[SAMPLES] = DEFAULT_SAMPLES
    path = _find()
    functions = library()
    context = created(_functions.VelmarContext, "VelmarKit_Context_Create")
    try:
        functions.VelmarKit_Context_InitializeFrom(context, str(path.parent).encode("utf-8"))
        renderer = created(_functions.VelmarRenderer, "VelmarKit_Renderer_Create", context)
    except VelmarError:
        functions.VelmarKit_Context_Delete(context)
        raise
    try:
        preview = _loaded(str(path))
        functions.VelmarKit_Renderer_InitializeWithScene(renderer, context, scene._pointer())
        preview.VelmarPreview_SetImagePath(renderer, b"")
        for option, value in options.items():
            preview.VelmarPreview_SetOption(renderer, option, value)
        state = _run(functions, preview, renderer, progress)
        if state.state != FINISHED:
            raise RendererError("nothing was rendered; the reason is on the standard error stream")
        shape = (state.height, state.width, 3)
        picture = Picture(numpy.empty(shape, numpy.float32), numpy.empty(shape, numpy.uint8))
        preview.VelmarPreview_GetPixels(renderer, picture.light.ctypes.data, picture.light.size)
        preview.VelmarPreview_GetBytes(renderer, picture.pixels.ctypes.data, picture.pixels.size)
        return picture
    finally:
        functions.VelmarKit_Renderer_Delete(renderer)


def _run(functions: Any, preview: Any, renderer: Any, progress: Optional[Callable[[float], None]]) -> Progress:
    """Renders to the end; also ends the render if an exception interrupts it."""
    state = Progress()
    functions.VelmarKit_Renderer_Start(renderer, None)
    try:
        while preview.VelmarPreview_Wait(renderer, 0.1) == 0:
            if progress is not None:
                preview.VelmarPreview_GetProgress(renderer, ctypes.byref(state))
                progress(state.samples)
        preview.VelmarPreview_GetProgress(renderer, ctypes.byref(state))
    except BaseException:
        functions.VelmarKit_Renderer_Stop(renderer, None)
        raise
    return state


def _limit(what: str, value: Optional[float]) -> float:
    if value is None:
        return 0.0
    result = number(what, value)
    if not 0 < result < math.inf:
        raise ValueError(f"{what} must be above 0, not {value}")
    return result


def _numpy() -> Any:
    try:
        import numpy
    except ImportError:
        raise ImportError("velmar.render needs numpy, which isn't installed") from None
    return numpy


# ---- the library ----------------------------------------------------------------------------------------------------


def _folders() -> Iterator[pathlib.Path]:
    """Where the preview renderer may be, in the order of the search."""
    named = os.environ.get(ENVIRONMENT)
    if named:
        yield pathlib.Path(named)
        return
    # Next to the library, or in bin/ of the tree that contains it.
    kit = pathlib.Path(library()._name)
    if kit.parent.name:
        near = kit.resolve().parent
        yield near / FOLDER
        for tree in list(near.parents)[:2]:
            yield tree / "bin" / FOLDER
    yield pathlib.Path(sys.prefix, "bin", FOLDER)


def _find() -> pathlib.Path:
    name = "velmar_rt_sdk.dll" if sys.platform == "win32" else "velmar_rt_sdk.so"
    tried = []
    for folder in _folders():
        path = folder / name
        if path.is_file():
            return path.resolve()
        tried.append(f"\n  {path}")
    raise RendererError(f"The preview renderer wasn't found; name its folder in the environment variable {ENVIRONMENT}. "
                        f"Searched:{''.join(tried)}")


@functools.lru_cache(maxsize=None)
def _loaded(path: str) -> Any:
    """The preview's own functions. Each raises RendererError if it fails."""
    loaded: Any = ctypes.CDLL(path)

    def check(status: int, function: Any, _arguments: Any) -> int:
        if status < 0:
            raise RendererError(f"{function.__name__} failed: there is another renderer library in "
                                f"{os.path.dirname(path)}, or memory is exhausted")
        return status

    functions: Dict[str, List[Any]] = {
        "Wait": [ctypes.c_double], "GetProgress": [ctypes.POINTER(Progress)], "GetPixels": [ctypes.c_void_p, ctypes.c_size_t],
        "GetBytes": [ctypes.c_void_p, ctypes.c_size_t], "SetOption": [ctypes.c_int32, ctypes.c_double],
        "SetImagePath": [ctypes.c_char_p]}
    for name, arguments in functions.items():
        function = getattr(loaded, f"VelmarPreview_{name}")
        function.restype = ctypes.c_int32
        function.argtypes = [_functions.VelmarRenderer, *arguments]
        function.errcheck = check
    return loaded
