/* Made by `./dev generate` from api/functions/background.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a background of even light from all directions.
 *
 * The node is the host's until it is added to a scene. There is no function to delete it.
 * @param r, g, b  the colour, with gamma 2.2.
 * @param s        the strength that the colour is multiplied by.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarBackground* VelmarBackground_CreateUniform(double r, double g, double b, double s);

/**
 * Makes a background of sun and sky. The direction is used as it stands: give it a length of 1.
 *
 * The node is the host's until it is added to a scene. There is no function to delete it.
 * @param x, y, z  the direction towards the sun, with z up.
 * @param model    the name of the sky model, UTF-8, as "original" or "captured-simulation". It isn't checked.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarBackground* VelmarBackground_CreateSunSky(double x, double y, double z, const char* model);

/**
 * Releases a holder record: a block of the C heap that begins with a counted pointer to an object. The object's count
 * falls by 1, with the last holder the object goes, and the block is freed.
 *
 * This doesn't delete what VelmarBackground_CreateUniform and VelmarBackground_CreateSunSky return: never hand those to
 * it. A background leaves with its scene.
 *
 * The record is gone afterwards.
 * @param record  the record, or null.
 */
VELMAR_API void VelmarBackground_Delete(void* record);
