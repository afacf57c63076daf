"""Reads the PNG files that the tool writes: 8 bits of grey."""
import struct
import zlib


def read_png(content):
    """The rows of the image. Fails on anything that isn't a whole and sound PNG file of that kind."""
    assert content[:8] == b"\x89PNG\r\n\x1a\n"
    at = 8
    chunks = []
    while at < len(content):
        size, kind = struct.unpack_from(">I4s", content, at)
        data = content[at + 8:at + 8 + size]
        assert struct.unpack_from(">I", content, at + 8 + size)[0] == zlib.crc32(kind + data)
        chunks.append((kind, data))
        at += size + 12
    assert [kind for kind, _ in chunks] == [b"IHDR", b"IDAT", b"IEND"]
    width, height, *form = struct.unpack(">IIBBBBB", chunks[0][1])
    assert form == [8, 0, 0, 0, 0]
    data = zlib.decompress(chunks[1][1])
    assert len(data) == (width + 1) * height
    rows = []
    above = bytes(width)
    for row in range(height):
        begin = row * (width + 1)
        above = unfilter(data[begin], data[begin + 1:begin + 1 + width], above)
        rows.append(above)
    return rows


def unfilter(kind, coded, above):
    row = bytearray()
    for x, byte in enumerate(coded):
        left, corner = (row[x - 1], above[x - 1]) if x else (0, 0)
        guess = (0, left, above[x], (left + above[x]) // 2, nearest(left, above[x], corner))[kind]
        row.append((byte + guess) % 256)
    return bytes(row)


def nearest(left, up, corner):
    expected = left + up - corner
    return min((left, up, corner), key=lambda value: abs(expected - value))
