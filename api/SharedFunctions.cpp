#include "api/SharedFunctions.h"

#include "api/Handles.h"
#include "renderer/LibraryCall.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeCamera.h"

#include <cstddef>
#include <cstring>

using namespace Velmar;

namespace {

void storeDouble(void* object, std::size_t offset, double value) {
    std::memcpy(static_cast<std::byte*>(object) + offset, &value, sizeof value);
}

static_assert(offsetof(SceneNodeCamera, aperture_radius) == offsetof(SceneNodeTonemapping, scale));
static_assert(offsetof(SceneNodeCamera, focus_distance) == offsetof(SceneNodeTonemapping, pre_scale));
static_assert(offsetof(SceneNodeCamera, sensor_width) == offsetof(SceneNodeTonemapping, post_scale));
static_assert(offsetof(SceneNodeCamera, lens_sensor_dist) == offsetof(SceneNodeTonemapping, burn));

} // namespace

extern "C" void velmarDeleteHandle(Velmar::ThreadSafeRefCounted* object) {
    if (object != nullptr) passOnLibraryExceptions([object] { object->destroy(1); });
}

extern "C" void velmarAddNode(SceneNodeRoot* scene, SceneNode* node) {
    scene->addChildNode(*node);
}

extern "C" void velmarSetScaleOrLensRadius(void* node, double value) {
    storeDouble(node, offsetof(SceneNodeTonemapping, scale), value);
}

extern "C" void velmarSetPreScaleOrFocusDistance(void* node, double value) {
    storeDouble(node, offsetof(SceneNodeTonemapping, pre_scale), value);
}

extern "C" void velmarSetPostScaleOrSensorWidth(void* node, double value) {
    storeDouble(node, offsetof(SceneNodeTonemapping, post_scale), value);
}

extern "C" void velmarSetBurnOrLensSensorDistance(void* node, double value) {
    storeDouble(node, offsetof(SceneNodeTonemapping, burn), value);
}
