"""Each kind of failure, as a host in Python hears of it: none ends the interpreter, and each is an exception of its own
class with the text."""
import os
import pathlib
import unittest

import support
import velmar
from support import TRIANGLE, on_windows

RENDERERS = os.environ.get("VELMAR_TEST_RENDERERS")


class Failures(support.InFolder):
    def expect(self, kind, text, call):
        """An exception of exactly this class."""
        with self.assertRaisesRegex(velmar.VelmarError, text) as caught:
            call()
        self.assertIs(type(caught.exception), kind)

    def write(self, name, text):
        pathlib.Path(name).write_bytes(text if isinstance(text, bytes) else text.encode())

    def test_file_that_is_not_there(self):
        scene = velmar.Scene()
        for name in ("no.obj", "no.ply", "no.stl", "no.vmmesh"):
            self.expect(velmar.FileError, name, lambda: velmar.Mesh.load(name))
            self.expect(velmar.FileError, name, lambda: scene.load_model(name))
        self.assertEqual(scene.nodes, ())

    def test_exceptions_are_those_of_python_too(self):
        for kind, base in ((velmar.FileError, OSError), (velmar.OutOfMemoryError, MemoryError),
                           (velmar.BadArgumentError, ValueError), (velmar.MeshError, ValueError)):
            self.assertTrue(issubclass(kind, base) and issubclass(kind, velmar.VelmarError))

    @unittest.skipIf(on_windows, "needs a folder that nobody can write")
    def test_folder_that_is_not_writable(self):
        self.expect(velmar.FileError, "/proc/scene.xml", lambda: velmar.Scene().write("/proc/scene.xml"))
        mesh = velmar.Mesh("mesh", TRIANGLE)
        self.expect(velmar.FileError, "/proc/mesh.vmmesh", lambda: mesh.write("/proc/mesh.vmmesh"))

    def test_file_in_place_of_a_folder(self):
        self.write("folder", "not one")
        mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)])
        self.expect(velmar.FileError, "folder", lambda: velmar.Scene().write("folder/scene.xml"))
        self.expect(velmar.FileError, "folder", lambda: mesh.write("folder/mesh.vmmesh"))
        self.expect(velmar.FileError, "folder", lambda: mesh.write_text("folder/mesh.txt"))

    @unittest.skipIf(on_windows, "needs a limit of the system")
    def test_full_disk(self):
        program = """
import resource, signal, velmar
signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
mesh = velmar.Mesh("mesh", [(i, i * i, i % 7) for i in range(2000)])
scene, other = velmar.Scene(), velmar.Scene()
for _ in range(50):
    scene.add_default_material()
other.add(mesh)
resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))
for write, name in ((scene.write, "scene.xml"), (other.write, "other.xml"), (mesh.write, "mesh.vmmesh"),
                    (mesh.write_text, "mesh.txt")):
    try:
        write(name)
    except velmar.FileError as failure:
        print(str(failure).split(" to")[0])
print(mesh.num_vertices)
"""
        status, output = support.run(program)
        self.assertEqual((status, output), (0, "Error while writing\n" * 4 + "2000\n"))
        self.assertEqual([path.name for path in self.folder.rglob("*") if path.is_file()], [])

    @unittest.skipIf(on_windows or not os.path.exists("/dev/full"), "needs a device that is always full")
    def test_device_that_is_full(self):
        os.symlink("/dev/full", "full")
        mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)])
        # The new file takes the link's place only when it is whole.
        mesh.write("full")
        self.assertFalse(os.path.islink("full"))

    @unittest.skipIf(on_windows or "LD_PRELOAD" in os.environ, "needs a limit of the system")
    def test_exhausted_memory(self):
        program = """
import array, resource, velmar
corners = memoryview(array.array("f", bytes(12 << 24))).cast("B").cast("f", (1 << 24, 3))
mesh, scene = velmar.Mesh("mesh"), velmar.Scene()
used = int(open("/proc/self/statm").read().split()[0]) * resource.getpagesize()
resource.setrlimit(resource.RLIMIT_AS, (used + (16 << 20), -1))
for _ in range(3):
    try:
        mesh.add_vertices(corners)
    except MemoryError as failure:
        print(type(failure).__name__, failure)
scene.add(mesh)
print(mesh.num_vertices, len(scene.nodes))
"""
        status, output = support.run(program)
        self.assertEqual((status, output), (0, "OutOfMemoryError Out of memory.\n" * 3 + "0 1\n"))

    def test_name_that_is_not_unicode(self):
        with self.assertRaises(ValueError):
            velmar.Mesh("\ud800")
        for name in ("a\x01b", "\uffff"):
            for make in (velmar.Mesh, velmar.Material, lambda given: velmar.Model(given, velmar.Mesh("mesh"))):
                self.expect(velmar.BadArgumentError, "isn't UTF-8, or holds a character that XML forbids",
                            lambda: make(name))

    def test_document_that_cannot_hold_a_name(self):
        import ctypes

        api = ctypes.CDLL(os.environ["VELMAR_TEST_API"])
        api.VelmarMesh_Create.restype = ctypes.c_void_p
        with velmar.Scene() as scene:
            api.VelmarScene_AddMesh(scene._handle, ctypes.c_void_p(api.VelmarMesh_Create(b"bad \xff name")))
            self.expect(velmar.DocumentError, "isn't UTF-8", lambda: scene.write("scene.xml"))
        self.assertEqual(os.listdir(), [])

    def test_normals_of_some_vertices(self):
        mesh = velmar.Mesh("mesh", TRIANGLE, normals=TRIANGLE)
        mesh.add_vertices(TRIANGLE)
        self.expect(velmar.MeshError, r"Must be zero normals, or normals.size\(\) must equal verts.size\(\)", mesh.build)

    def test_damaged_mesh_files(self):
        ply = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nproperty float z\n"
        for name, content, text in (
                ("image.png", "", "Unsupported mesh format"),
                ("bad.vmmesh", "x" * 100, "Invalid magic number"),
                ("short.vmmesh", "", ""),
                ("bad.ply", "no ply", ""),
                ("face.ply", ply + "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n3 0 0 7\n",
                 "a face that refers to vertex 7 of 1"),
                ("bad.stl", "x", ""),
                ("bad.obj", "v 0 0 0\nf 1 2 3\n", "")):
            self.write(name, content)
            self.expect(velmar.MeshError, text, lambda: velmar.Mesh.load(name))

    def test_bad_arguments_of_the_library(self):
        camera = velmar.Camera(position=(0, 0, 1))
        self.expect(velmar.BadArgumentError, "up is parallel to the view", lambda: camera.look_at((0, 0, 0)))
        functions, mesh = velmar.library(), velmar.Mesh("mesh")
        self.expect(velmar.BadArgumentError, "radians isn't between 0 and pi",
                    lambda: functions.VelmarKit_Camera_SetFieldOfView(camera._handle, 4.0))
        self.expect(velmar.BadArgumentError, "count is negative",
                    lambda: functions.VelmarKit_Mesh_AddVertices(mesh._handle, -1, None))
        self.expect(velmar.BadArgumentError, "mesh is null", lambda: functions.VelmarKit_Mesh_Build(None, None))

    def test_renderer_library_that_fails(self):
        if not RENDERERS:
            self.skipTest("there are no renderer libraries")
        for variant, text in (("throws", "not today"), ("throws_standard", "no room at the inn"),
                              ("throws_on_create", "thrown by the library"),
                              ("create_nothing", "failed to create or initialise"),
                              ("interface_initialise", "failed to create or initialise"),
                              ("global_init", ""), ("no_create_instance", "unable to get address of procedure")):
            program = f"""
import os, shutil, velmar
os.mkdir("vs2017_64")
folder = {os.path.join(RENDERERS, variant)!r}
for name in os.listdir(folder):
    shutil.copy(os.path.join(folder, name), "vs2017_64")
with velmar.Scene() as scene:
    scene.add(velmar.RenderSettings(32, 16, super_sample_factor=1))
    try:
        velmar.Renderer(scene)
    except velmar.RendererError as failure:
        print("python:", failure)
    scene.add_sun_sky()
    scene.write("scene.xml")
"""
            folder = self.folder / variant
            folder.mkdir()
            os.chdir(folder)
            status, output = support.run(program)
            self.assertEqual(status, 0, output)
            self.assertRegex(output, "python: .*" + text, variant)
            self.assertTrue(os.path.exists("scene.xml"))


if __name__ == "__main__":
    unittest.main()
