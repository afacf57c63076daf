#ifndef VELMARPREVIEW_H
#define VELMARPREVIEW_H

/**
 * What the preview renderer offers beyond the interface that every renderer library has. The functions are exports of
 * the library `velmar_rt_sdk` and not of VelmarAPI: a host looks them up in the loaded library, by dlsym or
 * GetProcAddress, after VelmarContext_Initialize has loaded it.
 *
 * `renderer` is what VelmarRenderer_Create returned. Each function returns 0, or VELMAR_PREVIEW_ERROR if the renderer
 * is null, has no scene yet or belongs to another renderer library. None throws. They may be called from any thread
 * while the renderer isn't being deleted.
 */

#include <stddef.h>
#include <stdint.h>

#ifdef _WIN32
#define VELMAR_PREVIEW_CALL __declspec(dllexport)
#else
#define VELMAR_PREVIEW_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define VELMAR_PREVIEW_ERROR (-1)

enum {
    VELMAR_PREVIEW_IDLE = 0,      /* not started */
    VELMAR_PREVIEW_PREPARING = 1, /* reading the scene and building what rays need */
    VELMAR_PREVIEW_RENDERING = 2,
    VELMAR_PREVIEW_PAUSED = 3,
    VELMAR_PREVIEW_FINISHED = 4, /* halted by the settings, or stopped */
    VELMAR_PREVIEW_FAILED = 5    /* nothing was rendered; the reason is on the standard error stream */
};

/** Numbers for VelmarPreview_SetOption. They count from the next start. */
enum {
    VELMAR_PREVIEW_SEED = 0,    /* whole number; pictures of one seed are the same for any number of threads. 0 */
    VELMAR_PREVIEW_THREADS = 1, /* 0, the default: as the render settings say, by themselves one for each processor */
    VELMAR_PREVIEW_SAMPLES = 2, /* for each pixel, at which the render halts; 0, the default: as the settings say */
    VELMAR_PREVIEW_SECONDS = 3  /* after which the render halts; 0, the default: as the settings say */
};

typedef struct VelmarPreviewProgress {
    int32_t state;
    uint32_t width; /* of the picture, in pixels */
    uint32_t height;
    uint32_t threads;
    double samples;      /* for each pixel of the picture so far */
    double halt_samples; /* at which the render halts; 0: never */
    double seconds;      /* since the start, without pauses */
    double halt_seconds; /* after which the render halts; 0: never */
    uint64_t pictures;   /* files written since the start */
    uint64_t memory;     /* bytes of the structures for rays, in addition to the scene */
} VelmarPreviewProgress;

/**
 * Waits until the render is finished or failed and its last picture is written, or for `seconds`; for ever if that is
 * negative. Returns 1 if it is finished or failed, 0 if not.
 */
VELMAR_PREVIEW_CALL int32_t VelmarPreview_Wait(void* renderer, double seconds);

VELMAR_PREVIEW_CALL int32_t VelmarPreview_GetProgress(void* renderer, VelmarPreviewProgress* progress);

/**
 * Copies the picture so far, from the top left on: linear light, `count` = width * height * 3 floats, or tone-mapped
 * values of 8 bits, as many bytes. Another `count` is an error, and so is a picture that hasn't been begun.
 */
VELMAR_PREVIEW_CALL int32_t VelmarPreview_GetPixels(void* renderer, float* pixels, size_t count);
VELMAR_PREVIEW_CALL int32_t VelmarPreview_GetBytes(void* renderer, uint8_t* bytes, size_t count);

/**
 * Copies a channel beside the picture's light in the picture's size: "alpha", "normals", "depth", "position",
 * "material_id", "object_id", "direct_lighting", "indirect_lighting", "emission_lighting", or the name of a mask.
 * `count` is width * height times the channel's components, 3 or 1. The scene's settings must ask for the channel.
 */
VELMAR_PREVIEW_CALL int32_t VelmarPreview_GetChannel(void* renderer, const char* name, float* values, size_t count);

/** Sets one of the options above. */
VELMAR_PREVIEW_CALL int32_t VelmarPreview_SetOption(void* renderer, int32_t option, double value);

/**
 * Sets where pictures are written, UTF-8, in place of VELMAR_PREVIEW_IMAGE or `velmar_preview.png`; empty for no file.
 * The extension says what is written: `.hdr` and `.pfm` linear light, anything else a tone-mapped PNG.
 */
VELMAR_PREVIEW_CALL int32_t VelmarPreview_SetImagePath(void* renderer, const char* path);

/** Writes the picture so far to a file, UTF-8, of the same kinds. A file that can't be written is an error. */
VELMAR_PREVIEW_CALL int32_t VelmarPreview_WriteImage(void* renderer, const char* path);

#ifdef __cplusplus
}
#endif

#endif
