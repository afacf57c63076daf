#pragma once

/**
 * VelmarKit, a companion of VelmarAPI for every language. It has the functions of velmarapi.h with a status as result,
 * and more: mesh files, normals, reading what setters set, safe documents. It needs no VelmarAPI at run time, and works
 * with the handles of any VelmarAPI of the same version: a handle of one library may be passed to the other. Plain C99;
 * C++ may include it too.
 *
 * Status. Each function returns 0 or a VelmarKitStatus. VelmarKit_LastError gives the full text of the calling thread's
 * last failure. No exception leaves the kit.
 *
 * Handles. As in velmarapi.h. Null, a handle of another kind and the deletion of an object that another one owns are
 * refused. A handle of a deleted object is refused only if its memory shows that: keep no such handles.
 *
 * Text is UTF-8 and ends in a zero byte. Names must be valid UTF-8 without characters that XML forbids.
 *
 * Threads. As for velmarapi.h: one thread at a time for a scene and its nodes; different scenes are independent.
 */

#include "velmarkit/base.h"
#include "velmarkit/calls.h"
#include "velmarkit/getters.h"

/* ---- the library ---- */

/** The text of the calling thread's last failure, in UTF-8; empty if there was none. Valid until its next failure. */
VELMARKIT_API const char* VelmarKit_LastError(void);

/** The version of the library, as "1.0.0". */
VELMARKIT_API const char* VelmarKit_Version(void);

/** A short English name of the status, as "out of memory"; "unknown status" for any other number. */
VELMARKIT_API const char* VelmarKit_StatusName(int32_t status);

/**
 * Receives a line that the library reports, without its line end.
 * @param user     the pointer given to VelmarKit_SetLineCallback.
 * @param is_error 0 for a line of the standard output, 1 for one of the standard error stream.
 * @param line     the text, valid during the call. The callback must not throw and must not call the kit.
 */
typedef void (*VelmarKitLineCallback)(void* user, int32_t is_error, const char* line);

/**
 * Sets who receives the lines that the library would print, as "Num materials: 2"; null for the standard streams.
 * Applies to the whole process, but not to VelmarAPI. Set it while no other thread calls the kit.
 */
VELMARKIT_API int32_t VelmarKit_SetLineCallback(VelmarKitLineCallback callback, void* user);

/* ---- meshes ---- */

/**
 * Loads a mesh file into a new mesh node, which is named after the file. The format follows from the extension: obj,
 * ply, stl or vmmesh in any case. Polygons of PLY files with more than four corners become fans of triangles.
 * @param path  the file.
 * @param scale multiplies the positions, except those of vmmesh files; 1 to keep them.
 * @param mesh  receives the node, which the host owns.
 */
VELMARKIT_API int32_t VelmarKit_Mesh_LoadFile(const char* path, float scale, VelmarMesh** mesh);

/**
 * Loads a mesh file and adds to the scene: the mesh node, a material node for each material that its faces use, and a
 * model that places it at the origin. Materials of an OBJ file have the colours of its MTL files; others are light
 * grey.
 * @param scene where the nodes are added; all of them or, after a failure, none.
 * @param model receives the model, which the scene owns; may be null.
 */
VELMARKIT_API int32_t VelmarKit_Scene_LoadModel(VelmarScene* scene, const char* path, float scale, VelmarModel** model);

/** The number of elements of a mesh. */
typedef struct VelmarKitMeshCounts {
    uint64_t vertices;
    uint64_t normals; /**< 0, or as many as vertices */
    uint64_t triangles;
    uint64_t quads;
    uint64_t uv_pairs; /**< in all sets */
    uint32_t uv_sets;
    uint32_t materials; /**< names of materials used */
} VelmarKitMeshCounts;

/** Gets the number of elements. */
VELMARKIT_API int32_t VelmarKit_Mesh_GetCounts(const VelmarMesh* mesh, VelmarKitMeshCounts* counts);

/**
 * Replaces all normals, one for each vertex.
 * @param count as many as the mesh has vertices, or 0 to remove the normals.
 * @param xyz   3 * count floats; may be null if count is 0. They are stored as given and must be finite.
 */
VELMARKIT_API int32_t VelmarKit_Mesh_SetNormals(VelmarMesh* mesh, int32_t count, const float* xyz);

/**
 * Gets the mesh's own arrays, without a copy. A pointer is valid until the mesh is changed or destroyed, and null if
 * there are no elements. The counts may be null.
 *
 * Vertices and normals have 3 floats, UV pairs 2. Triangles have 7 words: three vertex indices, three UV indices, a
 * material index. Quads have 9 words: four vertex indices, four UV indices, a material index. UV index i of set s is
 * pair i * sets + s.
 */
VELMARKIT_API int32_t VelmarKit_Mesh_GetVertices(const VelmarMesh* mesh, const float** xyz, uint64_t* count);
VELMARKIT_API int32_t VelmarKit_Mesh_GetNormals(const VelmarMesh* mesh, const float** xyz, uint64_t* count);
VELMARKIT_API int32_t VelmarKit_Mesh_GetTextureCoordinates(const VelmarMesh* mesh, const float** uv, uint64_t* pairs);
VELMARKIT_API int32_t VelmarKit_Mesh_GetTriangles(const VelmarMesh* mesh, const uint32_t** words, uint64_t* count);
VELMARKIT_API int32_t VelmarKit_Mesh_GetQuads(const VelmarMesh* mesh, const uint32_t** words, uint64_t* count);

/**
 * Gets the bounding box as min x, y, z and max x, y, z. Before VelmarKit_Mesh_Build and without vertices it is empty:
 * its minimum is +infinity and its maximum -infinity.
 */
VELMARKIT_API int32_t VelmarKit_Mesh_GetBounds(const VelmarMesh* mesh, float bounds[6]);

/**
 * Gets the name of a material that the faces use.
 * @param index below the materials of VelmarKit_Mesh_GetCounts.
 * @param name  receives the text, which has no zero byte at its end; valid until the mesh is changed or destroyed.
 * @param size  receives its length in bytes.
 */
VELMARKIT_API int32_t VelmarKit_Mesh_GetMaterialName(const VelmarMesh* mesh, uint32_t index, const char** name,
                                                     uint64_t* size);

/**
 * Replaces the texture coordinates by several sets at once. Each set is given whole, as programs have them; the mesh
 * stores the pairs of an entry next to each other.
 * @param num_sets how many sets; 0 removes all texture coordinates.
 * @param count    how many pairs each set has.
 * @param sets     num_sets pointers to 2 * count floats.
 */
VELMARKIT_API int32_t VelmarKit_Mesh_SetTextureCoordinates(VelmarMesh* mesh, int32_t num_sets, int32_t count,
                                                           const float* const* sets);

/* ---- documents ---- */

/**
 * Reads a scene document and the mesh files that it names, as seen from the document. Nodes keep their order, their
 * UIDs and their references. Elements of classes of a renderer library are kept as text: such a scene can be changed
 * and written, and what the text describes is missing when it is rendered. Elements that nothing knows are left out.
 *
 * VelmarKit_Scene_WriteToXML writes the meshes too, so the scene may be written anywhere. Other files that a document
 * names by relative paths, as profiles of lamps, keep these paths.
 * @param path  the document.
 * @param scene receives the scene, which the host owns. Nothing is made after a failure. What is wrong in a document is
 *              reported as "PATH:LINE:COLUMN: error: ...".
 */
VELMARKIT_API int32_t VelmarKit_Scene_Read(const char* path, VelmarScene** scene);

/** What a node is: which handle type fits it. */
typedef enum VelmarKitNodeKind {
    VELMARKIT_NODE_OTHER = 0,           /**< of a class that has no handle type, as spheres */
    VELMARKIT_NODE_MESH = 1,            /**< VelmarMesh */
    VELMARKIT_NODE_MODEL = 2,           /**< VelmarModel */
    VELMARKIT_NODE_MATERIAL = 3,        /**< VelmarMaterialNode */
    VELMARKIT_NODE_BACKGROUND = 4,      /**< VelmarBackground */
    VELMARKIT_NODE_CAMERA = 5,          /**< VelmarCamera */
    VELMARKIT_NODE_RENDER_SETTINGS = 6, /**< VelmarRenderSettings */
    VELMARKIT_NODE_TONEMAPPING = 7      /**< VelmarTonemapping */
} VelmarKitNodeKind;

/**
 * Gets a node of a scene. Either pointer may be null.
 * @param index below VelmarKit_Scene_GetNodeCount, in the order of adding.
 * @param node  receives the handle, which the scene owns.
 * @param kind  receives a VelmarKitNodeKind.
 */
VELMARKIT_API int32_t VelmarKit_Scene_GetNode(const VelmarScene* scene, uint64_t index, void** node, int32_t* kind);

/**
 * Gets whether an option of a render is set: getters give 0 for one that isn't.
 * @param option the name of its element in a document, as "halt_time".
 */
VELMARKIT_API int32_t VelmarKit_RenderSettings_IsSet(const VelmarRenderSettings* settings, const char* option,
                                                     VelmarBool* is_set);

/* ---- nodes ---- */

/**
 * Gets the name of a node of any kind.
 * @param node a scene, mesh, model, material node, background, camera, render settings or tone mapping.
 * @param name receives the text, which has no zero byte at its end; valid until the node is changed or destroyed.
 * @param size receives its length in bytes.
 */
VELMARKIT_API int32_t VelmarKit_Node_GetName(const void* node, const char** name, uint64_t* size);

/**
 * Takes a node out of a scene. If nothing else holds it, the host owns it again. Models that use the node keep it.
 * @param node a mesh, model, material node, background, camera, render settings or tone mapping of the scene.
 */
VELMARKIT_API int32_t VelmarKit_Scene_RemoveNode(VelmarScene* scene, void* node);

/** Gets the number of nodes that were added to the scene and not removed. */
VELMARKIT_API int32_t VelmarKit_Scene_GetNodeCount(const VelmarScene* scene, uint64_t* count);

/** Destroys a node of any kind that the host owns; null does nothing. Cameras and backgrounds too. */
VELMARKIT_API int32_t VelmarKit_Node_Delete(void* node);

/**
 * Holds a node or scene for the host, so that it outlives the scene, models and renderer that hold it too. For bindings
 * with objects of their own: each retains the node that it refers to, and releases it at its end. An object that a
 * function creates is held by nothing yet.
 */
VELMARKIT_API int32_t VelmarKit_Node_Retain(void* node);

/** Takes back one VelmarKit_Node_Retain. The node is destroyed if nothing else holds it. Null does nothing. */
VELMARKIT_API int32_t VelmarKit_Node_Release(void* node);

/**
 * Turns the camera from its position towards a target.
 * @param x, y, z          the target, in metres; it must not be at the camera.
 * @param up_x, up_y, up_z the direction that is up in the image; it must not be parallel to the view.
 */
VELMARKIT_API int32_t VelmarKit_Camera_LookAt(VelmarCamera* camera, double x, double y, double z, double up_x,
                                              double up_y, double up_z);

/**
 * Sets the horizontal field of view: keeps the sensor's width and sets the distance of the lens.
 * @param radians above 0 and below pi.
 */
VELMARKIT_API int32_t VelmarKit_Camera_SetFieldOfView(VelmarCamera* camera, double radians);

/** Gets the horizontal field of view in radians, as it follows from the sensor's width and the distance of the lens. */
VELMARKIT_API int32_t VelmarKit_Camera_GetFieldOfView(const VelmarCamera* camera, double* radians);

/**
 * Gets the colour of a diffuse material node: the reflected part of red, green and blue, with gamma 2.2. Refused if the
 * node has none, as that of a renderer library may. Any of the pointers may be null.
 */
VELMARKIT_API int32_t VelmarKit_Material_GetColour(const VelmarMaterialNode* material, double* r, double* g, double* b);

/** Gets what VelmarKit_Background_CreateUniform was given. Refused for another kind of background. */
VELMARKIT_API int32_t VelmarKit_Background_GetUniform(const VelmarBackground* background, double* r, double* g,
                                                      double* b, double* strength);

/**
 * Gets what VelmarKit_Background_CreateSunSky was given. Refused for another kind of background.
 * @param model, size as in VelmarKit_Node_GetName.
 */
VELMARKIT_API int32_t VelmarKit_Background_GetSunSky(const VelmarBackground* background, double* x, double* y,
                                                     double* z, const char** model, uint64_t* size);

/** Gets the position of the first key frame; (0, 0, 0) if none was set. */
VELMARKIT_API int32_t VelmarKit_Camera_GetPosition(const VelmarCamera* camera, double* x, double* y, double* z);

/** Gets the path; as VelmarKit_Node_GetName. */
VELMARKIT_API int32_t VelmarKit_Tonemapping_GetResponseFunctionPath(const VelmarTonemapping* tonemapping,
                                                                    const char** path, uint64_t* size);

/** Gets the mesh of a model and the number of its materials. Any of the pointers may be null. */
VELMARKIT_API int32_t VelmarKit_Model_GetGeometry(const VelmarModel* model, VelmarMesh** mesh, uint64_t* num_materials);

/** Gets a material of a model; null if the model has none at this place. */
VELMARKIT_API int32_t VelmarKit_Model_GetMaterial(const VelmarModel* model, uint64_t index,
                                                  VelmarMaterialNode** material);

/**
 * Gets the placement of a model. Any of the pointers may be null.
 * @param rotation receives 9 numbers, row by row.
 * @param position receives 3 numbers, in metres.
 * @param index    the key frame; a new model has one, of index 0.
 */
VELMARKIT_API int32_t VelmarKit_Model_GetTransformation(const VelmarModel* model, double* rotation, double* position,
                                                        int32_t index);

/* ---- rendering ---- */

/**
 * Loads the renderer library from a folder of the host's choice, whatever the working directory.
 * @param folder contains the library: velmar_sdk or else velmar_rt_sdk, with the system's extension.
 */
VELMARKIT_API int32_t VelmarKit_Context_InitializeFrom(VelmarContext* context, const char* folder);
