#include "tests/preview/PreviewScene.h"

#include "scene/MaterialParams.h"
#include "scene/Rotations.h"
#include "scene/Spectra.h"

#include <stdexcept>

using namespace Velmar;

namespace TestSupport {

Reference<WavelengthDependentParam> uniformParam(double value) {
    return new ConstantWavelengthDependentParam(Reference<Spectrum>(new UniformSpectrum(value)));
}

PreviewScene::PreviewScene(std::int32_t width, std::int32_t height)
    : settings(new SceneNodeRenderSettings), camera(new SceneNodeCamera), tone_mapping(new SceneNodeTonemapping) {
    settings->width.set(width);
    settings->height.set(height);
    settings->super_sample_factor.set(1);
    settings->vignetting.set(false);
    settings->halt_samples_per_pixel.set(16);
    add(settings);
    camera->aperture_radius = 0.0;
    camera->autofocus = false;
    camera->focus_distance = 10.0;
    camera->setPosition({0, 0, 0});
    add(camera);
    add(tone_mapping);
}

SceneNodeMaterial* PreviewScene::addMaterial(double albedo) {
    auto* const node = new SceneNodeMaterial;
    diffuse(node).albedo = uniformParam(albedo);
    add(node);
    return node;
}

SceneNodeMaterial* PreviewScene::addEmitter(double radiance, double albedo) {
    SceneNodeMaterial* const node = addMaterial(albedo);
    diffuse(node).emission = uniformParam(1.0);
    diffuse(node).base_emission = uniformParam(radiance);
    return node;
}

DiffuseMaterial& PreviewScene::diffuse(SceneNodeMaterial* node) {
    return static_cast<DiffuseMaterial&>(*node->material);
}

SceneNodeMesh* PreviewScene::addMesh(const std::vector<Vec3f>& vertices,
                                     const std::vector<std::vector<std::uint32_t>>& faces) {
    auto* const node = new SceneNodeMesh;
    node->mesh = new Mesh;
    for (const Vec3f& vertex : vertices)
        node->mesh->addVertex(vertex);
    for (const std::vector<std::uint32_t>& face : faces) {
        if (face.size() == 3)
            node->mesh->triangles.push_back({{face[0], face[1], face[2]}, {0, 1, 2}, 0});
        else if (face.size() == 4)
            node->mesh->quads.push_back({{face[0], face[1], face[2], face[3]}, {0, 1, 2, 3}, 0});
        else
            throw std::invalid_argument("a face has three or four corners");
    }
    node->mesh->build();
    add(node);
    return node;
}

SceneNodeModel* PreviewScene::addModel(SceneNodeMesh* mesh, SceneNodeMaterial* material, const Vec3d& position) {
    auto* const model = new SceneNodeModel;
    model->rotation = new MatrixRotation;
    KeyFrame frame;
    frame.pos = position;
    model->keyframes.push_back(frame);
    Vector<Reference<SceneNodeMaterial>> materials;
    materials.push_back(Reference<SceneNodeMaterial>(material));
    model->setMaterials(materials);
    model->setGeometry(Reference<SceneNode>(mesh));
    add(model);
    return model;
}

SceneNodeModel* PreviewScene::addQuad(const Vec3f& a, const Vec3f& b, const Vec3f& c, const Vec3f& d,
                                      SceneNodeMaterial* material) {
    return addModel(addMesh({a, b, c, d}, {{0, 1, 2, 3}}), material);
}

SceneNodeModel* PreviewScene::addSquare(double x, double y, double z, double edge, SceneNodeMaterial* material) {
    const auto h = static_cast<float>(edge / 2);
    return addModel(addMesh({{-h, 0, -h}, {h, 0, -h}, {h, 0, h}, {-h, 0, h}}, {{0, 1, 2, 3}}), material, {x, y, z});
}

SceneNodeModel* PreviewScene::addFloor(double x, double y, double z, double edge, SceneNodeMaterial* material) {
    const auto h = static_cast<float>(edge / 2);
    return addModel(addMesh({{-h, -h, 0}, {h, -h, 0}, {h, h, 0}, {-h, h, 0}}, {{0, 1, 2, 3}}), material, {x, y, z});
}

SceneNodeSphere* PreviewScene::addSphere(const Vec3d& centre, double radius, SceneNodeMaterial* material) {
    auto* const sphere = new SceneNodeSphere;
    sphere->radius = radius;
    sphere->material = material;
    KeyFrame frame;
    frame.pos = centre;
    sphere->keyframes.push_back(frame);
    add(sphere);
    return sphere;
}

void PreviewScene::setUniformBackground(double radiance) {
    auto* const node = new SceneNodeBackgroundSettings;
    auto* const material = new DiffuseMaterial;
    material->albedo = uniformParam(0.0);
    material->emission = uniformParam(1.0);
    material->base_emission = uniformParam(radiance);
    node->background_material = material;
    add(node);
}

SunSkyMaterial& PreviewScene::setSunSky(const Vec3d& direction) {
    auto* const node = new SceneNodeBackgroundSettings;
    auto* const material = new SunSkyMaterial;
    material->sundir = direction;
    node->background_material = material;
    add(node);
    return *material;
}

void PreviewScene::move(Vector<KeyFrame>& frames, const Vec3d& from, const Vec3d& to) {
    frames.clear();
    KeyFrame frame;
    frame.pos = from;
    frames.push_back(frame);
    frame.pos = to;
    frame.time = 1.0;
    frames.push_back(frame);
}

} // namespace TestSupport
