"""Rendering."""
from __future__ import annotations

from types import TracebackType
from typing import Any, Optional, Type

from ._library import library
from ._objects import Object
from .errors import OwnershipError, RendererError
from .nodes import RenderSettings
from .scene import Scene


class Renderer(Object):
    """A render of a scene by the renderer library in the folder "vs2017_64" of the working directory.

    The renderer owns the scene: closing it destroys the scene and its nodes. It is a context manager.

    RendererError: there is no renderer library, or it couldn't be set up.
    ValueError: the scene has no render settings with a width, a height and a super sample factor.
    """

    _delete = "VelmarRenderer_Delete"

    def __init__(self, scene: Scene) -> None:
        if not isinstance(scene, Scene):
            raise TypeError(f"scene must be a Scene, not {type(scene).__name__}")
        handle = scene._pointer()
        if scene._owners:
            raise OwnershipError("the scene has a renderer already")
        settings = next((node for node in scene.nodes if isinstance(node, RenderSettings)), None)
        for name in ("width", "height", "super_sample_factor"):
            if settings is None or (getattr(settings, name) or 0) < 1:
                raise ValueError(f"the scene needs render settings with a {name}")
        scene._check()
        functions = library()
        context = functions.VelmarContext_Create()
        if functions.VelmarContext_Initialize(context) != 0:
            functions.VelmarContext_Delete(context)
            raise RendererError("the renderer library couldn't be set up; the reason is on the standard error stream")
        super().__init__(functions.VelmarRenderer_Create(context))
        functions.VelmarRenderer_InitializeWithScene(self._handle, context, handle)
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
        self._call("VelmarRenderer_Start")
        self._running = True

    def pause(self) -> None:
        """Pauses the render."""
        self._call("VelmarRenderer_Pause")

    def resume(self) -> None:
        """Resumes the render."""
        self._call("VelmarRenderer_Resume")

    def stop(self) -> None:
        """Stops the render."""
        self._call("VelmarRenderer_Stop")
        self._running = False

    def update_scene(self, *arguments: Any) -> int:
        """Passes changes of the scene to the renderer library. Its documentation describes the arguments, which are
        passed as ctypes does."""
        return int(self._call("VelmarRenderer_UpdateScene", *arguments))

    def _end(self, handle: Any) -> None:
        if self._running:
            self._library.VelmarRenderer_Stop(handle)
        super()._end(handle)
