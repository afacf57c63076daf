#!/usr/bin/env python3
"""Writes a scene with a mesh made by numpy: rings of waves on water, under sun and sky.

Usage: numpy_mesh.py [SCENE.xml]

Needs the package velmar (see python/README.md) and numpy.
"""
import math
import sys

import numpy
import velmar


def waves(size, count):
    """A square grid of vertices whose heights are rings of waves."""
    x, y = numpy.meshgrid(numpy.linspace(-size, size, count), numpy.linspace(-size, size, count))
    distance = numpy.hypot(x, y)
    z = 0.3 * numpy.cos(3 * distance) * numpy.exp(-0.3 * distance)
    # C-contiguous float32, which is passed to the library without a copy.
    return numpy.ascontiguousarray(numpy.stack([x, y, z], axis=-1).reshape(-1, 3), numpy.float32)


def squares(count):
    """The four vertices of each square between the grid's lines, counter-clockwise as seen from above."""
    corner = numpy.arange(count * count).reshape(count, count)[:-1, :-1].reshape(-1, 1)
    return corner + [0, 1, count + 1, count]


def main():
    if len(sys.argv) > 2:
        sys.exit(__doc__)
    path = sys.argv[1] if len(sys.argv) > 1 else "waves.xml"
    count = 256
    with velmar.Scene() as scene:
        scene.add(velmar.RenderSettings(1280, 720, halt_samples_per_pixel=200))
        camera = scene.add(velmar.Camera(position=(0, -14, 6)))
        camera.look_at((0, 0, 0), fov=math.radians(50))
        scene.add(velmar.Tonemapping(velmar.TonemappingKind.REINHARD, burn=10))
        scene.add(velmar.Background.sun_sky((0, 0.8, 0.6)))

        mesh = scene.add(velmar.Mesh("Waves", waves(8, count), squares(count), normal_smoothing=True))
        water = scene.add(velmar.Material("Water", (0.1, 0.3, 0.4)))
        scene.add(velmar.Model("Waves", mesh, [water]))
        scene.write(path)
        print(f"{path}: {mesh.num_vertices} vertices, {mesh.num_faces} faces")


if __name__ == "__main__":
    main()
