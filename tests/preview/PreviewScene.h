#pragma once

#include "reference.h"
#include "velmarvec.h"

#include "scene/Material.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeRoot.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeBackgroundSettings.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "scene/nodes/SceneNodeSphere.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace TestSupport {

/// A scene for the preview, built of the nodes themselves: what no export makes is here too.
///
/// The camera is a pinhole at the origin that looks along y, z up, without autofocus and vignetting; the picture's
/// width is seen at 2 atan(0.5). There is one sample for each pixel of the picture in a pass.
class PreviewScene {
  public:
    explicit PreviewScene(std::int32_t width = 16, std::int32_t height = 16);

    void add(Velmar::SceneNode* node) { root->addChildNode(Velmar::Reference<Velmar::SceneNode>(node)); }

    /// A diffuse material of the reflectance `albedo`, the same for all wavelengths.
    Velmar::SceneNodeMaterial* addMaterial(double albedo);
    /// One that emits this radiance too.
    Velmar::SceneNodeMaterial* addEmitter(double radiance, double albedo = 0.0);
    /// The diffuse material of a node.
    static Velmar::DiffuseMaterial& diffuse(Velmar::SceneNodeMaterial* node);

    Velmar::SceneNodeMesh* addMesh(const std::vector<Velmar::Vec3f>& vertices,
                                   const std::vector<std::vector<std::uint32_t>>& faces);
    /// A model of a mesh at rest at `position`.
    Velmar::SceneNodeModel* addModel(Velmar::SceneNodeMesh* mesh, Velmar::SceneNodeMaterial* material,
                                     const Velmar::Vec3d& position = {});
    /// A quad with its corners counter-clockwise as seen from its outer side.
    Velmar::SceneNodeModel* addQuad(const Velmar::Vec3f& a, const Velmar::Vec3f& b, const Velmar::Vec3f& c,
                                    const Velmar::Vec3f& d, Velmar::SceneNodeMaterial* material);
    /// A square that faces along -y, towards the camera: centre (x, y, z) and the length of an edge.
    Velmar::SceneNodeModel* addSquare(double x, double y, double z, double edge, Velmar::SceneNodeMaterial* material);
    /// A horizontal square that faces up.
    Velmar::SceneNodeModel* addFloor(double x, double y, double z, double edge, Velmar::SceneNodeMaterial* material);
    Velmar::SceneNodeSphere* addSphere(const Velmar::Vec3d& centre, double radius, Velmar::SceneNodeMaterial* material);

    void setUniformBackground(double radiance);
    Velmar::SunSkyMaterial& setSunSky(const Velmar::Vec3d& direction);

    /// Key frames at the times 0 and 1 with these positions.
    static void move(Velmar::Vector<Velmar::KeyFrame>& frames, const Velmar::Vec3d& from, const Velmar::Vec3d& to);

    Velmar::Reference<Velmar::SceneNodeRoot> root{new Velmar::SceneNodeRoot};
    Velmar::SceneNodeRenderSettings* settings;
    Velmar::SceneNodeCamera* camera;
    Velmar::SceneNodeTonemapping* tone_mapping;
};

Velmar::Reference<Velmar::WavelengthDependentParam> uniformParam(double value);

} // namespace TestSupport
