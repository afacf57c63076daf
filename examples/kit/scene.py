#!/usr/bin/env python3
"""Builds a complete scene and writes it, by the package velmar: a box of two materials on the ground, in sunlight, seen by
a camera.

Usage: scene.py [SCENE.xml]

Needs the package velmar (see python/README.md).
"""
import sys

import velmar

# The corners of a box of 2 x 2 x 2 metres on the ground.
CORNERS = [(-1, -1, 0), (1, -1, 0), (1, 1, 0), (-1, 1, 0), (-1, -1, 2), (1, -1, 2), (1, 1, 2), (-1, 1, 2)]
# The bottom, and around; and the top, of two triangles.
WALLS = [(0, 3, 2, 1), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7)]
LID = [(4, 5, 6), (4, 6, 7)]
# All sides use the same square of texture coordinates.
SQUARE = [(0, 0), (1, 0), (1, 1), (0, 1)]


def write_scene(path):
    with velmar.Scene() as scene:
        scene.add(velmar.RenderSettings(800, 600, halt_samples_per_pixel=200))
        # As far from the lens as the sensor is wide: a field of view of 53 degrees.
        scene.add(velmar.Camera(position=(0, -8, 2), forwards=(0, 1, -0.125), up=(0, 0, 1), sensor_width=0.036,
                                lens_sensor_distance=0.036, focus_distance=8))
        scene.add(velmar.Tonemapping(velmar.TonemappingKind.REINHARD, burn=10))
        scene.add(velmar.Background.sun_sky((-1, -1, 1)))
        brick = scene.add(velmar.Material("Walls", (0.6, 0.2, 0.1)))
        paint = scene.add(velmar.Material("Lid", (0.8, 0.8, 0.7)))
        box = scene.add(velmar.Mesh("Box", CORNERS, texture_coordinates=SQUARE, material_names=["Walls", "Lid"]))
        box.add_faces(WALLS, [(0, 1, 2, 3)] * len(WALLS), 0)
        box.add_faces(LID, [(0, 1, 2), (0, 2, 3)], 1)
        # A rotation by 90 degrees around z, row by row.
        scene.add(velmar.Model("Box", box, [brick, paint], position=(0.5, 0, 0),
                               rotation=[(0, -1, 0), (1, 0, 0), (0, 0, 1)]))
        scene.add_ground_plane(0, 100)
        scene.write(path)


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "scene.xml"
    try:
        write_scene(path)
    except velmar.VelmarError as error:
        sys.exit(str(error))
    print(path)


if __name__ == "__main__":
    main()
