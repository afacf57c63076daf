"""`velmar export` of whole scenes in other formats."""
import base64
import json
import struct
import unittest

from support import EMULATOR, ToolTest

# Two models of one triangle below a node that is turned, a red material, and a camera.
POSITIONS = struct.pack("<9f", 0, 0, 0, 1, 0, 0, 0, 1, 0)
SCENE = {
    "asset": {"version": "2.0"},
    "scene": 0,
    "scenes": [{"nodes": [0, 3]}],
    "nodes": [
        {"name": "group", "translation": [10, 0, 0], "children": [1, 2]},
        {"name": "left", "mesh": 0},
        {"name": "right", "mesh": 0, "translation": [0, 2, 0], "scale": [3, 3, 3]},
        {"name": "eye", "camera": 0, "translation": [10, 0, 8]},
    ],
    "cameras": [{"type": "perspective", "perspective": {"yfov": 0.6, "znear": 0.1, "aspectRatio": 1}}],
    "materials": [{"name": "röd", "pbrMetallicRoughness": {"baseColorFactor": [1, 0.25, 0, 1]}}],
    "meshes": [{"name": "triangle", "primitives": [{"attributes": {"POSITION": 0}, "material": 0}]}],
    "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3", "min": [0, 0, 0], "max": [1, 1, 0]}],
    "bufferViews": [{"buffer": 0, "byteLength": len(POSITIONS)}],
    "buffers": [{"byteLength": len(POSITIONS),
                 "uri": "data:application/octet-stream;base64," + base64.b64encode(POSITIONS).decode()}],
    "animations": [],
}


class WholeScenes(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("scene.gltf", json.dumps(SCENE))

    def numbers(self, node, path):
        return [float(number) for number in node.findtext(path).split()]

    @unittest.skipUnless(EMULATOR, "a build without the library")
    def test_a_build_without_the_library_says_so(self):
        self.expect_failure(["export", "scene.gltf", "out.xml"],
                            r"velmar: scene\.gltf: scenes of this format aren't read by this build of velmar[^\n]+")

    @unittest.skipIf(EMULATOR, "a build without the library")
    def test_nodes_become_models_that_share_meshes(self):
        code, output, errors = self.run_tool("export", "--no-ground", "scene.gltf", "out.xml")
        self.assertEqual((code, errors), (0, ""))
        self.assertTrue(output.startswith("scene.gltf: 2 models, 2 triangles, 0 quads, 1 material\n"))
        scene = self.read_document("out.xml")
        self.assertEqual([model.findtext("name") for model in scene.iterfind("model2")], ["left", "right"])
        self.assertEqual(len(scene.findall("mesh")), 1)
        # The height of the file is y, that of the scene z.
        self.assertEqual([self.numbers(model, "pos") for model in scene.iterfind("model2")], [[10, 0, 0], [10, 0, 2]])
        self.assertEqual([self.numbers(model, "rotation/matrix") for model in scene.iterfind("model2")],
                         [[1, 0, 0, 0, 0, -1, 0, 1, 0], [3, 0, 0, 0, 0, -3, 0, 3, 0]])
        material = scene.find("material")
        self.assertEqual((material.findtext("name"), self.numbers(material, "diffuse/albedo/constant/rgb/rgb")),
                         ("röd", [1, 0.25, 0]))

    @unittest.skipIf(EMULATOR, "a build without the library")
    def test_the_camera_of_the_scene_is_taken_unless_another_is_asked_for(self):
        self.run_tool("export", "-q", "--no-ground", "scene.gltf", "out.xml")
        camera = self.read_document("out.xml").find("camera")
        self.assertEqual((self.numbers(camera, "keyframe/pos"), self.numbers(camera, "forwards")), ([10, -8, 0], [0, 1, 0]))
        self.run_tool("export", "-q", "--no-ground", "--camera", "0,0,9", "scene.gltf", "out.xml")
        self.assertEqual(self.numbers(self.read_document("out.xml").find("camera"), "keyframe/pos"), [0, 0, 9])

    @unittest.skipIf(EMULATOR, "a build without the library")
    def test_a_scene_is_placed_as_a_whole(self):
        self.run_tool("export", "-q", "--no-ground", "scene.gltf", "--at", "0,0,5", "--on-ground", "--scale", "2", "out.xml")
        self.assertEqual([self.numbers(model, "pos") for model in self.read_document("out.xml").iterfind("model2")],
                         [[20, 0, 5], [20, 0, 9]])
        self.assertEqual(self.numbers(self.read_document("out.xml").find("camera"), "up"), [0, 0, 1])

    @unittest.skipIf(EMULATOR, "a build without the library")
    def test_what_has_no_place_is_listed(self):
        scene = dict(SCENE, images=[{"uri": "a.png"}], textures=[{"source": 0}])
        scene["materials"] = [{"pbrMetallicRoughness": {"baseColorTexture": {"index": 0}}}]
        self.write("scene.gltf", json.dumps(scene))
        self.assertIn("velmar: note: scene.gltf: left out: 1 texture\n",
                      self.run_tool("export", "scene.gltf", "out.xml")[2])

    @unittest.skipIf(EMULATOR, "a build without the library")
    def test_a_damaged_scene_is_reported(self):
        self.write("scene.gltf", "{")
        self.expect_failure(["export", "scene.gltf", "out.xml"], r"velmar: [^\n]*scene\.gltf[^\n]+")
        self.assertNotIn("out.xml", self.files())
