"""Describes scenes to a renderer and writes them, by the library VelmarKit.

    import velmar

    with velmar.Scene() as scene:
        mesh = scene.add(velmar.Mesh("Triangle", vertices, faces))
        red = scene.add(velmar.Material("Red", (0.8, 0.1, 0.1)))
        scene.add(velmar.Model("Triangle", mesh, [red]))
        scene.write("triangle.xml")

`velmar.render(scene)` gives a picture of a scene as arrays of numpy.

The library is loaded at its first use. A failure of it is an exception of a class derived from `velmar.VelmarError`.
`velmar.library()` returns the functions of velmarkit.h, declared for ctypes: each raises these exceptions too.
"""
from ._bases import TonemappingKind
from ._functions import VERSION as __version__
from ._library import library, set_line_handler
from .errors import (BadArgumentError, ClosedError, DocumentError, FileError, InternalError, LibraryError, MeshError,
                     OutOfMemoryError, OwnershipError, RendererError, VelmarError)
from .mesh import Mesh
from .nodes import Background, Camera, Material, Model, RenderSettings, Tonemapping
from .preview import Picture, render
from .renderer import Renderer
from .scene import Scene

__all__ = ["Background", "BadArgumentError", "Camera", "ClosedError", "DocumentError", "FileError", "InternalError",
           "LibraryError", "Material", "Mesh", "MeshError", "Model", "OutOfMemoryError", "OwnershipError", "Picture",
           "RenderSettings", "Renderer", "RendererError", "Scene", "Tonemapping", "TonemappingKind", "VelmarError",
           "__version__", "library", "render", "set_line_handler"]
