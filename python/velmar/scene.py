"""Scenes."""
from __future__ import annotations

import ctypes
from types import TracebackType
from typing import Any, Callable, Dict, List, Optional, Tuple, Type, TypeVar

from . import _functions
from ._objects import Object, created
from ._values import Path, number, path, text
from .errors import OwnershipError
from .mesh import Mesh
from .nodes import Background, Camera, Material, Model, RenderSettings, Tonemapping

Node = TypeVar("Node", Background, Camera, Material, Mesh, Model, RenderSettings, Tonemapping)


class Scene(Object):
    """A scene, which owns the nodes that are added to it. It is a context manager:

        with velmar.Scene() as scene:
            camera = scene.add(velmar.Camera(position=(0, -8, 2)))
            scene.write("scene.xml")

    Nodes may be changed until the scene is closed, which destroys them.
    """

    _type = _functions.VelmarScene

    def __init__(self) -> None:
        super().__init__(created(self._type, "VelmarKit_Scene_Create"))
        self._nodes: Dict[int, Object] = {}

    def __enter__(self) -> "Scene":
        self._pointer()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], value: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def close(self) -> None:
        """Destroys the scene and its nodes, unless a renderer owns it: then closing that does. Closing twice is
        harmless."""
        if not self._owners:
            super().close()
            for node in self._nodes.values():
                if node.closed:
                    node._drop()
            self._nodes.clear()

    @classmethod
    def read(cls, document: Path) -> "Scene":
        """Reads a document, and the mesh files that it names. `nodes` has its nodes, with their attributes; those that
        have no class here, as spheres, are in the scene all the same.

        DocumentError: something in the document is wrong, with line and column.
        FileError, MeshError: a file can't be read.
        """
        scene = cls._of(created(cls._type, "VelmarKit_Scene_Read", text("document", path("document", document))))
        scene._nodes = {}
        scene._take_nodes()
        return scene

    def _take_nodes(self) -> None:
        """Makes the objects of nodes that came with the scene."""
        count = ctypes.c_uint64()
        self._call("VelmarKit_Scene_GetNodeCount", ctypes.byref(count))
        handles: List[Tuple[int, int]] = []
        for i in range(count.value):
            address, code = ctypes.c_void_p(), ctypes.c_int32()
            self._call("VelmarKit_Scene_GetNode", i, ctypes.byref(address), ctypes.byref(code))
            handles.append((address.value or 0, code.value))
        known: Dict[int, Object] = {}
        makers: Dict[int, Callable[[Any], Object]] = {
            1: lambda handle: Mesh._of_library(_functions.VelmarMesh(handle)),
            3: lambda handle: Material._of_document(_functions.VelmarMaterialNode(handle)),
            4: lambda handle: Background._of(_functions.VelmarBackground(handle)),
            5: lambda handle: Camera._of_document(_functions.VelmarCamera(handle)),
            6: lambda handle: RenderSettings._of_document(_functions.VelmarRenderSettings(handle)),
            7: lambda handle: Tonemapping._of(_functions.VelmarTonemapping(handle)),
        }
        for handle, kind in handles:
            if kind in makers:
                known[handle] = makers[kind](handle)
        # Models come last: they refer to others.
        for handle, kind in handles:
            if kind == 2:
                known[handle] = Model._of_document(_functions.VelmarModel(handle), known)
        for handle, _ in handles:
            if handle in known:
                known[handle]._owned_by(self)
                self._nodes[id(known[handle])] = known[handle]

    @property
    def nodes(self) -> Tuple[Object, ...]:
        """The nodes that were added, in their order, without those of `add_ground_plane` and the like."""
        return tuple(self._nodes.values())

    def add(self, node: Node) -> Node:
        """Appends a node, which the scene owns from then on, and returns it.

        OwnershipError: a scene has the node already.
        """
        if not isinstance(node, Object) or not node._add:
            raise TypeError(f"a {type(node).__name__} isn't a node of a scene")
        self._pointer()
        handle = node._pointer()
        if any(isinstance(owner(), Scene) for owner in node._owners):
            raise OwnershipError(f"{node!r} was added to a scene already")
        self._call(node._add, handle)
        node._owned_by(self)
        self._nodes[id(node)] = node
        return node

    def load_model(self, file: Path, scale: float = 1.0) -> Model:
        """Loads a mesh file (obj, ply, stl or vmmesh) and adds its mesh, the materials of its faces, with the colours of
        an OBJ file's MTL files, and a model of them, which is returned. After a failure the scene is as before.

        `scale` multiplies the positions, except those of vmmesh files.
        """
        handle = Model._type()
        self._call("VelmarKit_Scene_LoadModel", text("file", path("file", file)), number("scale", scale),
                   ctypes.byref(handle))
        model = Model._of_library(handle, self)
        for node in (model._mesh, *model._materials, model):
            self._nodes[id(node)] = node
        return model

    def remove(self, node: Object) -> None:
        """Takes a node out of the scene. Models that use it keep it."""
        self._call("VelmarKit_Scene_RemoveNode", node._pointer())
        self._nodes.pop(id(node))
        node._taken_from(self)

    def add_ground_plane(self, z: float = 0.0, half_size: float = 50.0) -> None:
        """Adds a light grey square of ground: a mesh, a material and a model."""
        self._call("VelmarKit_Scene_AddGroundPlane", number("z", z), number("half_size", half_size))

    def add_default_material(self) -> None:
        """Adds a light grey material named "Default"."""
        self._call("VelmarKit_create_default_material")

    def add_sun_sky(self) -> None:
        """Adds a background of sun and sky, with the sun in the direction (1, 1, 1)."""
        self._call("VelmarKit_create_sunsky")

    def write(self, document: Path) -> None:
        """Writes the scene as an XML document, and its meshes as binary files in a folder next to it. The document refers
        to them relative to itself and can be moved with them. After a failure, a document that was there is as before.

        MeshError: a face of a mesh refers to a vertex or texture coordinates that aren't there.
        ValueError: a model uses a node that isn't in the scene.
        FileError: the document or a mesh can't be written.
        """
        name = text("document", path("document", document))
        self._pointer()
        self._check()
        self._call("VelmarKit_Scene_WriteToXML", name)

    def _settings_for_renderer(self, *limits: str) -> RenderSettings:
        """The render settings, with each of `limits`, of a scene that a renderer can take. Raises if it can't."""
        self._pointer()
        if self._owners:
            raise OwnershipError("the scene has a renderer already")
        settings = next((node for node in self.nodes if isinstance(node, RenderSettings)), None)
        for name in limits:
            if settings is None or (getattr(settings, name) or 0) < 1:
                raise ValueError(f"the scene needs render settings with a {name}")
        self._check()
        assert settings is not None
        return settings

    def _check(self) -> None:
        for node in self._nodes.values():
            if isinstance(node, Mesh):
                node._prepare()
            elif isinstance(node, Model):
                node._check(self._nodes)


__all__ = ["Scene"]
