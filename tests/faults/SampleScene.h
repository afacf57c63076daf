#pragma once

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeRoot.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/Spectra.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tests/nodes/ModelSupport.h"
#include "tests/support/MeshSupport.h"

#include <string>

namespace Faults {

/// Two triangles and two quads with materials and normals, and as many vertices besides.
inline void fillMesh(Velmar::Mesh& mesh, int further_vertices) {
    fillSample(mesh);
    for (int i = 0; i < further_vertices; ++i)
        mesh.addVertexWithNormal({static_cast<float>(i % 251), static_cast<float>(i), 0}, {0, 0, 1});
    mesh.build();
}

/// A scene with a mesh of its own, a model, and settings of several kinds.
inline Velmar::Reference<Velmar::SceneNodeRoot> sampleScene() {
    using namespace Velmar;
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);

    const Reference<SceneNodeMaterial> material(new SceneNodeMaterial);
    material->setName("A material with a name that is too long to be stored in place");
    static_cast<DiffuseMaterial&>(*material->material).albedo =
        new ConstantWavelengthDependentParam(new RGBSpectrum({0.1, 0.2, 1.0 / 3.0}, 2.2));
    root->addChildNode(material);

    const Reference<SceneNodeMesh> mesh(new SceneNodeMesh);
    mesh->mesh = new Mesh;
    fillMesh(*mesh->mesh, 100);
    root->addChildNode(mesh);

    const Reference<SceneNodeModel> model = TestSupport::model();
    model->setName("A model with a name that is too long to be stored in place as well");
    model->geometry = mesh;
    model->materials.push_back(material);
    root->addChildNode(model);

    const Reference<SceneNodeCamera> camera(new SceneNodeCamera);
    camera->obstacle_map = "a folder with a rather long name/dust.png";
    root->addChildNode(camera);
    root->addChildNode(Reference<SceneNode>(new SceneNodeRenderSettings));
    root->addChildNode(Reference<SceneNode>(new SceneNodeTonemapping));
    return root;
}

} // namespace Faults
