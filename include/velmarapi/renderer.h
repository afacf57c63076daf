/* Made by `./dev generate` from api/functions/renderer.toml; make changes there. */
#pragma once

#include "types.h"

/*
 * A render, in order: VelmarContext_Initialize; VelmarRenderer_Create; VelmarRenderer_InitializeWithScene; start,
 * pause, resume, update and stop as the renderer library allows; VelmarRenderer_Delete.
 *
 * Who deletes what. The context belongs to the renderer from VelmarRenderer_Create on, and the scene from
 * VelmarRenderer_InitializeWithScene on: VelmarRenderer_Delete ends both, and the host deletes neither. The renderer is
 * not to be deleted while it renders; stop it first.
 *
 * The render itself runs on threads of the renderer library. All functions here are called from one thread of the host.
 */

/**
 * Makes a renderer.
 *
 * Prints: on the standard output, when the library can't make or initialise its part, "Failed to create Instance of
 * 'VelmarInterface'" or "Failed to initialise 'VelmarInterface'".
 *
 * The renderer is the host's, to be given back to VelmarRenderer_Delete. The context belongs to the renderer from now
 * on and goes with it.
 * @param context  an initialised context.
 * @return the renderer.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarRenderer* VelmarRenderer_Create(VelmarContext* context);

/**
 * Hands the scene to the renderer library and makes the image store that its render settings ask for. Width, height and
 * super sample factor must be set there.
 *
 * The scene belongs to the renderer from now on and goes with it, unless an exception was thrown.
 * @param context  the context that the renderer was made with.
 * @param scene    the scene. Its nodes' setters may still be called; the library learns of changes by
 *                 VelmarRenderer_UpdateScene.
 * @throws Velmar::VelmarException when the scene has no render settings or the image store can't be allocated.
 */
VELMAR_API void VelmarRenderer_InitializeWithScene(VelmarRenderer* renderer, VelmarContext* context,
                                                   VelmarScene* scene);

/**
 * Starts the render.
 * @return what the library returned; narrower results of it leave the upper bits undefined.
 * @throws what leaves the library's operation
 */
VELMAR_API uint64_t VelmarRenderer_Start(VelmarRenderer* renderer);

/**
 * Pauses the render.
 * @return as VelmarRenderer_Start.
 * @throws what leaves the library's operation
 */
VELMAR_API uint64_t VelmarRenderer_Pause(VelmarRenderer* renderer);

/**
 * Resumes the render.
 * @return as VelmarRenderer_Start.
 * @throws what leaves the library's operation
 */
VELMAR_API uint64_t VelmarRenderer_Resume(VelmarRenderer* renderer);

/**
 * Stops the render.
 * @return as VelmarRenderer_Start.
 * @throws what leaves the library's operation
 */
VELMAR_API uint64_t VelmarRenderer_Stop(VelmarRenderer* renderer);

/**
 * Tells the library of changes to the scene. The further arguments reach the library as they stand, whatever they are:
 * the library's documentation names them.
 *
 * Written as below, arguments are promoted as those of printf are; to pass a float or to receive another result, call
 * through a pointer to a function of the library's own signature with the renderer before its arguments.
 * @return as VelmarRenderer_Start.
 * @throws what leaves the library's operation, which may be a Velmar::VelmarException of a node that it asked
 */
VELMAR_API uint64_t VelmarRenderer_UpdateScene(VelmarRenderer* renderer, ...);

/**
 * Destroys the renderer, what the library made for it, the scene and the context unless others hold them, and with the
 * context unloads the library.
 *
 * Renderer, scene and context are gone afterwards.
 * @param renderer  the renderer, or null.
 */
VELMAR_API void VelmarRenderer_Delete(VelmarRenderer* renderer);
