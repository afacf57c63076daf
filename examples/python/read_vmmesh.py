#!/usr/bin/env python3
"""Reads a vmmesh file without VelmarAPI and prints its content like `velmar info`.

Usage: read_vmmesh.py FILE.vmmesh

It is based on docs/vmmesh-format.md only. It uses Python's standard library, for compressed files the shared library of zstd,
and for the checksum that of xxHash. It needs a little-endian machine.
"""
import array
import ctypes
import ctypes.util
import struct
import sys

MAGIC = 0x0053436F


class Bytes:
    """Reads little-endian values from a buffer."""

    def __init__(self, data):
        self.rest = memoryview(data)

    def take(self, size):
        if size > len(self.rest):
            raise ValueError("the file ends early")
        taken, self.rest = self.rest[:size], self.rest[size:]
        return taken

    def u32(self):
        return struct.unpack("<I", self.take(4))[0]

    def u64(self):
        return struct.unpack("<Q", self.take(8))[0]

    def text(self):
        return bytes(self.take(self.u32())).decode(errors="surrogateescape")

    def records(self, kind, length):
        """A block: a count and that many records of `length` floats ("f") or unsigned words ("I")."""
        return array.array(kind, bytes(self.take(self.u32() * length * 4)))


def decompress(frame):
    zstd = ctypes.CDLL(ctypes.util.find_library("zstd") or "libzstd.so.1")
    zstd.ZSTD_getFrameContentSize.restype = ctypes.c_uint64
    zstd.ZSTD_getFrameContentSize.argtypes = [ctypes.c_char_p, ctypes.c_size_t]
    zstd.ZSTD_decompress.restype = ctypes.c_size_t
    zstd.ZSTD_decompress.argtypes = [ctypes.c_void_p, ctypes.c_size_t, ctypes.c_char_p, ctypes.c_size_t]
    size = zstd.ZSTD_getFrameContentSize(frame, len(frame))
    content = ctypes.create_string_buffer(size)
    if zstd.ZSTD_decompress(content, size, frame, len(frame)) != size:
        raise ValueError("the frame is damaged")
    return content.raw


def undo_differences(faces, corners):
    """First indices are relative to those of the previous face, the others to the first; vertices, then UVs."""
    words = 2 * corners + 1
    for base in (0, corners):
        previous = 0
        for first in range(base, len(faces), words):
            previous = faces[first] = (faces[first] + previous) % 2**32
            for other in range(first + 1, first + corners):
                faces[other] = (faces[other] + previous) % 2**32


def read(path):
    with open(path, "rb") as file:
        data = Bytes(file.read())
    if data.u32() != MAGIC:
        raise ValueError("not a vmmesh file")
    mesh = {"version": data.u32(), "compressed": False, "uv_layout": 0, "quads": array.array("I")}
    if not 1 <= mesh["version"] <= 4:
        raise ValueError(f"version {mesh['version']} is unknown")
    if mesh["version"] == 4:
        mesh["compressed"] = data.u32() != 0
        data.u32()  # reserved
    mesh["uv_sets"] = data.u32()
    mesh["materials"] = [data.text() for _ in range(data.u32())]
    for _ in range(data.u32()):  # extra entries
        data.text(), data.u32()

    if mesh["compressed"]:
        data = Bytes(decompress(bytes(data.take(data.u64()))))
    mesh["vertices"] = data.records("f", 3)
    mesh["normals"] = data.records("f", 3)
    if mesh["version"] >= 3:
        mesh["uv_layout"] = data.u32()
    mesh["uv_pairs"] = data.records("f", 2)
    mesh["triangles"] = data.records("I", 7)
    if mesh["version"] >= 2:
        mesh["quads"] = data.records("I", 9)
    if mesh["compressed"]:
        undo_differences(mesh["triangles"], 3)
        undo_differences(mesh["quads"], 4)
    return mesh


def checksum(mesh):
    xxhash = ctypes.CDLL(ctypes.util.find_library("xxhash") or "libxxhash.so.0")
    xxhash.XXH64.restype = ctypes.c_uint64
    xxhash.XXH64.argtypes = [ctypes.c_char_p, ctypes.c_size_t, ctypes.c_uint64]
    content = struct.pack("<I", mesh["uv_sets"])
    content += b"".join(name.encode(errors="surrogateescape") for name in mesh["materials"])
    content += mesh["vertices"].tobytes() + mesh["normals"].tobytes() + struct.pack("<I", mesh["uv_layout"])
    content += mesh["uv_pairs"].tobytes() + mesh["triangles"].tobytes() + mesh["quads"].tobytes()
    return xxhash.XXH64(content, len(content), 1)


def shortest(number):
    """The fewest digits that read back as the same 32-bit number."""
    texts = (f"{number:.{digits}g}" for digits in range(1, 10))
    return next(text for text in texts if struct.pack("<f", float(text)) == struct.pack("<f", number))


def point(choose, axes):
    return "(" + ", ".join(shortest(choose(axis)) for axis in axes) + ")"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    mesh = read(sys.argv[1])
    axes = [mesh["vertices"][axis::3] for axis in range(3)]
    uv_sets = mesh["uv_sets"]
    entries = len(mesh["uv_pairs"]) // 2 // uv_sets if uv_sets else 0
    rows = {
        "file": sys.argv[1],
        "kind": f"vmmesh version {mesh['version']}, {'' if mesh['compressed'] else 'not '}compressed",
        "vertices": len(mesh["vertices"]) // 3,
        "normals": len(mesh["normals"]) // 3 or "none",
        "UVs": f"{uv_sets} set{'' if uv_sets == 1 else 's'} of {entries}" if uv_sets else "none",
        "triangles": len(mesh["triangles"]) // 7,
        "quads": len(mesh["quads"]) // 9,
        "materials": f"{len(mesh['materials'])}" + (": " if mesh["materials"] else "") + ", ".join(mesh["materials"]),
        "bounds": f"{point(min, axes)} to {point(max, axes)}" if axes[0] else "none",
        "checksum": checksum(mesh),
    }
    for name, value in rows.items():
        print(f"{name:10} {value}")


if __name__ == "__main__":
    main()
