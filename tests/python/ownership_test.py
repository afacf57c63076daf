"""Ownership: what is destroyed when, and the errors of using a destroyed object."""
import copy
import ctypes
import gc
import pickle
import unittest

import support
import velmar
from support import TRIANGLE

MAKERS = [lambda: velmar.Mesh("mesh"), lambda: velmar.Material("material"), velmar.RenderSettings, velmar.Tonemapping,
          velmar.Camera, velmar.Background.uniform, velmar.Scene]


class Nodes(unittest.TestCase):
    def released(self, calls):
        return [call[0].value for call in calls]

    def test_node_of_nobody_is_released_when_it_is_closed_once(self):
        for make in MAKERS:
            node = make()
            handle = node._handle.value
            with support.recorded("VelmarKit_Node_Release") as calls:
                node.close()
                node.close()
            self.assertEqual(self.released(calls), [handle])
            self.assertTrue(node.closed)

    def test_node_of_nobody_is_released_with_its_last_reference(self):
        for make in MAKERS:
            with support.recorded("VelmarKit_Node_Release") as calls:
                make()
                gc.collect()
            self.assertEqual(len(calls), 1)

    def test_node_of_a_scene_is_not_closed(self):
        for make in MAKERS[:-1]:
            with velmar.Scene() as scene:
                node = scene.add(make())
                with self.assertRaisesRegex(velmar.OwnershipError, "is destroyed with its owner"):
                    node.close()
                self.assertFalse(node.closed)

    def test_node_is_released_by_its_scene(self):
        for make in MAKERS[:-1]:
            with support.recorded("VelmarKit_Node_Release") as calls, velmar.Scene() as scene:
                node = scene.add(make())
                handles = [scene._handle.value, node._handle.value]
                scene.close()
                self.assertEqual(self.released(calls), handles)

    def test_node_is_gone_with_its_scene(self):
        with velmar.Scene() as scene:
            camera = scene.add(velmar.Camera())
            mesh = scene.add(velmar.Mesh("mesh", TRIANGLE))
            camera.lens_radius = 0.5
        self.assertTrue(camera.closed and mesh.closed and scene.closed)
        for use in (lambda: setattr(camera, "lens_radius", 1), lambda: mesh.build(), lambda: mesh.add_vertices(TRIANGLE),
                    lambda: velmar.Model("model", mesh), lambda: scene.add(velmar.Camera()),
                    lambda: scene.add_ground_plane(),
                    lambda: scene.write("scene.xml"), scene.__enter__):
            with self.assertRaisesRegex(velmar.ClosedError, "was closed"):
                use()
        camera.close()
        scene.close()

    def test_every_attribute_of_a_closed_object_raises(self):
        with velmar.Scene() as scene:
            mesh = scene.add(velmar.Mesh("mesh", TRIANGLE))
            model = scene.add(velmar.Model("model", mesh, [scene.add(velmar.Material("red"))]))
            nodes = [scene, model, *scene.nodes, *(scene.add(make()) for make in MAKERS[2:-1])]
        for node in nodes:
            names = [name for name in dir(type(node)) if name[0] != "_" and name not in ("close", "closed")]
            self.assertGreater(len(names), 0)
            for name in names:
                with self.assertRaises(velmar.ClosedError, msg=name):
                    getattr(node, name)

    def test_removed_node_is_the_hosts_again(self):
        with velmar.Scene() as scene, velmar.Scene() as other:
            camera = scene.add(velmar.Camera(lens_radius=0.25))
            scene.remove(camera)
            self.assertEqual((scene.nodes, camera.lens_radius), ((), 0.25))
            other.add(camera)
            with self.assertRaisesRegex(velmar.BadArgumentError, "isn't in this scene"):
                scene.remove(camera)

    def test_unknown_attributes_are_refused(self):
        for make in MAKERS:
            node = make()
            with self.assertRaisesRegex(AttributeError, f"a {type(node).__name__} has no attribute 'lens_radus'"):
                node.lens_radus = 3

    def test_background_is_made_by_its_functions_alone(self):
        for arguments in ((), ("sky",), (5,)):
            with self.assertRaisesRegex(TypeError, "Background.uniform or Background.sun_sky"):
                velmar.Background(*arguments)

    def test_node_is_gone_with_the_last_reference_to_its_scene(self):
        camera = velmar.Scene().add(velmar.Camera())
        gc.collect()
        self.assertTrue(camera.closed)

    def test_scene_keeps_nodes_that_nobody_else_refers_to(self):
        with velmar.Scene() as scene:
            mesh = scene.add(velmar.Mesh("mesh", TRIANGLE))
            scene.add(velmar.Model("model", mesh, [scene.add(velmar.Material("red"))]))
            del mesh
            gc.collect()
            self.assertEqual([type(node).__name__ for node in scene.nodes], ["Mesh", "Material", "Model"])
            self.assertFalse(any(node.closed for node in scene.nodes))

    def test_node_belongs_to_one_scene_and_stands_there_once(self):
        with velmar.Scene() as scene, velmar.Scene() as other:
            camera = scene.add(velmar.Camera())
            for another in (scene, other):
                with self.assertRaisesRegex(velmar.OwnershipError, "was added to a scene already"):
                    another.add(camera)
            with self.assertRaisesRegex(TypeError, "a Scene isn't a node"):
                scene.add(other)
            with self.assertRaisesRegex(TypeError, "a str isn't a node"):
                scene.add("camera")
            self.assertEqual(scene.nodes, (camera,))

    def test_node_is_not_copied(self):
        for make in (copy.copy, copy.deepcopy, pickle.dumps):
            with self.assertRaisesRegex(TypeError, "can't be copied"):
                make(velmar.Mesh("mesh"))

    def test_failed_constructors_leave_nothing_behind(self):
        mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)], materials=1)
        for arguments, options in (((mesh, [velmar.Material("red")]), {}), ((mesh, ["red"]), {}),
                                   ((mesh,), {"position": (1, 2)}), ((mesh,), {"rotation": [1, 2, 3]})):
            with self.assertRaises((TypeError, ValueError)):
                velmar.Model("model", *arguments, **options)
            gc.collect()
            self.assertFalse(mesh.closed)
        with self.assertRaises(TypeError):
            velmar.Camera(position="here")
        with self.assertRaises(TypeError):
            velmar.Mesh(5)


class Models(unittest.TestCase):
    def setUp(self):
        self.mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)])
        self.red, self.blue = velmar.Material("red"), velmar.Material("blue")

    def test_mesh_and_materials_go_with_their_last_model(self):
        one = velmar.Model("one", self.mesh, [self.red])
        other = velmar.Model("other", self.mesh, [self.red, self.blue])
        one.close()
        self.assertFalse(self.mesh.closed or self.red.closed)
        other.close()
        self.assertTrue(self.mesh.closed and self.red.closed and self.blue.closed)

    def test_mesh_of_a_scene_stays_without_its_model(self):
        with velmar.Scene() as scene:
            scene.add(self.mesh)
            velmar.Model("model", self.mesh).close()
            self.assertFalse(self.mesh.closed)
            self.mesh.build()

    def test_material_goes_when_its_last_model_takes_others(self):
        model = velmar.Model("model", self.mesh, [self.red, self.red])
        model.materials = [self.blue, self.red]
        self.assertFalse(self.red.closed)
        model.materials = [self.blue]
        self.assertTrue(self.red.closed)
        self.assertFalse(self.blue.closed)
        with self.assertRaises(velmar.ClosedError):
            model.materials = [self.red]
        self.assertEqual(model.materials, (self.blue,))

    def test_material_of_a_scene_stays_when_its_model_takes_others(self):
        with velmar.Scene() as scene:
            scene.add(self.red)
            model = velmar.Model("model", self.mesh, [self.red])
            model.materials = ()
            self.red.colour = (1, 0, 0)
            self.assertFalse(self.red.closed)

    def test_too_few_materials_are_refused(self):
        mesh = velmar.Mesh("mesh", TRIANGLE, [(0, 1, 2)], materials=1)
        with self.assertRaisesRegex(ValueError, "use 2 materials, and 1 were given"):
            velmar.Model("model", mesh, [self.red])
        model = velmar.Model("model", mesh)
        with self.assertRaisesRegex(ValueError, "use 2 materials, and 1 were given"):
            model.materials = [self.red]
        model.materials = [self.red, self.blue]

    def test_what_is_not_a_mesh_or_material_is_refused(self):
        for mesh in (None, self.red, "mesh"):
            with self.assertRaisesRegex(TypeError, "mesh must be a Mesh"):
                velmar.Model("model", mesh)
        for material in (None, self.mesh, "red"):
            with self.assertRaisesRegex(TypeError, "materials must be of the class Material"):
                velmar.Model("model", self.mesh, [material])


class Functions(unittest.TestCase):
    def test_handle_of_another_kind_is_refused(self):
        functions = velmar.library()
        with velmar.Scene() as scene, self.assertRaises(ctypes.ArgumentError):
            functions.VelmarKit_Scene_AddMesh(scene._handle, scene._handle)

    def test_process_ends_cleanly_with_everything_open(self):
        status, output = support.run("""
import velmar
scene = velmar.Scene()
mesh = scene.add(velmar.Mesh("mesh", [(0, 0, 0)]))
model = velmar.Model("model", velmar.Mesh("other"), [velmar.Material("red")])
camera, settings = velmar.Camera(), velmar.RenderSettings()
""", "-X", "dev")
        self.assertEqual((status, output), (0, "Num materials: 1\n"))


if __name__ == "__main__":
    unittest.main()
