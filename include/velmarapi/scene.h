/* Made by `./dev generate` from api/functions/scene.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes an empty scene named "Scene".
 *
 * The scene is the host's, to be given back to VelmarScene_Delete.
 * @return the scene.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarScene* VelmarScene_Create(void);

/**
 * Appends a node to the scene. The order of adding is the order in the document. A node that is added twice stands
 * twice. The seven functions differ in name only: each takes any node.
 *
 * The scene owns the node from then on.
 * @param scene  the scene.
 * @param model  the node; must not be null.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarScene_AddModel(VelmarScene* scene, VelmarModel* model);
/** As VelmarScene_AddModel. */
VELMAR_API void VelmarScene_AddBackground(VelmarScene* scene, VelmarBackground* background);
/** As VelmarScene_AddModel. */
VELMAR_API void VelmarScene_AddCamera(VelmarScene* scene, VelmarCamera* camera);
/** As VelmarScene_AddModel. */
VELMAR_API void VelmarScene_AddMaterial(VelmarScene* scene, VelmarMaterialNode* material);
/** As VelmarScene_AddModel. */
VELMAR_API void VelmarScene_AddMesh(VelmarScene* scene, VelmarMesh* mesh);
/** As VelmarScene_AddModel. */
VELMAR_API void VelmarScene_AddRenderSettings(VelmarScene* scene, VelmarRenderSettings* settings);
/** As VelmarScene_AddModel. */
VELMAR_API void VelmarScene_AddTonemapping(VelmarScene* scene, VelmarTonemapping* tonemapping);

/**
 * Writes the scene as an XML document, replacing the file. Each mesh goes as mesh_<checksum>.vmmesh into the folder
 * "<path without extension>_meshes" beside it, unless a file of that name is there. The scene isn't changed.
 *
 * Pass a path without a directory, or an absolute one: a relative path with a directory counts twice in the folder of
 * the meshes. Without a directory, the document names its meshes as seen from itself and can be moved with them.
 *
 * A document that can't be opened or written, as in a folder that doesn't exist or on a full disk, isn't reported; look
 * for the file.
 * @param scene  the scene.
 * @param path   the document's path, UTF-8; the usual ending is ".xml".
 * @throws Velmar::VelmarException when a mesh file or its folder can't be written, or a mesh is inconsistent.
 */
VELMAR_API void VelmarScene_WriteToXML(VelmarScene* scene, const char* path);

/**
 * Destroys the scene and every node that it alone holds.
 *
 * The scene and its nodes are gone afterwards. Not for a scene that a renderer was given.
 * @param scene  the scene, or null.
 */
VELMAR_API void VelmarScene_Delete(VelmarScene* scene);
