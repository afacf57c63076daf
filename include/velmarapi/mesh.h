/* Made by `./dev generate` from api/functions/mesh.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a mesh node with an empty mesh.
 *
 * Filling: vertices, texture coordinates and names of materials in any order, faces with indices into them, then
 * VelmarMesh_Build once.
 *
 * The node is the host's until it is added to a scene or given to a model.
 * @param name  the node's name, UTF-8.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarMesh* VelmarMesh_Create(const char* name);

/** Whether the renderer shades with smoothed normals; false at creation. */
VELMAR_API void VelmarMesh_NormalSmoothing(VelmarMesh* mesh, VelmarBool smooth);
/** As VelmarMesh_NormalSmoothing. */
VELMAR_API void VelmarMesh_SetNormalSmoothing(VelmarMesh* mesh, VelmarBool smooth);

/** Whether the renderer subdivides by the size on the image; false at creation. */
VELMAR_API void VelmarMesh_ViewDependentSubdivision(VelmarMesh* mesh, VelmarBool view_dependent);

/** How often the renderer may subdivide; 0 at creation. */
VELMAR_API void VelmarMesh_MaxNumSubdivisions(VelmarMesh* mesh, unsigned max_num_subdivisions);

/**
 * Appends vertices.
 * @param count  how many; below 1 does nothing.
 * @param xyz    3 * count floats: x, y, z of each, in metres.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarMesh_AddVertices(VelmarMesh* mesh, int32_t count, const float* xyz);

/**
 * Appends faces. Indices aren't checked, here or in VelmarMesh_Build: keep them in range.
 * @param count  how many; below 1 does nothing.
 * @param words  count records of 8 or 10 words: one record after the other. A triangle has 8 words: 0, three vertex
 *               indices, three texture coordinate indices, a material index. A quad has 10: any other value than 0,
 *               four vertex indices, four texture coordinate indices, a material index. Without texture coordinates
 *               their indices are ignored.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarMesh_AddFaces(VelmarMesh* mesh, int32_t count, const uint32_t* words);

/**
 * Appends texture coordinates. Each call adds 1 to the number of texture coordinate sets, whatever the count.
 * @param count  how many pairs; below 1 appends none.
 * @param uv     2 * count floats: u, v of each.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarMesh_AddTextureCoordinates(VelmarMesh* mesh, int32_t count, const float* uv);

/**
 * Appends the name of a material that faces use by its index, unless the name is there.
 * @param name  the material's name, UTF-8.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarMesh_AddMaterialUsed(VelmarMesh* mesh, const char* name);

/**
 * Ends the filling: checks that the counts fit and computes the bounds. May be called again after more filling.
 * @return 1 + the greatest material index of a face; 1 for a mesh without faces.
 * @throws Velmar::VelmarException when the number of texture coordinates isn't a multiple of the number of sets.
 */
VELMAR_API uint32_t VelmarMesh_Build(VelmarMesh* mesh);

/**
 * Writes the mesh as an uncompressed vmmesh file, replacing the file.
 * @param path  the file's path, UTF-8.
 * @throws Velmar::VelmarException when the file can't be written or the mesh is inconsistent.
 */
VELMAR_API void VelmarMesh_WriteToFile(VelmarMesh* mesh, const char* path);

/**
 * Destroys a node that was never added to a scene or given to a model.
 *
 * The node is gone afterwards.
 * @param mesh  the node, or null.
 */
VELMAR_API void VelmarMesh_Delete(VelmarMesh* mesh);
