#include "api/Handles.h"
#include "scene/Rotations.h"
#include "utils/Lines.h"

#include <algorithm>
#include <span>
#include <string>

using namespace Velmar;

VelmarModel* VelmarModel_Create(const char* name, VelmarMesh* geometry) {
    const HeldForCall held(fromHandle(geometry));
    NewObject<SceneNodeModel> model(new SceneNodeModel);
    model->setName(String(name));
    model->setGeometry(Reference<SceneNode>(fromHandle(geometry)));
    model->rotation = new MatrixRotation;
    model->keyframes.push_back(KeyFrame());
    return toHandle<VelmarModel>(model.release());
}

void VelmarModel_SetMaterials(VelmarModel* model, int32_t count, VelmarMaterialNode** materials) {
    // A text, because a host's locale may group the digits of numbers.
    printLine(LineStream::output, {"Num materials: ", std::to_string(count)});
    const std::span<VelmarMaterialNode* const> handles(materials, count > 0 ? static_cast<std::size_t>(count) : 0);
    const AllHeldForCall held(handles);
    Vector<Reference<SceneNodeMaterial>> nodes;
    nodes.reserve(handles.size());
    for (VelmarMaterialNode* const handle : handles)
        nodes.push_back(Reference<SceneNodeMaterial>(fromHandle(handle)));
    fromHandle(model)->setMaterials(nodes);
}

void VelmarModel_SetTransformation(VelmarModel* model, const float* rotation, const float* position, int32_t index) {
    double values[9];
    std::copy_n(rotation, 9, values);
    const Reference<Rotation> matrix(new MatrixRotation(values));

    SceneNodeModel& node = *fromHandle(model);
    const auto key_frame = static_cast<std::uint64_t>(std::int64_t{index});
    // A positive index past the end is left to the checked access to report.
    if (index > 0 || key_frame < node.keyframes.size())
        node.keyframes[key_frame].pos = {position[0], position[1], position[2]};
    node.rotation = matrix;
}
