"""Scenes."""
from __future__ import annotations

import errno
import os
import shutil
import tempfile
from types import TracebackType
from typing import Any, Dict, Iterator, Optional, Tuple, Type, TypeVar

from ._library import library
from ._objects import Object
from ._values import Path, number, path, text
from .errors import OwnershipError, WriteError
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

    _delete = "VelmarScene_Delete"

    def __init__(self) -> None:
        super().__init__(library().VelmarScene_Create())
        self._nodes: Dict[int, Object] = {}
        # Created by the library, without an object here.
        self._has_other_meshes = False

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
            self._nodes.clear()

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

    def add_ground_plane(self, z: float = 0.0, half_size: float = 50.0) -> None:
        """Adds a light grey square of ground: a mesh, a material and a model."""
        self._call("VelmarScene_AddGroundPlane", number("z", z), number("half_size", half_size))
        self._has_other_meshes = True

    def add_default_material(self) -> None:
        """Adds a light grey material named "Default"."""
        self._call("velmar_create_default_material")

    def add_sun_sky(self) -> None:
        """Adds a background of sun and sky, with the sun in the direction (1, 1, 1)."""
        self._call("velmar_create_sunsky")

    def write(self, document: Path) -> None:
        """Writes the scene as an XML document, and its meshes as binary files next to it. An existing document is
        overwritten.

        With a path without a directory, the document refers to its meshes relative to itself and can be moved with
        them; otherwise it refers to them by absolute paths.

        ValueError: an index of a face is out of range, or a model uses a node that isn't in the scene.
        OSError: the document or the folder of the meshes can't be written, or there is too little space on the disk.
        Errors that can't be foreseen, such as a disk that fills up meanwhile, end the process: the library throws, and
        Python can't catch that.
        """
        name = path("document", document)
        self._pointer()
        self._check()
        if self._meshes_are_written():
            self._check_folder(name)
        # Emptied first, so that what is there afterwards was written now.
        with open(name, "wb"):
            pass
        self._call("VelmarScene_WriteToXML", text("document", name))
        # The library doesn't report a document that it couldn't write.
        size = os.path.getsize(name)
        with open(name, "rb") as written:
            written.seek(max(size - 16, 0))
            # A device may have any number of bytes to read, and none of them ours.
            if not written.read(min(size, 16)).rstrip().endswith(b"</scene>"):
                raise WriteError(f"{name} couldn't be written to its end")

    def _meshes(self) -> Iterator[Mesh]:
        return (node for node in self._nodes.values() if isinstance(node, Mesh))

    def _meshes_are_written(self) -> bool:
        return self._has_other_meshes or any(True for _ in self._meshes())

    def _check(self) -> None:
        for node in self._nodes.values():
            if isinstance(node, Mesh):
                node._prepare()
            elif isinstance(node, Model):
                node._check(self._nodes)

    def _check_folder(self, name: str) -> None:
        """Creates the folder of the meshes. Raises if the library would throw because it can't write there."""
        # The library takes for an extension what begins at the last dot, wherever that is.
        folder = (name[:name.rindex(".")] if "." in name else name) + "_meshes"
        if not os.path.isdir(folder):
            os.mkdir(folder)
        with tempfile.TemporaryFile(dir=folder):
            pass
        needed = sum(mesh._file_size() for mesh in self._meshes())
        if shutil.disk_usage(folder).free < needed:
            raise OSError(errno.ENOSPC, f"the meshes may need {needed} bytes", folder)


__all__ = ["Scene"]
