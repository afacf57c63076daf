#pragma once

#include <stdint.h>

#ifdef __cplusplus
#define VELMAR_API extern "C"
#else
#define VELMAR_API extern
#endif

/** A truth value of one byte: 0 is false, anything else is true. */
typedef uint8_t VelmarBool;

/** A scene: the root that owns the nodes added to it. */
typedef struct VelmarScene VelmarScene;

/** A mesh node: geometry with its subdivision settings. */
typedef struct VelmarMesh VelmarMesh;

/** A tone mapping node: how linear light becomes an image. */
typedef struct VelmarTonemapping VelmarTonemapping;

/** A camera node. */
typedef struct VelmarCamera VelmarCamera;

/** A render settings node. */
typedef struct VelmarRenderSettings VelmarRenderSettings;

/** A material node: gives a material its place in a scene. */
typedef struct VelmarMaterialNode VelmarMaterialNode;

/** A material, the content of a material node. */
typedef struct VelmarMaterial VelmarMaterial;

/** A background node. */
typedef struct VelmarBackground VelmarBackground;

/** A model node: places geometry in a scene. */
typedef struct VelmarModel VelmarModel;

/** A context: the loaded renderer library. */
typedef struct VelmarContextHandle VelmarContext;

/** A renderer: one render of one scene by the renderer library. */
typedef struct VelmarRenderer VelmarRenderer;
