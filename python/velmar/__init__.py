"""Describes scenes to a renderer and writes them, by the library VelmarAPI.

    import velmar

    with velmar.Scene() as scene:
        mesh = scene.add(velmar.Mesh("Triangle", vertices, faces))
        red = scene.add(velmar.Material("Red", (0.8, 0.1, 0.1)))
        scene.add(velmar.Model("Triangle", mesh, [red]))
        scene.write("triangle.xml")

The library is loaded at its first use. `velmar.library()` returns its functions, declared for ctypes.
"""
from ._bases import TonemappingKind
from ._functions import VERSION as __version__
from ._library import library
from .errors import ClosedError, LibraryError, OwnershipError, RendererError, VelmarError, WriteError
from .mesh import Mesh
from .nodes import Background, Camera, Material, Model, RenderSettings, Tonemapping
from .renderer import Renderer
from .scene import Scene

__all__ = ["Background", "Camera", "ClosedError", "LibraryError", "Material", "Mesh", "Model", "OwnershipError",
           "RenderSettings", "Renderer", "RendererError", "Scene", "Tonemapping", "TonemappingKind", "VelmarError",
           "WriteError", "__version__", "library"]
