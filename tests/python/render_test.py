"""Pictures by the preview renderer, as arrays of numpy."""
import os
import pathlib
import unittest

import support
import velmar
from support import numpy, with_numpy

# Where the package finds it: next to the library.
HAS_PREVIEW = (pathlib.Path(os.environ.get("VELMAR_LIBRARY", "")).parent / "vs2017_64").is_dir()
SQUARE = [(-1, 0, -1), (1, 0, -1), (1, 0, 1), (-1, 0, 1)]


def lit_scene(strength=1.0, **settings):
    """A camera and even light that is white."""
    scene = velmar.Scene()
    scene.add(velmar.RenderSettings(24, 16, super_sample_factor=1, vignetting=False, **settings))
    scene.add(velmar.Camera(position=(0, -10, 0), lens_radius=0.0001))
    scene.add(velmar.Tonemapping(kind=velmar.TonemappingKind.LINEAR, scale=1.0))
    scene.add(velmar.Background.uniform((1, 1, 1), strength))
    return scene


def add_square(scene, colour=(0.5, 0.5, 0.5)):
    mesh = scene.add(velmar.Mesh("square", SQUARE, [(0, 1, 2, 3)]))
    material = scene.add(velmar.Material("grey", colour))
    scene.add(velmar.Model("square", mesh, [material]))
    return material


@with_numpy
@unittest.skipUnless(HAS_PREVIEW, "there is no preview renderer")
class Render(support.InFolder):
    def test_picture_is_linear_light_and_what_a_display_shows(self):
        picture = velmar.render(lit_scene(strength=0.25), samples=2)
        self.assertEqual((picture.light.shape, picture.light.dtype), ((16, 24, 3), numpy.float32))
        self.assertEqual((picture.pixels.shape, picture.pixels.dtype), ((16, 24, 3), numpy.uint8))
        self.assertLess(abs(picture.light - 0.25).max(), 1e-6)
        # 255 (1.055 * 0.25^(1 / 2.4) - 0.055), as sRGB encodes it.
        self.assertEqual(set(picture.pixels.flat), {137})

    def test_material_reflects_its_part_of_the_light(self):
        scene = lit_scene()
        material = add_square(scene, (0.5, 0.25, 1.0))
        light, _ = velmar.render(scene, samples=4)
        self.assertLess(abs(light[8, 12] - [0.5 ** 2.2, 0.25 ** 2.2, 1.0]).max(), 1e-5)
        self.assertLess(abs(light[0, 0] - 1).max(), 1e-5)
        material.colour = (1.0, 1.0, 0.5)
        light, _ = velmar.render(scene, samples=4)
        self.assertLess(abs(light[8, 12] - [1.0, 1.0, 0.5 ** 2.2]).max(), 1e-5)

    def test_first_row_is_the_upper_one(self):
        scene = lit_scene()
        add_square(scene)
        scene.nodes[1].look_at((0, 0, 2))
        light = velmar.render(scene, samples=1).light
        self.assertEqual(light[0].min(), 1)
        self.assertLess(light[-4:].min(), 0.5)

    def test_scene_is_still_the_callers(self):
        scene = lit_scene()
        add_square(scene)
        before = support.document(scene)
        first = velmar.render(scene, samples=4).light
        self.assertFalse(scene.closed)
        self.assertEqual([node.tag for node in support.document(scene)], [node.tag for node in before])
        self.assertTrue((velmar.render(scene, samples=4).light == first).all())
        scene.close()
        with self.assertRaises(velmar.ClosedError):
            velmar.render(scene)

    def test_equal_seeds_give_equal_pictures_for_any_number_of_threads(self):
        scene = lit_scene()
        # Two sides of a corner light each other, with noise.
        add_square(scene)
        mesh = scene.add(velmar.Mesh("floor", [(-1, 0, -1), (-1, -2, -1), (1, -2, -1), (1, 0, -1)], [(0, 1, 2, 3)]))
        scene.add(velmar.Model("floor", mesh, [scene.nodes[5]]))
        scene.nodes[1].position = (0, -10, 5)
        scene.nodes[1].look_at((0, 0, 0))
        one, two, other = (velmar.render(scene, samples=2, **options).light
                           for options in ({"threads": 1}, {"threads": 3}, {"seed": 7}))
        self.assertTrue((one == two).all())
        self.assertFalse((one == other).all())

    def test_samples_are_those_of_the_settings_unless_given(self):
        counts = []
        scene = lit_scene(halt_samples_per_pixel=200000)
        velmar.render(scene, samples=1, progress=counts.append)
        self.assertLessEqual(max(counts, default=0), 1)
        velmar.render(scene, seconds=0.3, progress=counts.append)
        self.assertTrue(counts)

    def test_exception_of_the_callback_ends_the_render(self):
        def fail(samples):
            raise KeyboardInterrupt

        scene = lit_scene(halt_time=1000.0)
        with self.assertRaises(KeyboardInterrupt):
            velmar.render(scene, progress=fail)
        self.assertEqual(velmar.render(scene, samples=1).light.shape, (16, 24, 3))

    def test_scene_without_what_a_render_needs_is_refused(self):
        with self.assertRaises(TypeError):
            velmar.render(None)
        scene = velmar.Scene()
        with self.assertRaisesRegex(ValueError, "render settings with a width"):
            velmar.render(scene)
        scene.add(velmar.RenderSettings(8, 8))
        with self.assertRaisesRegex(ValueError, "needs a camera"):
            velmar.render(scene)
        scene.add(velmar.Camera(position=(0, -1, 0)))
        for options, text in (({"samples": 0}, "samples must be above 0"), ({"seconds": -1}, "seconds must be above 0"),
                              ({"threads": 1000}, "threads must be from 0 to 256"), ({"seed": -1}, "seed must be from 0")):
            with self.assertRaisesRegex(ValueError, text):
                velmar.render(scene, **options)

    def test_no_file_is_written(self):
        velmar.render(lit_scene(), samples=1)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_missing_preview_is_reported_and_the_scene_stays(self):
        status, output = support.run("""
import velmar
scene = velmar.Scene()
scene.add(velmar.RenderSettings(8, 8))
scene.add(velmar.Camera(position=(0, -1, 0)))
try:
    velmar.render(scene)
except velmar.RendererError as failure:
    print(failure, scene.closed)
""", VELMAR_PREVIEW=str(self.folder))
        self.assertEqual(status, 0)
        self.assertIn("The preview renderer wasn't found; name its folder in the environment variable VELMAR_PREVIEW.",
                      output)
        self.assertTrue(output.endswith("False\n"))

    def test_file_that_is_no_renderer_library_is_reported(self):
        (self.folder / "velmar_rt_sdk.so").write_text("text")
        status, output = support.run("""
import velmar
scene = velmar.Scene()
scene.add(velmar.RenderSettings(8, 8))
scene.add(velmar.Camera(position=(0, -1, 0)))
try:
    velmar.render(scene)
except velmar.RendererError as failure:
    print("failed:", failure)
scene.write("scene.xml")
""", VELMAR_PREVIEW=str(self.folder))
        self.assertEqual(status, 0)
        self.assertIn("failed: ", output)


class WithoutNumpy(unittest.TestCase):
    def test_missing_numpy_is_reported(self):
        status, output = support.run("""
import sys
sys.modules["numpy"] = None
import velmar
try:
    velmar.render(velmar.Scene())
except ImportError as failure:
    print(failure)
""")
        self.assertEqual((status, output), (0, "velmar.render needs numpy, which isn't installed\n"))


if __name__ == "__main__":
    unittest.main()
