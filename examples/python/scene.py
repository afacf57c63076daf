#!/usr/bin/env python3
"""Builds a complete scene and writes it: a box of two materials on the ground, in sunlight, seen by a camera.

Usage: scene.py LIBRARY [SCENE.xml]

LIBRARY is the path of libVelmarAPI.so or, for a Python on Windows, of VelmarAPI.dll. Nothing but the standard library is
used. Python can't catch what the library throws: a failure in a mesh file ends the program.
"""
import ctypes
import os
import sys
from ctypes import c_char_p, c_double, c_float, c_int32, c_uint32, c_void_p

# What the scene needs of the library: the result, then the arguments. A handle is a pointer; without these lines ctypes
# would take it for a 32-bit number.
FUNCTIONS = {
    "VelmarScene_Create": (c_void_p,),
    "VelmarScene_AddRenderSettings": (None, c_void_p, c_void_p),
    "VelmarScene_AddCamera": (None, c_void_p, c_void_p),
    "VelmarScene_AddTonemapping": (None, c_void_p, c_void_p),
    "VelmarScene_AddBackground": (None, c_void_p, c_void_p),
    "VelmarScene_AddMaterial": (None, c_void_p, c_void_p),
    "VelmarScene_AddMesh": (None, c_void_p, c_void_p),
    "VelmarScene_AddModel": (None, c_void_p, c_void_p),
    "VelmarScene_AddGroundPlane": (None, c_void_p, c_double, c_double),
    "VelmarScene_WriteToXML": (None, c_void_p, c_char_p),
    "VelmarScene_Delete": (None, c_void_p),
    "VelmarRenderSettings_Create": (c_void_p,),
    "VelmarRenderSettings_Width": (None, c_void_p, c_int32),
    "VelmarRenderSettings_Height": (None, c_void_p, c_int32),
    "VelmarRenderSettings_HaltSamplesPerPixel": (None, c_void_p, c_double),
    "VelmarCamera_Create": (c_void_p,),
    "VelmarCamera_SetPosition": (None, c_void_p, c_double, c_double, c_double),
    "VelmarCamera_SetForwards": (None, c_void_p, c_double, c_double, c_double),
    "VelmarCamera_SetUp": (None, c_void_p, c_double, c_double, c_double),
    "VelmarCamera_SetSensorWidth": (None, c_void_p, c_double),
    "VelmarCamera_SetLensSensorDistance": (None, c_void_p, c_double),
    "VelmarCamera_SetFocusDistance": (None, c_void_p, c_double),
    "VelmarTonemapping_Create": (c_void_p,),
    "VelmarTonemapping_SetType": (None, c_void_p, c_int32),
    "VelmarTonemapping_SetBurn": (None, c_void_p, c_double),
    "VelmarBackground_CreateSunSky": (c_void_p, c_double, c_double, c_double, c_char_p),
    "VelmarMaterial_CreateNode": (c_void_p, c_char_p),
    "VelmarMaterial_CreateDiffuse": (c_void_p, c_char_p, c_double, c_double, c_double),
    "VelmarMaterial_AddToNode": (None, c_void_p, c_void_p),
    "VelmarMesh_Create": (c_void_p, c_char_p),
    "VelmarMesh_AddMaterialUsed": (None, c_void_p, c_char_p),
    "VelmarMesh_AddVertices": (None, c_void_p, c_int32, c_void_p),
    "VelmarMesh_AddTextureCoordinates": (None, c_void_p, c_int32, c_void_p),
    "VelmarMesh_AddFaces": (None, c_void_p, c_int32, c_void_p),
    "VelmarMesh_Build": (c_uint32, c_void_p),
    "VelmarModel_Create": (c_void_p, c_char_p, c_void_p),
    "VelmarModel_SetMaterials": (None, c_void_p, c_int32, c_void_p),
    "VelmarModel_SetTransformation": (None, c_void_p, c_void_p, c_void_p, c_int32),
}
REINHARD = 1001

# The corners of a box of 2 x 2 x 2 metres on the ground.
CORNERS = [
    (-1, -1, 0), (1, -1, 0), (1, 1, 0), (-1, 1, 0),  # below
    (-1, -1, 2), (1, -1, 2), (1, 1, 2), (-1, 1, 2),  # above
]
# All sides use the same square of texture coordinates.
TEXTURE_COORDINATES = [(0, 0), (1, 0), (1, 1), (0, 1)]

TRIANGLE, QUAD = 0, 1
WALLS, LID = 0, 1
# A record begins with its kind; vertices, texture coordinates and the material follow.
SIDES = [
    (QUAD, 0, 3, 2, 1, 0, 1, 2, 3, WALLS),  # the bottom
    (QUAD, 0, 1, 5, 4, 0, 1, 2, 3, WALLS),  # and around
    (QUAD, 1, 2, 6, 5, 0, 1, 2, 3, WALLS),
    (QUAD, 2, 3, 7, 6, 0, 1, 2, 3, WALLS),
    (QUAD, 3, 0, 4, 7, 0, 1, 2, 3, WALLS),
    (TRIANGLE, 4, 5, 6, 0, 1, 2, LID),  # the top, of two triangles
    (TRIANGLE, 4, 6, 7, 0, 2, 3, LID),
]


def load(path):
    library = ctypes.CDLL(os.path.abspath(path))
    for name, (result, *arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    return library


def array(kind, rows):
    """The numbers of all rows one after the other, as the library takes them."""
    numbers = [number for row in rows for number in row]
    return (kind * len(numbers))(*numbers)


# Every node is added right after it is created. The scene owns it then, and its setters may still be called.


def add_render_settings(velmar, scene):
    settings = velmar.VelmarRenderSettings_Create()
    velmar.VelmarScene_AddRenderSettings(scene, settings)
    velmar.VelmarRenderSettings_Width(settings, 800)
    velmar.VelmarRenderSettings_Height(settings, 600)
    velmar.VelmarRenderSettings_HaltSamplesPerPixel(settings, 200)


def add_camera(velmar, scene):
    camera = velmar.VelmarCamera_Create()
    velmar.VelmarScene_AddCamera(scene, camera)
    velmar.VelmarCamera_SetPosition(camera, 0, -8, 2)
    velmar.VelmarCamera_SetForwards(camera, 0, 1, -0.125)
    velmar.VelmarCamera_SetUp(camera, 0, 0, 1)
    # As far from the lens as the sensor is wide: a field of view of 53 degrees.
    velmar.VelmarCamera_SetSensorWidth(camera, 0.036)
    velmar.VelmarCamera_SetLensSensorDistance(camera, 0.036)
    velmar.VelmarCamera_SetFocusDistance(camera, 8)


def add_tone_mapping(velmar, scene):
    tone_mapping = velmar.VelmarTonemapping_Create()
    velmar.VelmarScene_AddTonemapping(scene, tone_mapping)
    velmar.VelmarTonemapping_SetType(tone_mapping, REINHARD)
    velmar.VelmarTonemapping_SetBurn(tone_mapping, 10)


def add_light(velmar, scene):
    velmar.VelmarScene_AddBackground(scene, velmar.VelmarBackground_CreateSunSky(-1, -1, 1, b"captured-simulation"))


def add_material(velmar, scene, name, red, green, blue):
    node = velmar.VelmarMaterial_CreateNode(name)
    velmar.VelmarScene_AddMaterial(scene, node)
    velmar.VelmarMaterial_AddToNode(node, velmar.VelmarMaterial_CreateDiffuse(name, red, green, blue))
    return node


def add_box(velmar, scene):
    mesh = velmar.VelmarMesh_Create(b"Box")
    velmar.VelmarScene_AddMesh(scene, mesh)
    velmar.VelmarMesh_AddMaterialUsed(mesh, b"Walls")
    velmar.VelmarMesh_AddMaterialUsed(mesh, b"Lid")
    velmar.VelmarMesh_AddVertices(mesh, len(CORNERS), array(c_float, CORNERS))
    velmar.VelmarMesh_AddTextureCoordinates(mesh, len(TEXTURE_COORDINATES), array(c_float, TEXTURE_COORDINATES))
    velmar.VelmarMesh_AddFaces(mesh, len(SIDES), array(c_uint32, SIDES))
    velmar.VelmarMesh_Build(mesh)
    return mesh


def add_model(velmar, scene, mesh, materials):
    # A rotation by 90 degrees around z, row by row, and a position.
    rotation = array(c_float, [(0, -1, 0), (1, 0, 0), (0, 0, 1)])
    position = array(c_float, [(0.5, 0, 0)])
    model = velmar.VelmarModel_Create(b"Box", mesh)
    velmar.VelmarScene_AddModel(scene, model)
    velmar.VelmarModel_SetMaterials(model, len(materials), array(c_void_p, [materials]))
    velmar.VelmarModel_SetTransformation(model, rotation, position, 0)


def main():
    if not 2 <= len(sys.argv) <= 3:
        sys.exit(__doc__)
    velmar = load(sys.argv[1])
    path = sys.argv[2] if len(sys.argv) > 2 else "scene.xml"

    scene = velmar.VelmarScene_Create()
    add_render_settings(velmar, scene)
    add_camera(velmar, scene)
    add_tone_mapping(velmar, scene)
    add_light(velmar, scene)
    # In the order of the mesh's names.
    walls = add_material(velmar, scene, b"Walls", 0.6, 0.2, 0.1)
    lid = add_material(velmar, scene, b"Lid", 0.8, 0.8, 0.7)
    add_model(velmar, scene, add_box(velmar, scene), [walls, lid])
    velmar.VelmarScene_AddGroundPlane(scene, 0, 100)

    velmar.VelmarScene_WriteToXML(scene, path.encode())
    velmar.VelmarScene_Delete(scene)
    # A document that can't be written isn't reported.
    if not os.path.isfile(path):
        sys.exit(f"{path} couldn't be written")
    print(path)


if __name__ == "__main__":
    main()
