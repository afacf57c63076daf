"""Reads the PNG files that `velmar info` writes: grey pictures in 8 bits of red, green and blue."""
import struct
import zlib


def read_png(content):
    """The rows of the image, a number for each pixel. Fails on anything that isn't a whole and sound PNG file of that kind."""
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
    assert form == [8, 2, 0, 0, 0]
    data = zlib.decompress(chunks[1][1])
    size = 3 * width
    assert len(data) == (size + 1) * height
    rows = []
    above = bytes(size)
    for row in range(height):
        begin = row * (size + 1)
        above = unfilter(data[begin], data[begin + 1:begin + 1 + size], above)
        assert above[0::3] == above[1::3] == above[2::3]
        rows.append(above[0::3])
    return rows


def unfilter(kind, coded, above):
    row = bytearray()
    for x, byte in enumerate(coded):
        left, corner = (row[x - 3], above[x - 3]) if x >= 3 else (0, 0)
        guess = (0, left, above[x], (left + above[x]) // 2, nearest(left, above[x], corner))[kind]
        row.append((byte + guess) % 256)
    return bytes(row)


def nearest(left, up, corner):
    expected = left + up - corner
    return min((left, up, corner), key=lambda value: abs(expected - value))
