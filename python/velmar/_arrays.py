"""Arrays of numbers for the library: those of the right type are passed in place, others are refused. Plain sequences
are converted."""
from __future__ import annotations

import array
import ctypes
import sys
from typing import Any, List, Optional, Sequence, Tuple

from ._values import INT32_MAX

KINDS = {ctypes.c_float: ("float32", "f", "f"), ctypes.c_uint32: ("uint32", "IL", "I")}


class Block:
    """Numbers in rows, in memory that lives as long as this object."""

    def __init__(self, kind: Any, pointer: Any, rows: int, flat: Any) -> None:
        self.kind = kind
        self.pointer = pointer
        self.rows = rows
        #: All numbers one after the other.
        self.flat = flat

    def column_limits(self, columns: int, first: int, last: int) -> Tuple[int, int]:
        """The minimum and maximum of the columns from `first` to before `last`; there must be rows."""
        numpy = sys.modules.get("numpy")
        if numpy is not None:
            part = numpy.frombuffer(self.flat, numpy.uint32).reshape(-1, columns)[:, first:last]
            return int(part.min()), int(part.max())
        parts: List[List[int]] = [self.flat[column::columns].tolist() for column in range(first, last)]
        return min(min(part) for part in parts), max(max(part) for part in parts)


def view_of(value: Any) -> Optional[memoryview]:
    """The memory of an array, or None if the value isn't one."""
    if isinstance(value, (bytes, bytearray)):
        return None
    try:
        return memoryview(value)
    except (TypeError, ValueError, BufferError):
        return None


def kind_of(value: Any, view: memoryview) -> str:
    return str(value.dtype) if hasattr(value, "dtype") else f"the format '{view.format}'"


def is_of(view: memoryview, kind: Any) -> bool:
    form = view.format or ""
    if form[:1] in ("<" if sys.byteorder == "little" else ">", "@", "="):
        form = form[1:]
    return len(form) == 1 and form in KINDS[kind][1] and view.itemsize == ctypes.sizeof(kind)


def _in_place(value: Any, view: memoryview, kind: Any) -> Any:
    """The array's own memory for ctypes."""
    count = view.nbytes // ctypes.sizeof(kind)
    if count == 0:
        return None
    block = kind * count
    if not view.readonly:
        found = block.from_buffer(view)
    elif hasattr(value, "__array_interface__"):
        found = block.from_address(value.__array_interface__["data"][0])
    else:
        return block.from_buffer_copy(view)
    return found if ctypes.addressof(found) % ctypes.sizeof(kind) == 0 else block.from_buffer_copy(view)


def block_of(what: str, value: Any, kind: Any, columns: int) -> Block:
    """`value` as rows of `columns` numbers, in its own memory if it is an array."""
    view = view_of(value)
    if view is None:
        return _converted(what, value, kind, columns)
    name = KINDS[kind][0]
    if not is_of(view, kind):
        raise TypeError(f"{what} must be {name}, not {kind_of(value, view)}")
    if view.ndim != 2 or view.shape is None or view.shape[1] != columns:
        raise ValueError(f"{what} must have the shape (N, {columns}), not {view.shape}")
    if not view.c_contiguous:
        raise ValueError(f"{what} must be C-contiguous; numpy.ascontiguousarray makes such a copy")
    rows = checked_rows(what, view.shape[0])
    pointer = _in_place(value, view, kind)
    flat = memoryview(b"") if rows == 0 else view.cast("B").cast(KINDS[kind][2])
    return Block(kind, pointer, rows, flat)


def checked_rows(what: str, rows: int) -> int:
    if rows > INT32_MAX:
        raise ValueError(f"{what} must be {INT32_MAX} rows at most, not {rows}")
    return rows


def _converted(what: str, value: Any, kind: Any, columns: int) -> Block:
    numbers = array.array(KINDS[kind][2])
    rows = 0
    for row in rows_of(what, value):
        if len(row) != columns:
            raise ValueError(f"{what}: row {rows} has {len(row)} numbers, not {columns}")
        try:
            numbers.extend(row)
        except TypeError:
            raise TypeError(f"{what}: row {rows} contains what isn't a number") from None
        except OverflowError:
            raise ValueError(f"{what}: row {rows} contains a number out of range") from None
        rows += 1
    return block_of_words(kind, numbers, checked_rows(what, rows))


def block_of_words(kind: Any, numbers: "array.array[Any]", rows: int) -> Block:
    flat = memoryview(numbers)
    return Block(kind, _in_place(numbers, flat, kind), rows, flat)


def rows_of(what: str, value: Any) -> List[Tuple[Any, ...]]:
    if isinstance(value, (str, bytes, bytearray)):
        raise TypeError(f"{what} must be rows of numbers, not {type(value).__name__}")
    try:
        return [tuple(row) for row in value]
    except TypeError:
        raise TypeError(f"{what} must be rows of numbers") from None


def is_numpy(value: Any) -> bool:
    numpy = sys.modules.get("numpy")
    return numpy is not None and isinstance(value, numpy.ndarray)


def sets_of(value: Any) -> Sequence[Any]:
    """The sets of texture coordinates that a value means: it is one, or a list or tuple of arrays."""
    if isinstance(value, (list, tuple)) and value and all(view_of(each) is not None for each in value) \
            and all(getattr(view_of(each), "ndim", 0) == 2 for each in value):
        return value
    return [value]


def separated(pairs: Any, count: int) -> List[Any]:
    """Copies of the `count` sets of which the pairs are interleaved."""
    words = memoryview(pairs).cast("B").cast("Q") if len(pairs) else memoryview(b"").cast("Q")
    return [memoryview(words[first::count].tobytes()).cast("f", (len(pairs) // count, 2)) if len(pairs) else []
            for first in range(count)]


class _Retained:
    """Keeps a node of the library alive."""

    def __init__(self, node: Any) -> None:
        self.handle = node._pointer()
        self.release = node._library.VelmarKit_Node_Release
        node._call("VelmarKit_Node_Retain")

    def __del__(self) -> None:
        if hasattr(self, "handle"):
            self.release(self.handle)


def view_at(node: Any, address: Optional[int], kind: Any, rows: int, columns: int) -> Tuple[Any, Any]:
    """Rows of numbers in the memory of a node, as an array of numpy or a memoryview that can't be written; and the object
    that lives as long as any part of it."""
    numpy = _numpy()
    name, _, code = KINDS[kind]
    if rows == 0 or address is None:
        empty = memoryview(b"").cast(code) if numpy is None else numpy.empty((0, columns), name)
        return empty, None
    block = (kind * (rows * columns)).from_address(address)
    # An attribute: the node lives as long as the block.
    block.retained = retained = _Retained(node)
    if numpy is None:
        return memoryview(block).cast("B").cast(code, (rows, columns)).toreadonly(), retained
    array_of_block = numpy.frombuffer(block, name).reshape(rows, columns)
    array_of_block.flags.writeable = False
    return array_of_block, retained


def _numpy() -> Any:
    try:
        import numpy
    except ImportError:
        return None
    return numpy
