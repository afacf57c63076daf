"""Meshes."""
from __future__ import annotations

import ctypes
import weakref
from typing import Any, Iterable, Optional, Tuple

from . import _functions
from ._arrays import block_of, separated, sets_of, view_at
from ._bases import MeshBase
from ._faces import faces_of
from ._objects import assign, created, read
from ._values import Path, number, path, text


class Mesh(MeshBase):
    """Vertices and faces under a name.

    Arrays (numpy's, or anything else with the buffer protocol) of the right type are passed to the library without a
    conversion; it keeps a copy of its own. Others raise TypeError or ValueError. Plain sequences of rows are converted.

    vertices             (N, 3) of float32: x, y, z in metres.
    faces                (M, 3) or (M, 4) of whole numbers: the vertices of triangles or quads, counted from 0. Or
                         records of uint32, which are passed unchanged: (M, 8) of triangles, which are 0, three
                         vertices, three texture coordinates, the material; or (M, 10) of quads, which are 1, four
                         vertices, four texture coordinates, the material.
    normals              (N, 3) of float32, one for each vertex.
    texture_coordinates  (K, 2) of float32: u, v. Or a list or tuple of such arrays of one size, one for each set.
    texture_indices      like the indices of `faces`, but into the texture coordinates. Without them the indices of
                         `faces` serve, if the mesh has texture coordinates.
    materials            a number for all faces, or one for each.
    material_names       the names of the materials, in the order of their numbers.
    """

    def __init__(self, name: str, vertices: Any = None, faces: Any = None, *, normals: Any = None,
                 texture_coordinates: Any = None, texture_indices: Any = None, materials: Any = None, material_names: Iterable[str] = (),
                 normal_smoothing: Optional[bool] = None, view_dependent_subdivision: Optional[bool] = None,
                 max_num_subdivisions: Optional[int] = None) -> None:
        super().__init__(created(self._type, "VelmarKit_Mesh_Create", text("name", name)))
        self._start(name)
        assign(self, {"normal_smoothing": normal_smoothing, "max_num_subdivisions": max_num_subdivisions,
                      "view_dependent_subdivision": view_dependent_subdivision})
        for material_name in material_names:
            self.add_material_name(material_name)
        if vertices is not None:
            self.add_vertices(vertices)
        if normals is not None:
            self.normals = normals
        if texture_coordinates is not None:
            self.set_texture_coordinates(*sets_of(texture_coordinates))
        if faces is not None:
            self.add_faces(faces, texture_indices, materials)
            self.build()
        elif texture_indices is not None or materials is not None:
            raise ValueError("texture_indices and materials need faces")

    @classmethod
    def load(cls, file: Path, scale: float = 1.0) -> "Mesh":
        """Loads an obj, ply, stl or vmmesh file. The mesh is named after it. `scale` multiplies the positions, except
        those of vmmesh files."""
        return cls._of_library(created(cls._type, "VelmarKit_Mesh_LoadFile", text("file", path("file", file)),
                                       number("scale", scale)))

    @classmethod
    def _of_library(cls, handle: Any) -> "Mesh":
        """A mesh that the library made."""
        mesh = cls._of(handle)
        mesh._start(read(mesh, "VelmarKit_Node_GetName")[0])
        num_materials = ctypes.c_uint32()
        mesh._call("VelmarKit_Mesh_Build", ctypes.byref(num_materials))
        mesh._material = num_materials.value - 1
        mesh._built = True
        return mesh

    def _start(self, name: str) -> None:
        self._name = name
        # The greatest number of a material in any face.
        self._material = -1
        self._built = False
        self._views: "weakref.WeakSet[Any]" = weakref.WeakSet()

    def _counts(self) -> Any:
        counts = _functions.MeshCounts()
        self._call("VelmarKit_Mesh_GetCounts", ctypes.byref(counts))
        return counts

    @property
    def name(self) -> str:
        """The name."""
        return self._name

    @property
    def num_vertices(self) -> int:
        """How many vertices there are."""
        return int(self._counts().vertices)

    @property
    def num_faces(self) -> int:
        """How many faces there are."""
        counts = self._counts()
        return int(counts.triangles + counts.quads)

    @property
    def num_texture_coordinate_sets(self) -> int:
        """How many sets of texture coordinates there are."""
        return int(self._counts().uv_sets)

    @property
    def num_materials(self) -> int:
        """How many materials a model of this mesh needs: 1 + the greatest number in its faces."""
        return max(self._material, 0) + 1

    @property
    def material_names(self) -> Tuple[str, ...]:
        """The names of the materials, in the order of their numbers."""
        return tuple(read(self, "VelmarKit_Mesh_GetMaterialName", i)[0] for i in range(self._counts().materials))

    # ---- views of the mesh's own memory ----
    # Arrays of numpy if it is installed, else memoryviews. They are read-only. While there is one, the mesh can't be
    # changed.

    @property
    def vertices(self) -> Any:
        """The vertices, (N, 3) of float32, without a copy. The mesh can't be changed while the array is alive."""
        return self._view("VelmarKit_Mesh_GetVertices", ctypes.c_float, 3)

    @property
    def normals(self) -> Any:
        """The normals, (N, 3) of float32, as `vertices`; (0, 3) if there are none. An array of one for each vertex, or
        None, may be assigned."""
        return self._view("VelmarKit_Mesh_GetNormals", ctypes.c_float, 3)

    @normals.setter
    def normals(self, value: Any) -> None:
        block = block_of("normals", () if value is None else value, ctypes.c_float, 3)
        if block.rows not in (0, self.num_vertices):
            raise ValueError(f"normals must be as many as the {self.num_vertices} vertices, not {block.rows}")
        self._change("VelmarKit_Mesh_SetNormals", block.rows, block.pointer)

    @property
    def texture_coordinates(self) -> Any:
        """The texture coordinates, (N, 2) of float32, as `vertices`. Entry i of set s is row i * sets + s."""
        return self._view("VelmarKit_Mesh_GetTextureCoordinates", ctypes.c_float, 2)

    @property
    def triangles(self) -> Any:
        """The triangles, (N, 7) of uint32, as `vertices`: three vertices, three texture coordinates, the material."""
        return self._view("VelmarKit_Mesh_GetTriangles", ctypes.c_uint32, 7)

    @property
    def quads(self) -> Any:
        """The quads, (N, 9) of uint32, as `vertices`: four vertices, four texture coordinates, the material."""
        return self._view("VelmarKit_Mesh_GetQuads", ctypes.c_uint32, 9)

    def _view(self, getter: str, kind: Any, columns: int) -> Any:
        pointer, count = ctypes.POINTER(kind)(), ctypes.c_uint64()
        self._call(getter, ctypes.byref(pointer), ctypes.byref(count))
        view, owner = view_at(self, ctypes.cast(pointer, ctypes.c_void_p).value, kind, count.value, columns)
        if owner is not None:
            self._views.add(owner)
        return view

    def _change(self, function: str, *arguments: Any) -> None:
        """Calls a function that may move the mesh's arrays."""
        self._pointer()
        if len(self._views):
            raise BufferError(f"arrays of {self!r} are in use, so it can't be changed; delete them, or copy them")
        self._call(function, *arguments)
        self._built = False

    # ---- filling ----

    def add_vertices(self, vertices: Any) -> None:
        """Appends vertices."""
        block = block_of("vertices", vertices, ctypes.c_float, 3)
        self._change("VelmarKit_Mesh_AddVertices", block.rows, block.pointer)

    def set_texture_coordinates(self, *sets: Any) -> None:
        """Replaces the texture coordinates by sets of one size, each (K, 2) of float32; none removes them."""
        blocks = [block_of("texture coordinates", each, ctypes.c_float, 2) for each in sets]
        sizes = {block.rows for block in blocks}
        if len(sizes) > 1:
            raise ValueError(f"the sets of texture coordinates of {self!r} differ in size: {sorted(sizes)}")
        pointers = (ctypes.POINTER(ctypes.c_float) * len(blocks))()
        for i, block in enumerate(blocks):
            if block.pointer is not None:
                pointers[i] = ctypes.cast(block.pointer, ctypes.POINTER(ctypes.c_float))
        self._change("VelmarKit_Mesh_SetTextureCoordinates", len(blocks), sizes.pop() if sizes else 0, pointers)

    def add_texture_coordinates(self, texture_coordinates: Any) -> None:
        """Adds a set of texture coordinates, of the size of those that there are."""
        count = self.num_texture_coordinate_sets
        present = [] if count == 0 else separated(self.texture_coordinates, count)
        self.set_texture_coordinates(*present, texture_coordinates)

    def add_faces(self, faces: Any, texture_indices: Any = None, materials: Any = None) -> None:
        """Appends faces. Their indices may refer to vertices that are added later; `build` checks them."""
        checked = faces_of(faces, texture_indices, materials, self.num_texture_coordinate_sets > 0)
        self._change("VelmarKit_Mesh_AddFaces", checked.block.rows, checked.block.pointer)
        self._material = max(self._material, checked.material)

    def add_material_name(self, name: str) -> None:
        """Appends the name of a material, unless the mesh has it. The first is that of material 0."""
        self._call("VelmarKit_Mesh_AddMaterialUsed", text("name", name))

    def build(self) -> None:
        """Checks and finishes a filled mesh. Writing does so too if anything was added since.

        MeshError: a face refers to a vertex or texture coordinates that aren't there, or only some vertices have a normal.
        """
        self._call("VelmarKit_Mesh_Build", None)
        self._built = True

    # ---- files ----

    def write(self, file: Path) -> None:
        """Writes the mesh as an uncompressed vmmesh file. After a failure, a file that was there is as before."""
        name = text("file", path("file", file))
        self._prepare()
        self._call("VelmarKit_Mesh_WriteToFile", name)

    def write_text(self, file: Path) -> None:
        """Writes the mesh as readable text. After a failure, a file that was there is as before."""
        name = text("file", path("file", file))
        self._call("VelmarKit_write_mesh_to_file", name)

    def _prepare(self) -> None:
        self._pointer()
        if not self._built:
            self.build()
