#include "api/Handles.h"

#include <cmath>

using namespace Velmar;

VelmarCamera* VelmarCamera_Create() {
    return toHandle<VelmarCamera>(new SceneNodeCamera);
}

void VelmarCamera_SetAutofocus(VelmarCamera* camera, VelmarBool autofocus) {
    fromHandle(camera)->autofocus = autofocus != 0;
}

void VelmarCamera_SetExposureDuration(VelmarCamera* camera, double seconds) {
    fromHandle(camera)->exposure_duration = seconds;
}

void VelmarCamera_SetLensShiftRightDistance(VelmarCamera* camera, double distance) {
    fromHandle(camera)->lens_shift_right_distance = distance;
}

void VelmarCamera_SetLensShiftUpDistance(VelmarCamera* camera, double distance) {
    fromHandle(camera)->lens_shift_up_distance = distance;
}

void VelmarCamera_SetForwards(VelmarCamera* camera, double x, double y, double z) {
    fromHandle(camera)->forwards = {x, y, z};
}

void VelmarCamera_SetUp(VelmarCamera* camera, double x, double y, double z) {
    fromHandle(camera)->up = {x, y, z};
}

void VelmarCamera_SetPosition(VelmarCamera* camera, double x, double y, double z) {
    fromHandle(camera)->setPosition({x, y, z});
}

void VelmarCamera_SetFov(VelmarCamera* camera, double fov, double width) {
    SceneNodeCamera* const node = fromHandle(camera);
    node->sensor_width = width;
    // Not into the lens to sensor distance, whose value this is: documents of hosts rely on it.
    node->aperture_radius = 0.5 / std::tan(fov * 0.5) * width;
}

double VelmarCamera_SetAperature(VelmarCamera*, double a, double b) {
    return 0.5 / a * b;
}
