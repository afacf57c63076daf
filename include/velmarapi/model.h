/* Made by `./dev generate` from api/functions/model.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a model: a piece of geometry in its place. It stands at the origin, not rotated and without materials.
 *
 * The node is the host's until it is added to a scene. The model holds the mesh from then on: don't delete the mesh.
 * @param name      the node's name, UTF-8.
 * @param geometry  the mesh; must not be null. Add it to the scene too, and before the document is written.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarModel* VelmarModel_Create(const char* name, VelmarMesh* geometry);

/**
 * Replaces the model's materials.
 *
 * Prints: "Num materials: " and the count, on the standard output.
 *
 * The model holds the materials from then on. Those that it held are released: with no other holder they are destroyed.
 * @param count      how many; below 1 for none.
 * @param materials  count handles: the nodes; null entries are kept as such. The n-th serves the faces of material
 *                   index n, so give as many as VelmarMesh_Build returned. Add them to the scene too.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarModel_SetMaterials(VelmarModel* model, int32_t count, VelmarMaterialNode** materials);

/**
 * Places the model.
 * @param rotation  9 floats: a 3 by 3 matrix row after row. A model has one for its whole motion: the last call counts.
 * @param position  3 floats: x, y, z, in metres.
 * @param index     the key frame that takes the position; a model is created with one, of index 0. A negative index
 *                  sets the rotation alone; an index past the end ends the process with an assertion.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarModel_SetTransformation(VelmarModel* model, const float* rotation, const float* position,
                                              int32_t index);

/**
 * Destroys a node that was never added to a scene.
 *
 * The node is gone afterwards, and with it its mesh and materials unless a scene or another model holds them.
 * @param model  the node, or null.
 */
VELMAR_API void VelmarModel_Delete(VelmarModel* model);
