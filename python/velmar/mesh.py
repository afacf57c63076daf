"""Meshes."""
from __future__ import annotations

import ctypes
import os
import sys
from typing import Any, Iterable, Optional

from ._arrays import block_of
from ._faces import faces_of
from ._library import library
from ._objects import Object, Setting, assign
from ._values import UINT32_MAX, Path, flag, path, text, whole
from .errors import WriteError


def _subdivisions(what: str, value: Any) -> int:
    return whole(what, value, 0, UINT32_MAX)


class Mesh(Object):
    """Vertices and faces under a name.

    Arrays (numpy's, or anything else with the buffer protocol) of the right kind are handed to the library where they
    lie, which keeps a copy of its own; others are refused by a TypeError or ValueError. Plain sequences of rows are
    converted.

    vertices             (N, 3) of float32: x, y, z in metres.
    faces                (M, 3) or (M, 4) of whole numbers: the vertices of triangles or quads, counted from 0. Or
                         records of uint32, which are handed over as they lie: (M, 8) of triangles, which are 0, three
                         vertices, three texture coordinates, the material; or (M, 10) of quads, which are 1, four
                         vertices, four texture coordinates, the material.
    texture_coordinates  (K, 2) of float32: u, v.
    texture_indices      as the indices of `faces`, into the texture coordinates. Without them each vertex has the
                         texture coordinates of its number, if the mesh has any.
    materials            a number for all faces, or one for each.
    material_names       the names of the materials, in the order of their numbers.
    """

    _delete = "VelmarMesh_Delete"

    normal_smoothing = Setting("VelmarMesh_SetNormalSmoothing", flag, False,
                               "Whether the renderer shades with smoothed normals.")
    view_dependent_subdivision = Setting("VelmarMesh_ViewDependentSubdivision", flag, False,
                                         "Whether the renderer subdivides by the size on the image.")
    max_num_subdivisions = Setting("VelmarMesh_MaxNumSubdivisions", _subdivisions, 0,
                                   "How often the renderer may subdivide.")

    def __init__(self, name: str, vertices: Any = None, faces: Any = None, *, texture_coordinates: Any = None,
                 texture_indices: Any = None, materials: Any = None, material_names: Iterable[str] = (),
                 normal_smoothing: Optional[bool] = None, view_dependent_subdivision: Optional[bool] = None,
                 max_num_subdivisions: Optional[int] = None) -> None:
        super().__init__(library().VelmarMesh_Create(text("name", name)))
        self._name = name
        self._num_vertices = self._num_faces = self._num_pairs = self._num_sets = 0
        # The greatest index of any face.
        self._vertex = self._texture = self._material = -1
        self._built = False
        assign(self, {"normal_smoothing": normal_smoothing, "max_num_subdivisions": max_num_subdivisions,
                      "view_dependent_subdivision": view_dependent_subdivision})
        for material_name in material_names:
            self.add_material_name(material_name)
        if vertices is not None:
            self.add_vertices(vertices)
        if texture_coordinates is not None:
            self.add_texture_coordinates(texture_coordinates)
        if faces is not None:
            self.add_faces(faces, texture_indices, materials)
            self.build()
        elif texture_indices is not None or materials is not None:
            raise ValueError("texture_indices and materials go with faces")

    @property
    def name(self) -> str:
        """The name."""
        return self._name

    @property
    def num_vertices(self) -> int:
        """How many vertices there are."""
        return self._num_vertices

    @property
    def num_faces(self) -> int:
        """How many faces there are."""
        return self._num_faces

    @property
    def num_materials(self) -> int:
        """How many materials a model of this mesh needs: 1 + the greatest number in its faces."""
        return max(self._material, 0) + 1

    def add_vertices(self, vertices: Any) -> None:
        """Appends vertices."""
        block = block_of("vertices", vertices, ctypes.c_float, 3)
        self._call("VelmarMesh_AddVertices", block.rows, block.pointer)
        self._num_vertices += block.rows
        self._built = False

    def add_texture_coordinates(self, texture_coordinates: Any) -> None:
        """Appends texture coordinates. Each call is a set of its own: a mesh of several has as many in each."""
        block = block_of("texture coordinates", texture_coordinates, ctypes.c_float, 2)
        self._call("VelmarMesh_AddTextureCoordinates", block.rows, block.pointer)
        self._num_pairs += block.rows
        self._num_sets += 1
        self._built = False

    def add_faces(self, faces: Any, texture_indices: Any = None, materials: Any = None) -> None:
        """Appends faces. Their indices may lead to what is added later: `build` looks at them."""
        checked = faces_of(faces, texture_indices, materials, self._num_sets > 0)
        self._call("VelmarMesh_AddFaces", checked.block.rows, checked.block.pointer)
        self._num_faces += checked.block.rows
        self._vertex = max(self._vertex, checked.vertex)
        self._texture = max(self._texture, checked.texture)
        self._material = max(self._material, checked.material)
        self._built = False

    def add_material_name(self, name: str) -> None:
        """Appends the name of a material, unless it is there. The first is that of the material number 0."""
        self._call("VelmarMesh_AddMaterialUsed", text("name", name))

    def build(self) -> None:
        """Ends the filling. Writing does so too, for what was added since.

        ValueError: an index of a face leads nowhere, or the sets of texture coordinates differ in size.
        """
        if self._vertex >= self._num_vertices:
            raise ValueError(f"a face of {self!r} has the vertex {self._vertex}, and there are {self._num_vertices}")
        if self._num_sets:
            pairs, rest = divmod(self._num_pairs, self._num_sets)
            if rest:
                raise ValueError(f"the {self._num_sets} sets of texture coordinates of {self!r} differ in size")
            if self._texture >= pairs:
                raise ValueError(f"a face of {self!r} has the texture coordinates {self._texture}, "
                                 f"and there are {pairs}")
        self._call("VelmarMesh_Build")
        self._built = True

    def write(self, file: Path) -> None:
        """Writes the mesh as an uncompressed vmmesh file, replacing the file.

        OSError: the file can't be opened for writing.
        """
        name = path("file", file)
        self._prepare()
        # The library throws where this raises, and nothing in Python can catch that.
        with open(name, "wb"):
            pass
        self._call("VelmarMesh_WriteToFile", text("file", name))

    def write_text(self, file: Path) -> None:
        """Writes the mesh as text to look at, replacing the file.

        ValueError: the name isn't one in the system's encoding; on Windows that is its code page.
        OSError: the file can't be opened for writing, or couldn't be written to its end.
        """
        name = path("file", file)
        self._pointer()
        # This one function takes a path as the C runtime does.
        encoded = name.encode("mbcs") if sys.platform == "win32" else os.fsencode(name)
        with open(name, "wb"):
            pass
        self._call("velmar_write_mesh_to_file", encoded)
        lines, rest = 0, os.path.getsize(name)
        with open(name, "rb") as written:
            while rest > 0:
                chunk = written.read(min(rest, 1 << 20))
                rest -= len(chunk) or rest
                lines += chunk.count(b"\n")
        if lines < 5 + self._name.count("\n") + self._num_vertices + self._num_pairs + 2 * self._num_faces:
            raise WriteError(f"{name} couldn't be written to its end")

    def _prepare(self) -> None:
        self._pointer()
        if not self._built:
            self.build()

    def _file_size(self) -> int:
        """What a file of the mesh may take, but for its names."""
        return 4096 + 12 * self._num_vertices + 8 * self._num_pairs + 36 * self._num_faces
