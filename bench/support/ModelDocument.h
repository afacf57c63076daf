#pragma once

#include "bench/support/PeakMemory.h"
#include "bench/support/TempFile.h"
#include "scene/SceneXMLWriter.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"

#include <cstddef>
#include <cstdint>
#include <double-conversion/double-conversion.h>
#include <random>
#include <string>
#include <string_view>

namespace BenchSupport {

/// A document of many models that share a mesh.
class ModelDocument {
  public:
    /// With `spread` 0 all models are in one place, and all are equal.
    explicit ModelDocument(std::int64_t count, double spread = 100.0, const std::string& name = "models.xml")
        : file(name) {
        using namespace Velmar;
        const PeakMemory memory;
        const Reference<SceneNodeRoot> root = makeScene(count, spread);
        scene_bytes = static_cast<double>(memory.rise());
        SceneWriteRequest request;
        request.path = toVelmarString(file.path());
        request.resolve_relative_paths = false;
        writeSceneFile(*root, request);
    }

    TempFile file;
    /// The memory of the scene that it was written from.
    double scene_bytes = 0.0;

  private:
    static Velmar::Reference<Velmar::SceneNodeRoot> makeScene(std::int64_t count, double spread) {
        using namespace Velmar;
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> position(-1.0, 1.0);
        Reference<SceneNodeRoot> root(new SceneNodeRoot);
        const Reference<SceneNodeMaterial> material(new SceneNodeMaterial);
        root->addChildNode(material);
        const Reference<SceneNodeMesh> mesh(new SceneNodeMesh);
        mesh->path = "meshes\\tree.vmmesh";
        root->addChildNode(mesh);
        Vector<Reference<SceneNodeMaterial>> materials;
        materials.push_back(material);
        for (std::int64_t i = 0; i < count; ++i) {
            const Reference<SceneNodeModel> model(new SceneNodeModel);
            model->rotation = new MatrixRotation;
            model->setGeometry(Reference<SceneNode>(mesh));
            model->setMaterials(materials);
            KeyFrame frame;
            frame.pos = {spread * position(random), spread * position(random), 0.5};
            // Exactly, as hosts make them.
            model->keyframes.reserve(1);
            model->keyframes.push_back(frame);
            root->addChildNode(model);
        }
        return root;
    }
};

/// A number of a document as double-conversion writes it, which is what the other library has to write.
class PeerNumberText {
  public:
    explicit PeerNumberText(double value) {
        using double_conversion::DoubleToStringConverter;
        static const DoubleToStringConverter converter(DoubleToStringConverter::UNIQUE_ZERO, "Inf", "NaN", 'e', -6, 21,
                                                       0, 0);
        double_conversion::StringBuilder builder(text, sizeof text);
        converter.ToShortest(value, &builder);
        size = static_cast<std::size_t>(builder.position());
        builder.Finalize();
    }

    std::string_view view() const { return {text, size}; }

  private:
    char text[128];
    std::size_t size;
};

} // namespace BenchSupport
