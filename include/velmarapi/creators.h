/* Made by `./dev generate` from api/functions/creators.toml; make changes there. */
#pragma once

#include "types.h"

/*
 * Ready-made pieces of scene, for hosts that want something to look at. What is made belongs to the scene.
 */

/**
 * Adds a light grey material node named "Default".
 * @throws std::bad_alloc
 */
VELMAR_API void velmar_create_default_material(VelmarScene* scene);

/**
 * Adds a background of sun and sky, with the sun in the direction (1, 1, 1).
 * @throws std::bad_alloc
 */
VELMAR_API void velmar_create_sunsky(VelmarScene* scene);
/** As velmar_create_sunsky. */
VELMAR_API void velmar_create_dummy_lighting(VelmarScene* scene);

/**
 * Adds a mesh node named "Mesh": a square of two metres by two around the origin, at z = 0. No model shows it.
 * @throws std::bad_alloc
 */
VELMAR_API void velmar_create_plane(VelmarScene* scene);

/**
 * Adds a square of ground: a mesh named "Mesh", then a light grey material and a model, both named "GroundPlane".
 * @param z          its height, in metres.
 * @param half_size  half the length of its sides, in metres; a negative one reverses its winding.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarScene_AddGroundPlane(VelmarScene* scene, double z, double half_size);

/**
 * Writes a mesh as text for people to read, replacing the file: the name, vertices, texture coordinate pairs, triangles
 * and quads. Nothing reads it back.
 *
 * A file that can't be opened or written isn't reported.
 * @param mesh  the node.
 * @param path  the file's path as the C runtime's own file functions take it, which on Windows isn't UTF-8.
 */
VELMAR_API void velmar_write_mesh_to_file(VelmarMesh* mesh, const char* path);
