"""Faces as the library takes them: records of 32-bit words with the kind, vertices, texture coordinates and the
material."""
from __future__ import annotations

import array
import ctypes
import operator
from dataclasses import dataclass
from typing import Any, Tuple

from ._arrays import Block, block_of, block_of_words, checked_rows, is_numpy, rows_of, view_of
from ._values import UINT32_MAX, whole

#: The number of corners by the number of words of a record.
CORNERS = {8: 3, 10: 4}


@dataclass
class Faces:
    """Records, and the greatest number of a material in them; -1 if there are none."""

    block: Block
    material: int = -1


def faces_of(faces: Any, texture_indices: Any, materials: Any, one_pair_a_vertex: bool) -> Faces:
    view = view_of(faces)
    if view is not None and view.ndim == 2 and view.shape is not None and view.shape[1] in CORNERS:
        if texture_indices is not None or materials is not None:
            raise ValueError("face records contain their texture indices and materials")
        return _records(faces, view.shape[1])
    if texture_indices is None and one_pair_a_vertex:
        texture_indices = faces
    if is_numpy(faces):
        return _packed_by_numpy(faces, texture_indices, materials)
    return _packed(faces, texture_indices, materials)


def _records(faces: Any, words: int) -> Faces:
    block = block_of("face records", faces, ctypes.c_uint32, words)
    if block.rows == 0:
        return Faces(block)
    corners = CORNERS[words]
    minimum, maximum = block.column_limits(words, 0, 1)
    if corners == 3 and maximum != 0:
        raise ValueError("face records of 8 words are triangles, and their first word must be 0")
    if corners == 4 and minimum == 0:
        raise ValueError("face records of 10 words are quads, and their first word must not be 0")
    return Faces(block, block.column_limits(words, words - 1, words)[1])


def _packed_by_numpy(faces: Any, texture_indices: Any, materials: Any) -> Faces:
    import numpy

    def indices(what: str, values: Any, shape: Tuple[int, ...]) -> Any:
        result = numpy.asarray(values)
        if result.size and result.dtype.kind not in "iu":
            raise TypeError(f"{what} must be whole numbers, not {result.dtype}")
        if result.shape != shape:
            raise ValueError(f"{what} must have the shape {shape}, not {result.shape}")
        if result.size and (result.min() < 0 or result.max() > UINT32_MAX):
            raise ValueError(f"{what} must be from 0 to {UINT32_MAX}")
        return result

    if faces.ndim != 2 or faces.shape[1] not in (3, 4):
        raise ValueError("faces must be indices of the shape (M, 3) or (M, 4), or records of the shape (M, 8) or "
                         f"(M, 10), not {faces.shape}")
    rows, corners = checked_rows("faces", faces.shape[0]), faces.shape[1]
    words = numpy.zeros((rows, 2 + 2 * corners), numpy.uint32)
    words[:, 0] = corners - 3
    words[:, 1:1 + corners] = indices("faces", faces, (rows, corners))
    if texture_indices is not None:
        words[:, 1 + corners:-1] = indices("texture indices", texture_indices, (rows, corners))
    if materials is not None:
        each = numpy.asarray(materials)
        words[:, -1] = indices("materials", each, () if each.ndim == 0 else (rows,))
    return _records(words, words.shape[1])


def _packed(faces: Any, texture_indices: Any, materials: Any) -> Faces:
    rows = _rows("faces", faces)
    texture_rows = None if texture_indices is None else _rows("texture indices", texture_indices)
    if texture_rows is not None and len(texture_rows) != len(rows):
        raise ValueError(f"texture indices must be as many as the {len(rows)} faces, not {len(texture_rows)}")
    each = None
    if materials is not None and not is_one(materials):
        each = list(materials)
        if len(each) != len(rows):
            raise ValueError(f"materials must be one, or as many as the {len(rows)} faces, not {len(each)}")
    words = array.array("I")
    max_material = -1
    for i, row in enumerate(rows):
        corners = len(row)
        if corners not in (3, 4):
            raise ValueError(f"faces: row {i} has {corners} indices, not 3 or 4")
        texture_row = (0,) * corners if texture_rows is None else texture_rows[i]
        if len(texture_row) != corners:
            raise ValueError(f"texture indices: row {i} has {len(texture_row)} indices, not {corners}")
        material = 0 if materials is None else _index("materials", materials if each is None else each[i])
        row = tuple(_index("faces", index) for index in row)
        texture_row = tuple(_index("texture indices", index) for index in texture_row)
        words.extend((corners - 3, *row, *texture_row, material))
        max_material = max(max_material, material)
    block = block_of_words(ctypes.c_uint32, words, checked_rows("faces", len(rows)))
    return Faces(block, max_material)


def _rows(what: str, value: Any) -> Any:
    return value.tolist() if isinstance(value, memoryview) else rows_of(what, value)


def is_one(value: Any) -> bool:
    try:
        operator.index(value)
    except TypeError:
        return False
    return True


def _index(what: str, value: Any) -> int:
    return whole(what, value, 0, UINT32_MAX)
