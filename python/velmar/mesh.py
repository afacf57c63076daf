"""Meshes."""
from __future__ import annotations

import ctypes
import os
import sys
from typing import Any, Iterable, Optional

from ._arrays import block_of
from ._bases import MeshBase
from ._faces import faces_of
from ._library import library
from ._objects import assign
from ._values import Path, path, text
from .errors import WriteError


class Mesh(MeshBase):
    """Vertices and faces under a name.

    Arrays (numpy's, or anything else with the buffer protocol) of the right type are passed to the library without a
    conversion; it keeps a copy of its own. Others raise TypeError or ValueError. Plain sequences of rows are converted.

    vertices             (N, 3) of float32: x, y, z in metres.
    faces                (M, 3) or (M, 4) of whole numbers: the vertices of triangles or quads, counted from 0. Or
                         records of uint32, which are passed unchanged: (M, 8) of triangles, which are 0, three
                         vertices, three texture coordinates, the material; or (M, 10) of quads, which are 1, four
                         vertices, four texture coordinates, the material.
    texture_coordinates  (K, 2) of float32: u, v.
    texture_indices      like the indices of `faces`, but into the texture coordinates. Without them the indices of
                         `faces` serve, if the mesh has texture coordinates.
    materials            a number for all faces, or one for each.
    material_names       the names of the materials, in the order of their numbers.
    """

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
            raise ValueError("texture_indices and materials need faces")

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
        """Appends faces. Their indices may refer to vertices that are added later; `build` checks them."""
        checked = faces_of(faces, texture_indices, materials, self._num_sets > 0)
        self._call("VelmarMesh_AddFaces", checked.block.rows, checked.block.pointer)
        self._num_faces += checked.block.rows
        self._vertex = max(self._vertex, checked.vertex)
        self._texture = max(self._texture, checked.texture)
        self._material = max(self._material, checked.material)
        self._built = False

    def add_material_name(self, name: str) -> None:
        """Appends the name of a material, unless the mesh has it. The first is that of material 0."""
        self._call("VelmarMesh_AddMaterialUsed", text("name", name))

    def build(self) -> None:
        """Checks and finishes a filled mesh. Writing does so too if anything was added since.

        ValueError: an index of a face is out of range, or the sets of texture coordinates differ in size.
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
        """Writes the mesh as an uncompressed vmmesh file. An existing file is overwritten.

        OSError: the file can't be opened for writing.
        """
        name = path("file", file)
        self._prepare()
        # The library throws where this raises, and Python can't catch that.
        with open(name, "wb"):
            pass
        self._call("VelmarMesh_WriteToFile", text("file", name))

    def write_text(self, file: Path) -> None:
        """Writes the mesh as readable text. An existing file is overwritten.

        ValueError: the name can't be encoded in the system's encoding, on Windows its code page.
        OSError: the file can't be opened for writing, or couldn't be written to its end.
        """
        name = path("file", file)
        self._pointer()
        # This function takes a path in the encoding of the C runtime.
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
        """An upper bound of the size of a file of the mesh, without its names."""
        return 4096 + 12 * self._num_vertices + 8 * self._num_pairs + 36 * self._num_faces
