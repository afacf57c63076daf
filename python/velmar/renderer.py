"""Rendering."""
from __future__ import annotations

from types import TracebackType
from typing import Any, Optional, Type

from . import _functions
from ._library import library
from ._objects import Object, created
from .errors import VelmarError
from .scene import Scene


class Renderer(Object):
    """A render of a scene by the renderer library in the folder "vs2017_64" of the working directory.

    The renderer owns the scene: closing it destroys the scene and its nodes. It is a context manager.

    RendererError: there is no renderer library, or it failed.
    ValueError: the scene has no render settings with a width, a height and a super sample factor.
    """

    _type = _functions.VelmarRenderer
    _retain = ""
    _release = "VelmarKit_Renderer_Delete"

    def __init__(self, scene: Scene) -> None:
        if not isinstance(scene, Scene):
            raise TypeError(f"scene must be a Scene, not {type(scene).__name__}")
        scene._settings_for_renderer("width", "height", "super_sample_factor")
        functions = library()
        context = created(_functions.VelmarContext, "VelmarKit_Context_Create")
        try:
            functions.VelmarKit_Context_Initialize(context, None)
            renderer = created(self._type, "VelmarKit_Renderer_Create", context)
        except VelmarError:
            functions.VelmarKit_Context_Delete(context)
            raise
        try:
            functions.VelmarKit_Renderer_InitializeWithScene(renderer, context, scene._pointer())
        except VelmarError:
            functions.VelmarKit_Renderer_Delete(renderer)
            raise
        super().__init__(renderer)
        scene._owned_by(self)
        self._scene = scene
        self._running = False

    def __enter__(self) -> "Renderer":
        self._pointer()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], value: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    @property
    def scene(self) -> Scene:
        """The scene that is rendered."""
        return self._scene

    def start(self) -> None:
        """Starts the render, which runs on threads of the renderer library."""
        self._call("VelmarKit_Renderer_Start", None)
        self._running = True

    def pause(self) -> None:
        """Pauses the render."""
        self._call("VelmarKit_Renderer_Pause", None)

    def resume(self) -> None:
        """Resumes the render."""
        self._call("VelmarKit_Renderer_Resume", None)

    def stop(self) -> None:
        """Stops the render."""
        self._call("VelmarKit_Renderer_Stop", None)
        self._running = False

    def update_scene(self, *arguments: Any) -> None:
        """Passes changes of the scene to the renderer library. Its documentation describes the arguments, which are
        passed as ctypes does."""
        self._call("VelmarKit_Renderer_UpdateScene", *arguments)

    def _end(self, handle: Any) -> None:
        if self._running:
            self._library.VelmarKit_Renderer_Stop(handle, None)
        super()._end(handle)
