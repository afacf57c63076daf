/* Made by `./dev generate` from api/functions/camera.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a camera node named "Camera": a thin lens that looks along y with z up, focuses itself, and has no position
 * yet.
 *
 * The node is the host's until it is added to a scene. There is no delete function: add it, or it is never freed.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarCamera* VelmarCamera_Create(void);

/** Sets the radius of the aperture, in metres; 0.001 at creation. */
VELMAR_API void VelmarCamera_SetLensRadius(VelmarCamera* camera, double radius);

/** Whether the camera focuses itself; true at creation. */
VELMAR_API void VelmarCamera_SetAutofocus(VelmarCamera* camera, VelmarBool autofocus);

/** Sets the exposure time, in seconds; 0.333 at creation. */
VELMAR_API void VelmarCamera_SetExposureDuration(VelmarCamera* camera, double seconds);

/**
 * Sets the distance from lens to sensor, in metres; 0.036 at creation. With the sensor's width it gives the field of
 * view.
 */
VELMAR_API void VelmarCamera_SetLensSensorDistance(VelmarCamera* camera, double distance);

/** Sets how far the lens is shifted to the right, in metres; 0 at creation. */
VELMAR_API void VelmarCamera_SetLensShiftRightDistance(VelmarCamera* camera, double distance);

/** Sets how far the lens is shifted upwards, in metres; 0 at creation. */
VELMAR_API void VelmarCamera_SetLensShiftUpDistance(VelmarCamera* camera, double distance);

/** Sets the width of the sensor, in metres; 0.036 at creation. */
VELMAR_API void VelmarCamera_SetSensorWidth(VelmarCamera* camera, double width);

/** Sets the distance of what is in focus, in metres; 20 at creation. */
VELMAR_API void VelmarCamera_SetFocusDistance(VelmarCamera* camera, double distance);

/** Sets the viewing direction; 0, 1, 0 at creation. It is stored as given and needn't be of unit length. */
VELMAR_API void VelmarCamera_SetForwards(VelmarCamera* camera, double x, double y, double z);

/** Sets the direction that is up in the image; 0, 0, 1 at creation. It is stored as given. */
VELMAR_API void VelmarCamera_SetUp(VelmarCamera* camera, double x, double y, double z);

/**
 * Sets the position, in metres. Calling it again replaces the position.
 * @throws std::bad_alloc at the first call.
 */
VELMAR_API void VelmarCamera_SetPosition(VelmarCamera* camera, double x, double y, double z);

/**
 * Sets the sensor's width, and the aperture's radius to 0.5 / tan(fov / 2) * width.
 *
 * That value is the lens to sensor distance of the field of view, but it is stored as the aperture's radius, and the
 * lens to sensor distance stays. For a field of view, compute the value and pass it to
 * VelmarCamera_SetLensSensorDistance.
 * @param fov    the horizontal field of view, in radians.
 * @param width  the width of the sensor, in metres.
 */
VELMAR_API void VelmarCamera_SetFov(VelmarCamera* camera, double fov, double width);

/**
 * Computes 0.5 / a * b and changes nothing; the camera isn't looked at.
 * @param a  the divisor.
 * @param b  the factor.
 * @return the result; infinite or not a number when `a` is 0.
 */
VELMAR_API double VelmarCamera_SetAperature(VelmarCamera* camera, double a, double b);
