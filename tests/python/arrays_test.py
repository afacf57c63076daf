"""Vertices, faces and texture coordinates that a mesh accepts, and those that it refuses."""
import array
import ctypes
import gc
import itertools
import struct
import unittest

import support
import velmar
from support import TRIANGLE, array_of, numpy, with_numpy


def forms(rows):
    """The rows themselves, and as a numpy array if numpy is installed."""
    return [rows] if numpy is None else [rows, numpy.array(rows)]


def words_of(call):
    """The words that a call of AddFaces passes."""
    _, count, words = call
    sizes = []
    position = 0
    for _ in range(count):
        size = 8 if words[position] == 0 else 10
        sizes.append(tuple(words[position:position + size]))
        position += size
    return sizes


def address_of(pointer):
    return ctypes.cast(pointer, ctypes.c_void_p).value


class Vertices(unittest.TestCase):
    def setUp(self):
        self.mesh = velmar.Mesh("mesh")

    @with_numpy
    def test_array_is_handed_over_where_it_lies(self):
        vertices = numpy.array(TRIANGLE, numpy.float32)
        with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
            self.mesh.add_vertices(vertices)
        self.assertEqual((calls[0][1], ctypes.addressof(calls[0][2])), (3, vertices.ctypes.data))
        self.assertEqual(self.mesh.num_vertices, 3)

    @with_numpy
    def test_read_only_array_is_handed_over_where_it_lies(self):
        vertices = numpy.array(TRIANGLE, numpy.float32)
        vertices.flags.writeable = False
        with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
            self.mesh.add_vertices(vertices)
        self.assertEqual(ctypes.addressof(calls[0][2]), vertices.ctypes.data)

    @with_numpy
    def test_rows_of_a_larger_array_are_passed_in_place(self):
        vertices = numpy.zeros((10, 3), numpy.float32)
        with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
            self.mesh.add_vertices(vertices[4:6])
        self.assertEqual((calls[0][1], ctypes.addressof(calls[0][2])), (2, vertices.ctypes.data + 4 * 12))

    def test_memory_at_an_odd_address_is_copied(self):
        block = bytearray(1 + 36)
        struct.pack_into("=9f", block, 1, *range(9))
        with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
            self.mesh.add_vertices(memoryview(block)[1:].cast("f", (3, 3)))
        self.assertEqual(ctypes.addressof(calls[0][2]) % 4, 0)
        self.assertEqual(list(calls[0][2]), list(range(9)))

    def test_other_arrays_than_those_of_numpy_are_passed_too(self):
        numbers = array.array("f", range(6))
        with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
            self.mesh.add_vertices(memoryview(numbers).cast("B").cast("f", (2, 3)))
        self.assertEqual((calls[0][1], ctypes.addressof(calls[0][2])), (2, numbers.buffer_info()[0]))
        read_only = memoryview(numbers.tobytes()).cast("f", (2, 3))
        with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
            self.mesh.add_vertices(read_only)
        self.assertEqual(list(calls[0][2]), list(range(6)))

    def test_sequence_is_converted(self):
        for row in (*forms([2, 3, 4]), array.array("d", [2, 3, 4])):
            with support.recorded("VelmarKit_Mesh_AddVertices") as calls:
                self.mesh.add_vertices([(0, 0.5, 1), row])
            self.assertEqual(list(calls[0][2]), [0, 0.5, 1, 2, 3, 4])

    def test_no_vertices_are_no_vertices(self):
        self.mesh.add_vertices((ctypes.c_float * 3 * 0)())
        self.mesh.add_vertices([])
        if numpy is not None:
            self.mesh.add_vertices(numpy.zeros((0, 3), numpy.float32))
        self.assertEqual(self.mesh.num_vertices, 0)

    @with_numpy
    def test_other_kinds_of_numbers_of_numpy_are_refused(self):
        for kind in (numpy.float64, numpy.int32, numpy.float16, ">f4"):
            with self.assertRaisesRegex(TypeError, "vertices must be float32, not " + str(numpy.dtype(kind))):
                self.mesh.add_vertices(numpy.zeros((3, 3), kind))
        self.assertEqual(self.mesh.num_vertices, 0)

    def test_other_kinds_of_numbers_are_refused(self):
        for kind in (ctypes.c_double, ctypes.c_int32, ctypes.c_float.__ctype_be__):
            with self.assertRaisesRegex(TypeError, "vertices must be float32, not the format "):
                self.mesh.add_vertices((kind * 3 * 3)())
        with self.assertRaisesRegex(TypeError, "not the format 'd'"):
            self.mesh.add_vertices(array.array("d", range(9)))
        with self.assertRaisesRegex(TypeError, "row 0 contains what isn't a number"):
            self.mesh.add_vertices(["abc"])
        for value in ("abcdef", b"abcdef", None, 5, [1, 2, 3]):
            with self.assertRaisesRegex(TypeError, "vertices must be rows of numbers"):
                self.mesh.add_vertices(value)
        self.assertEqual(self.mesh.num_vertices, 0)

    def test_other_shapes_are_refused(self):
        for shape in ((9,), (3, 2), (3, 4), (1, 3, 3), ()):
            block = ctypes.c_float
            for length in reversed(shape):
                block *= length
            for values in (block(), *([] if numpy is None else [numpy.zeros(shape, numpy.float32)])):
                with self.assertRaisesRegex(ValueError, r"vertices must have the shape \(N, 3\), not \("):
                    self.mesh.add_vertices(values)
        with self.assertRaisesRegex(ValueError, "row 1 has 2 numbers, not 3"):
            self.mesh.add_vertices([(0, 0, 0), (0, 0)])

    def test_memory_with_gaps_is_refused(self):
        with self.assertRaisesRegex(ValueError, "vertices must be C-contiguous"):
            self.mesh.add_vertices(array_of(TRIANGLE + TRIANGLE)[::2])

    @with_numpy
    def test_memory_of_numpy_with_gaps_is_refused(self):
        for vertices in (numpy.zeros((3, 6), numpy.float32)[:, ::2], numpy.zeros((3, 3), numpy.float32, "F")):
            with self.assertRaisesRegex(ValueError, "vertices must be C-contiguous"):
                self.mesh.add_vertices(vertices)


class TextureCoordinates(unittest.TestCase):
    @with_numpy
    def test_array_is_handed_over_where_it_lies(self):
        pairs = numpy.zeros((4, 2), numpy.float32)
        with support.recorded("VelmarKit_Mesh_SetTextureCoordinates") as calls:
            velmar.Mesh("mesh").add_texture_coordinates(pairs)
        self.assertEqual((calls[0][1:3], address_of(calls[0][3][0])), ((1, 4), pairs.ctypes.data))

    def test_other_arrays_than_those_of_numpy_are_passed_too(self):
        pairs = (ctypes.c_float * 2 * 4)()
        with support.recorded("VelmarKit_Mesh_SetTextureCoordinates") as calls:
            velmar.Mesh("mesh").add_texture_coordinates(pairs)
        self.assertEqual((calls[0][1:3], address_of(calls[0][3][0])), ((1, 4), ctypes.addressof(pairs)))

    def test_other_kinds_and_shapes_are_refused(self):
        mesh = velmar.Mesh("mesh")
        with self.assertRaisesRegex(TypeError, "texture coordinates must be float32, not the format '[<]?d'"):
            mesh.add_texture_coordinates((ctypes.c_double * 2 * 4)())
        with self.assertRaisesRegex(ValueError, r"texture coordinates must have the shape \(N, 2\), not \(4, 3\)"):
            mesh.add_texture_coordinates((ctypes.c_float * 3 * 4)())

    @with_numpy
    def test_other_kinds_of_numpy_are_refused(self):
        with self.assertRaisesRegex(TypeError, "texture coordinates must be float32, not float64"):
            velmar.Mesh("mesh").add_texture_coordinates(numpy.zeros((4, 2)))

    def test_sets_of_different_sizes_are_refused(self):
        mesh = velmar.Mesh("mesh", TRIANGLE)
        mesh.add_texture_coordinates([(0, 0)] * 2)
        with self.assertRaisesRegex(ValueError, r"sets of texture coordinates of .* differ in size: \[1, 2\]"):
            mesh.add_texture_coordinates([(0, 0)])
        self.assertEqual(mesh.num_texture_coordinate_sets, 1)

    def test_sets_are_interleaved(self):
        first, second = [(0, 1), (2, 3), (4, 5)], [(6, 7), (8, 9), (10, 11)]
        wanted = [[0, 1], [6, 7], [2, 3], [8, 9], [4, 5], [10, 11]]
        one_by_one = velmar.Mesh("mesh", TRIANGLE)
        one_by_one.add_texture_coordinates(first)
        one_by_one.add_texture_coordinates(second)
        at_once = velmar.Mesh("mesh", TRIANGLE, texture_coordinates=[array_of(first), array_of(second)])
        for mesh in (one_by_one, at_once):
            self.assertEqual(mesh.num_texture_coordinate_sets, 2)
            self.assertEqual(mesh.texture_coordinates.tolist(), wanted)
        at_once.set_texture_coordinates()
        self.assertEqual(at_once.num_texture_coordinate_sets, 0)


class Views(unittest.TestCase):
    def setUp(self):
        self.mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)], normals=[(0, 0, 1)] * 3)

    def test_arrays_are_read(self):
        self.assertEqual([tuple(row) for row in self.mesh.vertices.tolist()], TRIANGLE)
        self.assertEqual(self.mesh.normals.tolist(), [[0, 0, 1]] * 3)
        self.assertEqual(self.mesh.triangles.tolist(), [[0, 1, 2, 0, 0, 0, 0]])
        self.assertEqual(len(self.mesh.quads), 0)

    @with_numpy
    def test_they_are_views_of_the_meshes_memory(self):
        vertices = self.mesh.vertices
        self.assertEqual((vertices.dtype, vertices.shape), (numpy.float32, (3, 3)))
        self.assertEqual(vertices.ctypes.data, self.mesh.vertices.ctypes.data)
        with self.assertRaisesRegex(ValueError, "read-only"):
            vertices[0, 0] = 1

    def test_mesh_is_not_changed_under_a_view(self):
        part = self.mesh.vertices[1:]
        for change in (lambda: self.mesh.add_vertices(TRIANGLE), lambda: setattr(self.mesh, "normals", None),
                       lambda: self.mesh.add_faces([(0, 1, 2)]), lambda: self.mesh.set_texture_coordinates()):
            with self.assertRaisesRegex(BufferError, "arrays of .* are in use"):
                change()
        self.assertEqual(len(part), 2)
        del part
        self.mesh.add_vertices(TRIANGLE)

    def test_view_outlives_its_mesh_and_scene(self):
        with velmar.Scene() as scene:
            scene.add(self.mesh)
            vertices = self.mesh.vertices
        del self.mesh
        gc.collect()
        self.assertEqual([tuple(row) for row in vertices.tolist()], TRIANGLE)

    def test_normals_are_replaced_and_removed(self):
        self.mesh.normals = [(1, 0, 0)] * 3
        self.assertEqual(self.mesh.normals.tolist(), [[1, 0, 0]] * 3)
        with self.assertRaisesRegex(ValueError, "as many as the 3 vertices"):
            self.mesh.normals = [(1, 0, 0)]
        with self.assertRaisesRegex(velmar.BadArgumentError, "isn't finite"):
            self.mesh.normals = [(float("nan"), 0, 0)] * 3
        self.mesh.normals = None
        self.assertEqual(len(self.mesh.normals), 0)


class Faces(unittest.TestCase):
    def setUp(self):
        self.mesh = velmar.Mesh("mesh", [(0, 0, 0)] * 9)

    def added(self, *arguments, **options):
        with support.recorded("VelmarKit_Mesh_AddFaces") as calls:
            self.mesh.add_faces(*arguments, **options)
        return words_of(calls[0])

    @with_numpy
    def test_records_are_passed_in_place(self):
        for records in (numpy.array([(0, 1, 2, 3, 0, 0, 0, 5)], numpy.uint32),
                        numpy.array([(7, 1, 2, 3, 4, 0, 0, 0, 0, 1)], numpy.uint32)):
            with support.recorded("VelmarKit_Mesh_AddFaces") as calls:
                self.mesh.add_faces(records)
            self.assertEqual((calls[0][1], ctypes.addressof(calls[0][2])), (1, records.ctypes.data))
        self.assertEqual((self.mesh.num_faces, self.mesh.num_materials), (2, 6))

    def test_records_of_other_arrays_are_passed_too(self):
        records = (ctypes.c_uint32 * 8 * 2)((0, 1, 2, 3, 0, 0, 0, 5), (0, 3, 2, 1, 0, 0, 0, 4))
        with support.recorded("VelmarKit_Mesh_AddFaces") as calls:
            self.mesh.add_faces(records)
        self.assertEqual(ctypes.addressof(calls[0][2]), ctypes.addressof(records))

    def test_indices_are_packed(self):
        triangle, quad = [(0, 1, 2, 3, 0, 0, 0, 0)], [(1, 1, 2, 3, 4, 0, 0, 0, 0, 0)]
        self.assertEqual(self.added([(1, 2, 3), (1, 2, 3, 4)]), triangle + quad)
        self.assertEqual(self.added(memoryview(bytes([1, 2, 3])).cast("B", (1, 3))), triangle)
        for kind in "bHiIlLqQ":
            self.assertEqual(self.added(array_of([(1, 2, 3, 4)], kind)), quad)

    @with_numpy
    def test_indices_of_numpy_are_packed(self):
        triangle, quad = [(0, 1, 2, 3, 0, 0, 0, 0)], [(1, 1, 2, 3, 4, 0, 0, 0, 0, 0)]
        for kind in (numpy.int64, numpy.uint8, numpy.int32, ">i4"):
            self.assertEqual(self.added(numpy.array([(1, 2, 3)], kind)), triangle)
            self.assertEqual(self.added(numpy.array([(1, 2, 3, 4)], kind)), quad)
        self.assertEqual(self.added(numpy.array([(1, 2, 3)], order="F")), triangle)

    def test_texture_indices_and_materials_are_packed(self):
        wanted = [(0, 1, 2, 3, 4, 5, 6, 7), (0, 3, 2, 1, 6, 5, 4, 8)]
        faces, texture = [(1, 2, 3), (3, 2, 1)], [(4, 5, 6), (6, 5, 4)]
        for some_faces, some_texture, materials in itertools.product(forms(faces), forms(texture), forms([7, 8])):
            self.assertEqual(self.added(some_faces, some_texture, materials), wanted)
        self.assertEqual(self.added(array_of(faces, "I"), array_of(texture, "q"), array.array("B", [7, 8])), wanted)
        self.assertEqual([words[-1] for words in self.added(faces, materials=3)], [3, 3])
        if numpy is not None:
            self.assertEqual([words[-1] for words in self.added(numpy.array(faces), materials=numpy.int8(3))], [3, 3])

    def test_vertices_take_the_texture_coordinates_of_their_numbers(self):
        self.mesh.add_texture_coordinates([(0, 0)] * 9)
        wanted = [(0, 1, 2, 3, 1, 2, 3, 0)]
        for faces in (*forms([(1, 2, 3)]), array_of([(1, 2, 3)], "I")):
            self.assertEqual(self.added(faces), wanted)

    def test_no_faces_are_no_faces(self):
        self.mesh.add_faces([])
        self.mesh.add_faces((ctypes.c_uint32 * 8 * 0)())
        if numpy is not None:
            self.mesh.add_faces(numpy.zeros((0, 3), int))
            self.mesh.add_faces(numpy.zeros((0, 8), numpy.uint32))
        self.assertEqual((self.mesh.num_faces, self.mesh.num_materials), (0, 1))
        self.mesh.build()

    def test_records_of_another_kind_than_their_size_are_refused(self):
        with self.assertRaisesRegex(ValueError, "first word must be 0"):
            self.mesh.add_faces(array_of([[1] * 8] * 2, "I"))
        with self.assertRaisesRegex(ValueError, "first word must not be 0"):
            self.mesh.add_faces((ctypes.c_uint32 * 10 * 2)())

    def test_other_numbers_are_refused(self):
        with self.assertRaisesRegex(TypeError, "face records must be uint32, not the format 'q'"):
            self.mesh.add_faces(array_of([[0] * 8], "q"))
        with self.assertRaisesRegex(TypeError, "faces must be a whole number, not float"):
            self.mesh.add_faces([(0, 1, 2.5)])
        for faces in (*forms([(0, 1, -1)]), *forms([(0, 1, 2**32)]), array_of([(0, 1, 2**32)], "q")):
            with self.assertRaisesRegex(ValueError, "faces must be from 0 to 4294967295"):
                self.mesh.add_faces(faces)
        for materials in (-1, *forms([-1])):
            for faces in forms([(0, 1, 2)]):
                with self.assertRaisesRegex(ValueError, "materials must be from 0"):
                    self.mesh.add_faces(faces, materials=materials)
        self.assertEqual(self.mesh.num_faces, 0)

    @with_numpy
    def test_other_numbers_of_numpy_are_refused(self):
        with self.assertRaisesRegex(TypeError, "face records must be uint32, not int64"):
            self.mesh.add_faces(numpy.zeros((1, 8), numpy.int64))
        with self.assertRaisesRegex(TypeError, "faces must be whole numbers, not float32"):
            self.mesh.add_faces(numpy.zeros((1, 3), numpy.float32))

    def test_other_shapes_are_refused(self):
        with self.assertRaisesRegex(ValueError, "row 1 has 2 indices, not 3 or 4"):
            self.mesh.add_faces([(0, 1, 2), (0, 1)])
        for faces in forms([(0, 1, 2)]):
            with self.assertRaisesRegex(ValueError, "texture indices"):
                self.mesh.add_faces(faces, [(0, 1, 2), (0, 1, 2)])
            with self.assertRaisesRegex(ValueError, "texture indices"):
                self.mesh.add_faces(faces, [(0, 1, 2, 3)])
            with self.assertRaisesRegex(ValueError, "materials must"):
                self.mesh.add_faces(faces, materials=[0, 0])
        with self.assertRaisesRegex(ValueError, "face records contain their texture indices"):
            self.mesh.add_faces((ctypes.c_uint32 * 8 * 1)(), materials=1)

    @with_numpy
    def test_other_shapes_of_numpy_are_refused(self):
        for shape in ((3,), (2, 5), (2, 2), (1, 3, 3)):
            with self.assertRaisesRegex(ValueError, "faces must be indices of the shape"):
                self.mesh.add_faces(numpy.zeros(shape, int))

    def test_vertex_that_is_not_there_is_refused_by_build(self):
        for faces in (*forms([(0, 1, 9)]), array_of([(0, 0, 1, 9, 0, 0, 0, 0)], "I")):
            mesh = velmar.Mesh("mesh", [(0, 0, 0)] * 9)
            mesh.add_faces(faces)
            with self.assertRaisesRegex(velmar.MeshError, r"Mesh 'mesh': .*\(vertex index=9\)"):
                mesh.build()
            mesh.add_vertices(TRIANGLE)
            mesh.build()

    def test_texture_coordinates_that_are_not_there_are_refused_by_build(self):
        self.mesh.add_texture_coordinates([(0, 0)] * 4)
        self.mesh.add_faces([(0, 1, 2)], [(0, 1, 3)])
        self.mesh.build()
        self.mesh.set_texture_coordinates([(0, 0)] * 3)
        with self.assertRaisesRegex(velmar.MeshError, r"\(uv index=3\)"):
            self.mesh.build()

    def test_texture_indices_of_a_mesh_without_texture_coordinates_do_not_matter(self):
        self.mesh.add_faces([(0, 1, 2)], [(7, 8, 9)])
        self.mesh.build()


class WithoutNumpy(support.InFolder):
    def test_everything_but_its_arrays_works(self):
        status, output = support.run("""
import sys
sys.modules["numpy"] = None
import array, velmar
square = memoryview(array.array("f", [0, 0, 0, 1, 0, 0, 1, 1, 0])).cast("B").cast("f", (3, 3))
triangle = memoryview(array.array("I", [0, 0, 1, 2, 0, 0, 0, 6])).cast("B").cast("I", (1, 8))
mesh = velmar.Mesh("mesh", square, triangle)
print(mesh.num_vertices, mesh.num_faces, mesh.num_materials)
mesh.add_faces([(0, 1, 2)])
mesh.add_faces(memoryview(array.array("I", [0, 0, 1, 3, 0, 0, 0, 0])).cast("B").cast("I", (1, 8)))
try:
    mesh.build()
except ValueError as failure:
    print(failure)
""")
        self.assertEqual(output, "3 1 7\nMesh 'mesh': Triangle vertex index is out of bounds. (vertex index=3)\n")
        self.assertEqual(status, 0)


if __name__ == "__main__":
    unittest.main()
