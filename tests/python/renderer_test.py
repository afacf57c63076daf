"""Rendering by the stub renderer library in the folder that the environment names."""
import os
import unittest

import support
import velmar
from support import TRIANGLE

FOLDER = os.environ.get("VELMAR_TEST_RENDERER")

PROGRAM = """
import gc, sys, velmar

def rendered_scene():
    scene = velmar.Scene()
    scene.add(velmar.RenderSettings(32, 16, super_sample_factor=1))
    scene.add(velmar.Camera(position=(0, -5, 1)))
    return scene
"""


def render(program):
    """Runs a program in the folder of the stub renderer library, which prints its calls."""
    program = f"import os\nos.chdir({FOLDER!r})\n{PROGRAM}{program}"
    status, output = support.run(program, "-u", VELMAR_FAKE_LIBRARY_RECORD="-")
    return status, [line for line in output.splitlines() if line.startswith(("interface ", "unloaded", "python: "))]


@unittest.skipUnless(FOLDER, "there is no renderer library")
class Rendering(unittest.TestCase):
    def test_scene_and_library_go_with_the_renderer(self):
        status, record = render("""
with rendered_scene() as scene:
    camera = scene.nodes[1]
    with velmar.Renderer(scene) as renderer:
        renderer.start()
        renderer.pause()
        renderer.resume()
        scene.close()
        camera.lens_radius = 0.5
        renderer.stop()
        print("python:", scene.closed, renderer.scene is scene)
    print("python:", scene.closed, camera.closed)
    renderer.close()
""")
        self.assertEqual(status, 0)
        self.assertEqual([line for line in record if "initialised" not in line and "given" not in line],
                         ["interface started", "interface paused", "interface resumed", "interface stopped",
                          "python: False True", "interface ended", "unloaded", "python: True True"])

    def test_render_is_stopped_before_its_renderer_goes(self):
        for end in ("renderer.close()", "del renderer; gc.collect()"):
            status, record = render(f"""
renderer = velmar.Renderer(rendered_scene())
renderer.start()
{end}
""")
            self.assertEqual((status, record[-4:]), (0, ["interface started", "interface stopped", "interface ended",
                                                         "unloaded"]))

    def test_scene_has_one_renderer(self):
        status, record = render("""
scene = rendered_scene()
renderer = velmar.Renderer(scene)
try:
    velmar.Renderer(scene)
except velmar.OwnershipError as failure:
    print("python:", failure)
renderer.close()
try:
    velmar.Renderer(scene)
except velmar.ClosedError as failure:
    print("python:", failure)
""")
        self.assertEqual((status, [line for line in record if line.startswith("python")]),
                         (0, ["python: the scene has a renderer already",
                              "python: <velmar.Scene> was closed, or destroyed with its owner"]))


class WithoutRenderer(support.InFolder):
    def test_missing_library_is_told_and_the_scene_stays(self):
        with velmar.Scene() as scene:
            scene.add(velmar.RenderSettings(32, 16, super_sample_factor=1))
            with self.assertRaisesRegex(velmar.RendererError, "Failed to load Velmar SDK DLL"):
                velmar.Renderer(scene)
            self.assertFalse(scene.closed)
            scene.write("scene.xml")

    def test_scene_without_what_a_render_needs_is_refused(self):
        with velmar.Scene() as scene:
            with self.assertRaisesRegex(ValueError, "render settings with a width"):
                velmar.Renderer(scene)
            settings = scene.add(velmar.RenderSettings(32, 16))
            with self.assertRaisesRegex(ValueError, "render settings with a super_sample_factor"):
                velmar.Renderer(scene)
            settings.super_sample_factor = 1
            mesh = scene.add(velmar.Mesh("mesh", TRIANGLE))
            mesh.add_faces([(0, 1, 7)])
            with self.assertRaisesRegex(velmar.MeshError, "vertex index=7"):
                velmar.Renderer(scene)
        with self.assertRaises(TypeError):
            velmar.Renderer(None)


if __name__ == "__main__":
    unittest.main()
