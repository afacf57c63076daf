#pragma once

#include "types.h"

/**
 * Makes a context, which stands for the renderer library. Only rendering needs one: scenes are built and written
 * without.
 * @return a context of the host's, not yet initialised. VelmarRenderer_Create takes it over; without a renderer it is
 *         given back to VelmarContext_Delete.
 */
VELMAR_API VelmarContext* VelmarContext_Create(void);

/**
 * Loads the renderer library and sets it up. The library is looked for in the folder "vs2017_64" of the working
 * directory: velmar_sdk.dll first, then velmar_rt_sdk.dll (on Linux .so in place of .dll). How it went is told on the
 * standard output or error stream.
 * @param context  the context, or null, which is a failure.
 * @return 0, or -1 when there is no library, it can't be loaded, it lacks an entry point or its own set-up failed. A
 *         std::exception on the way is told on the standard error stream and yields 0: it isn't known then what is
 * usable.
 * @throws what the library throws of other classes.
 */
VELMAR_API int VelmarContext_Initialize(VelmarContext* context);

/**
 * Shuts the renderer library down and unloads it.
 * Not for a context that a renderer was made with: that one goes with its renderer.
 * @param context  the context, or null.
 */
VELMAR_API void VelmarContext_Delete(VelmarContext* context);
