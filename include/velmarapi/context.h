/* Made by `./dev generate` from api/functions/context.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a context, which stands for the renderer library. Only rendering needs one: scenes are built and written
 * without.
 *
 * The context is the host's. VelmarRenderer_Create takes it over; without a renderer it is given back to
 * VelmarContext_Delete.
 * @return a context, not yet initialised.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarContext* VelmarContext_Create(void);

/**
 * Loads the renderer library and sets it up. The library is looked for in the folder "vs2017_64" of the working
 * directory: velmar_sdk.dll first, then velmar_rt_sdk.dll (on Linux .so in place of .dll).
 *
 * Prints: on the standard output "This is where it stops." for every context, and "Initialized Velmar context." with
 * the result 0. On the standard error stream the reason of a failure, and the text of a std::exception.
 * @param context  the context, or null, which is a failure.
 * @return 0, or -1 when there is no library, it can't be loaded, it lacks an entry point or its own set-up failed. A
 *         std::exception on the way yields 0: it isn't known then what is usable.
 * @throws what the library throws of other classes
 */
VELMAR_API int VelmarContext_Initialize(VelmarContext* context);

/**
 * Shuts the renderer library down and unloads it.
 *
 * The context is gone afterwards. Not for a context that a renderer was made with: that one goes with its renderer.
 * @param context  the context, or null.
 */
VELMAR_API void VelmarContext_Delete(VelmarContext* context);
