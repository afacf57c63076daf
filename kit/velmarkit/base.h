#pragma once

/* What the headers of VelmarKit share. */

#include "velmarapi.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define VELMARKIT_API extern "C"
#else
#define VELMARKIT_API extern
#endif

/** What a call of the kit returns. */
typedef enum VelmarKitStatus {
    VELMARKIT_SUCCESS = 0,
    VELMARKIT_BAD_ARGUMENT = 1,  /**< an argument is null, out of range, or a handle of another kind; nothing changed */
    VELMARKIT_OUT_OF_MEMORY = 2, /**< memory is exhausted; every handle is still alive */
    VELMARKIT_FILE_ERROR = 3,    /**< a file or folder can't be read or written */
    VELMARKIT_MESH_ERROR = 4,    /**< a mesh or mesh file isn't valid */
    VELMARKIT_DOCUMENT_ERROR = 5, /**< the scene can't be written as a document */
    VELMARKIT_RENDERER_ERROR = 6, /**< the renderer library is missing or failed */
    VELMARKIT_INTERNAL_ERROR = 7  /**< a failed assertion or an unknown exception */
} VelmarKitStatus;
