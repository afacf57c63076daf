"""Converts mesh files that are larger than the offsets of a parser reach, and checks what was read of them.

Takes about three times the size of a file in memory, and as much on the disk as one file.
"""
import argparse
import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import time

BLOCK = 20_000
# The offsets of a parser have 32 bits.
UNREACHABLE = 2**32


def write_binary_stl(path, size):
    """Returns the numbers of vertices and of triangles."""
    record = struct.pack("<12fH", 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0)
    blocks = -(-size // (BLOCK * len(record)))
    with open(path, "wb") as out:
        out.write(bytes(80) + struct.pack("<I", blocks * BLOCK))
        for _ in range(blocks):
            out.write(record * BLOCK)
    return 3 * blocks * BLOCK, blocks * BLOCK


def write_text_stl(path, size):
    facet = ("facet normal 0.000000e+00 0.000000e+00 1.000000e+00\n outer loop\n  vertex 0.000000e+00 0.000000e+00 0.000000e+00\n"
             "  vertex 1.000000e+00 0.000000e+00 0.000000e+00\n  vertex 0.000000e+00 1.000000e+00 0.000000e+00\n"
             " endloop\nendfacet\n")
    blocks = -(-size // (BLOCK * len(facet)))
    with open(path, "w", encoding="ascii", newline="\n") as out:
        out.write("solid large\n")
        for _ in range(blocks):
            out.write(facet * BLOCK)
        out.write("endsolid large\n")
    return 3 * blocks * BLOCK, blocks * BLOCK


def write_obj(path, size):
    """Positions, and triangles of the last ones: such indices count back. The last triangle is of the first positions."""
    unit = "v 0.000000 0.000000 0.000000\nv 1.000000 0.000000 0.000000\nv 0.000000 1.000000 0.000000\nf -3 -2 -1\n"
    blocks = -(-size // (BLOCK * len(unit)))
    with open(path, "w", encoding="ascii", newline="\n") as out:
        for _ in range(blocks):
            out.write(unit * BLOCK)
        out.write("f 1 2 3\n")
    return 3 * blocks * BLOCK, blocks * BLOCK + 1


def write_binary_ply(path, size):
    corner = struct.pack("<3f", 0, 0, 0) + struct.pack("<3f", 1, 0, 0) + struct.pack("<3f", 0, 1, 0)
    face = struct.pack("<B3i", 3, 0, 1, 2)
    blocks = -(-size // (BLOCK * (len(corner) + len(face))))
    with open(path, "wb") as out:
        out.write((f"ply\nformat binary_little_endian 1.0\nelement vertex {3 * blocks * BLOCK}\nproperty float x\n"
                   f"property float y\nproperty float z\nelement face {blocks * BLOCK}\n"
                   "property list uchar int vertex_indices\nend_header\n").encode("ascii"))
        for part in (corner, face):
            for _ in range(blocks):
                out.write(part * BLOCK)
    return 3 * blocks * BLOCK, blocks * BLOCK


FORMATS = {"binary.stl": write_binary_stl, "text.stl": write_text_stl, "large.obj": write_obj, "binary.ply": write_binary_ply}


def convert(command, folder, name):
    """Into a store. Returns its entry, the seconds and the peak of memory in bytes."""
    start = time.monotonic()
    process = subprocess.Popen([*command, "convert", "-q", name, "--store", "store"], cwd=folder, stdin=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - start
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{name}: not converted")
    entries = [json.loads(line) for path in (folder / "store/manifest").iterdir() for line in path.open(encoding="utf-8")]
    return next(entry for entry in entries if pathlib.PureWindowsPath(entry.get("source", "")).name == name), seconds, usage.ru_maxrss * 1024


def check_long_line(command, folder):
    """A line that no parser reaches is refused."""
    with open(folder / "line.obj", "wb") as out:
        out.write(b"v 1 2 3")
        out.truncate(UNREACHABLE + 1)
    done = subprocess.run([*command, "convert", "line.obj", "out.vmmesh"], cwd=folder, capture_output=True, text=True,
                          stdin=subprocess.DEVNULL)
    expected = f"velmar: line.obj: A line is too long: {UNREACHABLE + 1} bytes.\n"
    if (done.returncode, done.stderr.replace("\r", "")) != (1, expected):
        sys.exit(f"line.obj: {done.returncode}, {done.stderr}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tool", type=os.path.abspath)
    parser.add_argument("gigabytes", type=float, help="size of each file")
    parser.add_argument("formats", nargs="*", default=list(FORMATS), metavar="FORMAT", help=f"of {', '.join(FORMATS)}")
    parser.add_argument("--folder", help="for the files, in place of the system's for temporary files")
    parser.add_argument("--emulator", type=os.path.abspath, help="runs the tool")
    options = parser.parse_args()
    command = [options.emulator, options.tool] if options.emulator else [options.tool]
    with tempfile.TemporaryDirectory(dir=options.folder) as name:
        folder = pathlib.Path(name)
        check_long_line(command, folder)
        for file in options.formats:
            vertices, triangles = FORMATS[file](folder / file, int(options.gigabytes * 1e9))
            bytes_written = (folder / file).stat().st_size
            entry, seconds, memory = convert(command, folder, file)
            if (entry["vertices"], entry["triangles"], sorted(entry["bounds"])) != (vertices, triangles, [0, 0, 0, 0, 1, 1]):
                sys.exit(f"{file}: {entry}")
            print(f"{file}: {bytes_written / 1e9:.2f} GB, {triangles} triangles: {seconds:.1f} s, "
                  f"{memory / 1e6:.0f} MB at most", flush=True)
            (folder / file).unlink()


if __name__ == "__main__":
    main()
