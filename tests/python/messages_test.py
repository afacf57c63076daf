"""Every message of docs/errors.md in Python: the exception of its class with the text, or why no Python host can meet it."""
import contextlib
import ctypes
import os
import pathlib
import re
import struct
import unittest

import support
import velmar
from support import TRIANGLE, on_windows

DOCUMENT = pathlib.Path(__file__).parents[2] / "docs" / "errors.md"
RENDERERS = os.environ.get("VELMAR_TEST_RENDERERS")
#: The sanitizer's runtime ends a program that asks for too much memory.
SANITIZED = "LD_PRELOAD" in os.environ


def documented():
    """The messages of the document's tables, by section."""
    messages, section, column = {}, "", None
    for line in DOCUMENT.read_text("utf-8").splitlines():
        if line.startswith("## "):
            section = line[3:]
        if not line.startswith("|"):
            column = None
            continue
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if column is None:
            column = next((i for i, cell in enumerate(cells) if cell in ("message", "text", "`<text>`")), len(cells))
        elif column < len(cells):
            for message in re.findall(r"`([^`]+)`", cells[column]):
                messages[message] = section
    return messages


# ---- how each is provoked -------------------------------------------------------------------------------------------


def load(name, content):
    """Loading a file with this content."""
    def act():
        pathlib.Path(name).write_bytes(content if isinstance(content, bytes) else content.encode())
        with velmar.Scene() as scene:
            scene.load_model(name)
    return act


def vmmesh(*words, compressed=0, materials=0):
    """The beginning of a vmmesh file, and further words."""
    return struct.pack(f"<{7 + len(words)}I", 5456751, 4, compressed, 1, 0, materials, 0, *words)


def vmmesh_of_block(*words):
    """A compressed vmmesh file: the words in a zstd frame with one block that isn't compressed."""
    content = struct.pack(f"<{len(words)}I", *words)
    frame = bytes.fromhex("28B52FFD20") + bytes([len(content)]) + (len(content) << 3 | 1).to_bytes(3, "little") + content
    return vmmesh(compressed=1) + struct.pack("<Q", len(frame)) + frame


def in_mtl(content):
    """Loading a model with a material library of this content."""
    def act():
        pathlib.Path("library.mtl").write_text(content, "utf-8")
        load("model.obj", "mtllib library.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")()
    return act


def pairs_for_some_entries():
    functions, mesh = velmar.library(), velmar.Mesh("mesh")
    numbers = (ctypes.c_float * 6)()
    functions.VelmarKit_Mesh_AddTextureCoordinates(mesh._handle, 1, numbers)
    functions.VelmarKit_Mesh_AddTextureCoordinates(mesh._handle, 2, numbers)
    mesh.build()


def normals_for_some_vertices():
    mesh = velmar.Mesh("mesh", TRIANGLE, normals=TRIANGLE)
    mesh.add_vertices(TRIANGLE)
    mesh.build()


def folder_of_meshes_that_cannot_be_made():
    os.symlink("nowhere", "scene_meshes")
    with velmar.Scene() as scene:
        scene.add(velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)]))
        scene.write("scene.xml")


@contextlib.contextmanager
def limit(kind, size):
    """A limit of the process: "RLIMIT_FSIZE" for its files, "RLIMIT_AS" for its memory."""
    import resource
    import signal
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    former = resource.getrlimit(getattr(resource, kind))
    resource.setrlimit(getattr(resource, kind), (size, former[1]))
    try:
        yield
    finally:
        resource.setrlimit(getattr(resource, kind), former)


def with_little_memory(call):
    """`call` with room for no more than 256 MB beyond what is used."""
    def act():
        import resource
        pages = int(pathlib.Path("/proc/self/statm").read_text("ascii").split()[0])
        with limit("RLIMIT_AS", pages * resource.getpagesize() + (256 << 20)):
            call()
    return act


def full_disk():
    mesh = velmar.Mesh("mesh", [(i, i * i, i % 7) for i in range(2000)])
    with limit("RLIMIT_FSIZE", 4096):
        mesh.write("mesh.vmmesh")


def large_material_library():
    with open("large.mtl", "wb") as file:
        # Without content, which takes no space on a disk.
        file.truncate(2**32)
    load("large.obj", "mtllib large.mtl\n")()


def name_that_is_too_long():
    mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)], material_names=["x" * 1025])
    mesh.write("mesh.vmmesh")


def without_renderer_library():
    with velmar.Scene() as scene:
        scene.add(velmar.RenderSettings(8, 8, super_sample_factor=1))
        velmar.Renderer(scene)


def renderer_call(variant, settings, call=None):
    """What happens with a stub renderer library and a scene with these settings, when it is initialised or then called."""
    def act():
        functions = velmar.library()
        context, renderer = velmar.preview._functions.VelmarContext(), velmar.preview._functions.VelmarRenderer()
        functions.VelmarKit_Context_Create(ctypes.byref(context))
        try:
            functions.VelmarKit_Context_InitializeFrom(context, os.path.join(RENDERERS, variant).encode("utf-8"))
            functions.VelmarKit_Renderer_Create(context, ctypes.byref(renderer))
        except velmar.VelmarError:
            functions.VelmarKit_Context_Delete(context)
            raise
        scene = velmar.Scene()
        try:
            scene.add(velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)]))
            if settings is not None:
                scene.add(velmar.RenderSettings(*settings, super_sample_factor=1))
            functions.VelmarKit_Renderer_InitializeWithScene(renderer, context, scene._handle)
            if call is not None:
                call(functions, renderer)
        finally:
            functions.VelmarKit_Renderer_Delete(renderer)
    return act


def update_that_fails(functions, renderer):
    last = ctypes.c_uint8(0)
    functions.VelmarKit_Renderer_UpdateScene(
        renderer, ctypes.c_int32(404), ctypes.c_double(0), b"", ctypes.c_double(0), ctypes.c_uint64(0), ctypes.c_double(0),
        ctypes.c_int64(0), ctypes.byref(last))


def mesh_with_faces(faces, pairs=0):
    def act():
        mesh = velmar.Mesh("mesh", [*TRIANGLE, (1, 1, 0)])
        if pairs:
            mesh.set_texture_coordinates([(0, 0)] * pairs)
        mesh.add_faces(faces)
        mesh.build()
    return act


MESH, FILE, MEMORY, RENDERER = velmar.MeshError, velmar.FileError, velmar.OutOfMemoryError, velmar.RendererError

#: What is raised, and what raises it.
PROVOKED = {
    "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): <count>, num_uv_mappings: <sets>":
        (MESH, pairs_for_some_entries),
    "Must be zero normals, or normals.size() must equal verts.size()": (MESH, normals_for_some_vertices),
    "Failed to open file '<path>' for writing.":
        (FILE, lambda: velmar.Mesh("mesh", TRIANGLE).write("nowhere/mesh.vmmesh")),
    "Error while writing to '<path>'.": (FILE, full_disk),
    "Failed to create directory '<path>': <system>": (FILE, folder_of_meshes_that_cannot_be_made),
    "String too long.": (MESH, name_that_is_too_long),
    "Vector too long.": (MESH, load("many.vmmesh", vmmesh(materials=2**31))),

    "Failed to load Velmar SDK DLL from '<folder>' (Error code: <number>)": (RENDERER, without_renderer_library),
    "unable to get address of procedure '<name>'": (RENDERER, renderer_call("no_create_instance", None)),
    "no render settings node found.": (RENDERER, renderer_call("good", None)),
    "Error while allocating image buffer: memory allocation failure.":
        (MEMORY, with_little_memory(renderer_call("good", (20000, 20000)))),
    "While updating dependencies: Missing mapping for old path '<path>'.":
        (RENDERER, renderer_call("good", (8, 8), update_that_fails)),

    "Unsupported mesh format '<extension>'.": (MESH, load("mesh.xyz", "")),
    "Failed to open file '<path>': <system>": (FILE, lambda: velmar.Mesh.load("nowhere.obj")),
    "File is too large to be parsed: <size> bytes, at most <size> are possible.": (MESH, large_material_library),
    "Triangle vertex index is out of bounds. (vertex index=<index>)": (MESH, mesh_with_faces([(0, 1, 9)])),
    "Quad uv index is out of bounds. (uv index=<index>)": (MESH, mesh_with_faces([(0, 1, 2, 3)], pairs=3)),
    "Invalid normal": (MESH, load("normal.obj", "v 0 0 0\nvn 1e39 0 0\nf 1//1 1//1 1//1\n")),

    "Parse error while reading position on line <line>": (MESH, load("v.obj", "v 1 x\n")),
    "Parse error while reading tex coord on line <line>": (MESH, load("vt.obj", "vt x\n")),
    "Parse error while reading normal on line <line>": (MESH, load("vn.obj", "vn x\n")),
    "Invalid number of vertices in face: <count> (line <line>)": (MESH, load("f.obj", "v 0 0 0\nf 1 1\n")),
    "syntax error: no integer following '<text>' (line <line>)": (MESH, load("f.obj", "v 0 0 0\nf 1 1 x\n")),
    "Position index invalid. (index '<index>' out of bounds, on line <line>)": (MESH, load("f.obj", "v 0 0 0\nf 1 1 7\n")),
    "Normal index invalid. (index '<index>' out of bounds, on line <line>)":
        (MESH, load("f.obj", "v 0 0 0\nf 1//7 1//7 1//7\n")),
    "Invalid tex coord index. (index '<index>' out of bounds, on line <line>)":
        (MESH, load("f.obj", "v 0 0 0\nvt 0 0\nf 1/0 1/0 1/0\n")),
    "Invalid normal index. (index '<index>' out of bounds, on line <line>)":
        (MESH, load("f.obj", "v 0 0 0\nvn 0 0 1\nf 1//0 1//0 1//0\n")),
    "No material specified yet. (line <line>)": (MESH, in_mtl("Kd 1 1 1\n")),
    "Parse error while reading <what> on line <line>": (MESH, in_mtl("newmtl red\nKd 1 x 1\n")),

    "Invalid file.  (file size too small)": (MESH, load("short.stl", "x")),
    "Invalid file, expected 'facet' or 'endsolid'": (MESH, load("text.stl", "solid a\n1")),
    "Invalid file, expected '<word>'": (MESH, load("text.stl", "solid a\nfacet abnormal\n")),

    "Invalid magic number.": (MESH, load("other.vmmesh", "no vmmesh file")),
    "Unsupported format version <version>.": (MESH, load("new.vmmesh", struct.pack("<2I", 5456751, 9))),
    "Read failed.": (MESH, load("short.vmmesh", vmmesh())),
    "Read past end of buffer.": (MESH, load("short.vmmesh", vmmesh_of_block())),
    "Read past end of file.": (MESH, load("short.vmmesh", vmmesh_of_block(0, 0, 0, 0, 5))),
    "Invalid uv_layout value <value>": (MESH, load("layout.vmmesh", vmmesh(0, 0, 7))),
    "Bad allocation while reading from file.":
        (MEMORY, with_little_memory(load("large.vmmesh", vmmesh(2**26)))),
}

#: Those that need a limit or a link of the system, or stub libraries, or more memory than a sanitizer gives.
OF_POSIX = {message for message, (kind, _) in PROVOKED.items() if kind is MEMORY} | {
    "Error while writing to '<path>'.", "Failed to create directory '<path>': <system>",
    "File is too large to be parsed: <size> bytes, at most <size> are possible."}
OF_RENDERERS = {message for message, (kind, _) in PROVOKED.items()
                if kind is RENDERER and message != "Failed to load Velmar SDK DLL from '<folder>' (Error code: <number>)"}
OF_MUCH_MEMORY = {message for message, (kind, _) in PROVOKED.items() if kind is MEMORY}
OF_RENDERERS.add("Error while allocating image buffer: memory allocation failure.")

#: Why no Python host can meet the others.
UNREACHABLE = {
    "the kit reports memory that is exhausted, and what else is thrown, by itself": {
        "An unhandled error has occured."},
    "the library prints it; the kit has texts of its own, with the library's text": {
        "Context doesn't exist! Did you forget to create it?",
        "Failed to initialise Velmar context, <code> error description: <text>", "This failed: <text>",
        "Failed to create Instance of 'VelmarInterface'", "Failed to initialise 'VelmarInterface'"},
    "no failure other than exhausted memory is known there": {"Error while allocating image buffer: <text>"},
    "the system has to fail": {
        "GetFileSizeEx failed: <system>", "CreateFileMapping failed: <system>", "MapViewOfFile failed: <system>",
        "fstat failed: <system>", "mmap failed: <system>"},
    "the kit reads PLY files by a reader with texts of its own": {
        "could not open file '<path>' for reading.", "could not read header.", "read of body failed."},
    "a file of 4 GiB has to be searched for a line end": {"A line is too long: <size> bytes."},
    "a file of more than 71 GB is needed": {"Invalid file.  (too many triangles)"},
}
UNREACHABLE_SECTIONS = {
    "Reading a scene document": "the kit has no reader of documents",
    "Errors in operations of the scene": "only a renderer library calls them",
    "Failed assertions": "the kit refuses the misuse, or a renderer library has to commit it",
}


def pattern_of(message):
    return "".join(".*" if part.startswith("<") else re.escape(part) for part in re.split(r"(<\w+>)", message))


class Messages(support.InFolder):
    def test_each_is_an_exception_of_its_class(self):
        for number, (message, (kind, provoke)) in enumerate(PROVOKED.items()):
            if (message in OF_POSIX and on_windows) or (message in OF_RENDERERS and not RENDERERS) \
                    or (message in OF_MUCH_MEMORY and SANITIZED):
                continue
            folder = self.folder / str(number)
            folder.mkdir()
            os.chdir(folder)
            with self.subTest(message=message):
                with self.assertRaisesRegex(velmar.VelmarError, pattern_of(message)) as caught:
                    provoke()
                self.assertIs(type(caught.exception), kind)

    def test_each_of_the_document_is_provoked_or_out_of_reach(self):
        unreachable = [message for messages in UNREACHABLE.values() for message in messages]
        unreachable += [message for message, section in documented().items()
                        if section in UNREACHABLE_SECTIONS and message not in PROVOKED]
        self.assertEqual(sorted([*PROVOKED, *unreachable]), sorted(documented()))


if __name__ == "__main__":
    unittest.main()
