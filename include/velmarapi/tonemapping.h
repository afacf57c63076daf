/* Made by `./dev generate` from api/functions/tonemapping.toml; make changes there. */
#pragma once

#include "types.h"

/** Kinds for VelmarTonemapping_SetType. */
enum {
    VELMAR_TONEMAPPING_LINEAR = 1000,   /**< scale */
    VELMAR_TONEMAPPING_REINHARD = 1001, /**< pre-scale, post-scale, burn */
    VELMAR_TONEMAPPING_CAMERA = 1002,   /**< response function, ISO, EV adjustment */
    VELMAR_TONEMAPPING_FILMIC = 1003    /**< scale */
};

/**
 * Makes a tone mapping node named "Tone Mapping", of linear kind with scale 1.
 *
 * The node is the host's until it is added to a scene.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarTonemapping* VelmarTonemapping_Create(void);

/**
 * Selects the kind in force. Only its own settings reach the document; those of other kinds are kept.
 * @param type  one of the VELMAR_TONEMAPPING_ constants. Other values are stored too and write no settings at all.
 */
VELMAR_API void VelmarTonemapping_SetType(VelmarTonemapping* tonemapping, int32_t type);

/** Sets the factor of the linear and filmic kinds; 1 at creation. */
VELMAR_API void VelmarTonemapping_SetScale(VelmarTonemapping* tonemapping, double scale);

/** Sets the factor before the curve of the Reinhard kind; 4 at creation. */
VELMAR_API void VelmarTonemapping_SetPreScale(VelmarTonemapping* tonemapping, double pre_scale);

/** Sets the factor after the curve of the Reinhard kind; 1 at creation. */
VELMAR_API void VelmarTonemapping_SetPostScale(VelmarTonemapping* tonemapping, double post_scale);

/** Sets from where on the Reinhard kind burns out to white; 6 at creation. */
VELMAR_API void VelmarTonemapping_SetBurn(VelmarTonemapping* tonemapping, double burn);

/** Sets the film speed of the camera kind, as an ISO number; 200 at creation. */
VELMAR_API void VelmarTonemapping_SetIso(VelmarTonemapping* tonemapping, double iso);

/** Sets the exposure adjustment of the camera kind, in EV; 0 at creation. */
VELMAR_API void VelmarTonemapping_EvAdjust(VelmarTonemapping* tonemapping, double ev_adjust);

/**
 * Sets the response function of the camera kind.
 * @param path  the file's path, UTF-8. It is written as given: a relative path stays relative to the renderer's own
 *              data.
 * @throws std::bad_alloc
 */
VELMAR_API void VelmarTonemapping_SetResponseFunctionPath(VelmarTonemapping* tonemapping, const char* path);

/**
 * Destroys a node that was never added to a scene.
 *
 * The node is gone afterwards.
 * @param tonemapping  the node, or null.
 */
VELMAR_API void VelmarTonemapping_Delete(VelmarTonemapping* tonemapping);
