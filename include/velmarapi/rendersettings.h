/* Made by `./dev generate` from api/functions/rendersettings.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a render settings node named "Render Settings" with every setting unset. Only what is set reaches the document;
 * all else is left to the renderer's own defaults. Nothing checks the values. Each call keeps about 1.5 kilobytes for
 * the life of the process, so make one node a scene.
 *
 * The node is the host's until it is added to a scene.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarRenderSettings* VelmarRenderSettings_Create(void);

/** Sets the width of the image, in pixels. */
VELMAR_API void VelmarRenderSettings_Width(VelmarRenderSettings* settings, int32_t width);

/** Sets the height of the image, in pixels. */
VELMAR_API void VelmarRenderSettings_Height(VelmarRenderSettings* settings, int32_t height);

/** Sets how many samples a pixel has along each axis before the image is brought down to its size. */
VELMAR_API void VelmarRenderSettings_SuperSampleFactor(VelmarRenderSettings* settings, int32_t factor);

/** Sets after how many seconds the render halts. */
VELMAR_API void VelmarRenderSettings_HaltTime(VelmarRenderSettings* settings, double seconds);

/** Sets after how many samples per pixel the render halts. */
VELMAR_API void VelmarRenderSettings_HaltSamplesPerPixel(VelmarRenderSettings* settings, double samples);

/** Sets how often the image is saved while it renders, in seconds. */
VELMAR_API void VelmarRenderSettings_ImageSavePeriod(VelmarRenderSettings* settings, double seconds);

/** Whether light is sampled by Metropolis light transport. */
VELMAR_API void VelmarRenderSettings_Metropolis(VelmarRenderSettings* settings, VelmarBool on);

/** Whether paths are traced from the lights too. */
VELMAR_API void VelmarRenderSettings_Bidirectional(VelmarRenderSettings* settings, VelmarBool on);

/** Whether the image is dithered. */
VELMAR_API void VelmarRenderSettings_Dithering(VelmarRenderSettings* settings, VelmarBool on);

/** Whether the image darkens towards its edges, as that of a real camera does. */
VELMAR_API void VelmarRenderSettings_Vignetting(VelmarRenderSettings* settings, VelmarBool on);

/** Whether a shadow pass is rendered. */
VELMAR_API void VelmarRenderSettings_ShadowPass(VelmarRenderSettings* settings, VelmarBool on);

/** Whether the alpha of the foreground is rendered. */
VELMAR_API void VelmarRenderSettings_RenderForegroundAlpha(VelmarRenderSettings* settings, VelmarBool on);

/** Whether information about the render is laid over the image. */
VELMAR_API void VelmarRenderSettings_InfoOverlay(VelmarRenderSettings* settings, VelmarBool on);

/** Whether a depth channel is rendered: the element `depth_channel`. */
VELMAR_API void VelmarRenderSettings_DepthPass(VelmarRenderSettings* settings, VelmarBool on);

/** Whether a channel of material IDs is rendered: the element `material_id_channel`. */
VELMAR_API void VelmarRenderSettings_MaterialIdTracer(VelmarRenderSettings* settings, VelmarBool on);

/**
 * Destroys a node that was never added to a scene.
 *
 * The node is gone afterwards.
 * @param settings  the node, or null.
 */
VELMAR_API void VelmarRenderSettings_Delete(VelmarRenderSettings* settings);
