/// Builds a complete scene and writes it: a box of two materials on the ground, in sunlight, seen by a camera. The
/// library's exceptions are caught by type, which needs a compiler of the family that built the library.
///
/// Usage: scene_in_cpp [SCENE.xml]

#include <array>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <velmarapi.h>
#include <velmarexceptions.h>

namespace {

/// Only the scene needs an owner: it owns its nodes.
struct DeleteScene {
    void operator()(VelmarScene* scene) const { VelmarScene_Delete(scene); }
};
using ScenePointer = std::unique_ptr<VelmarScene, DeleteScene>;

/// The corners of a box of 2 x 2 x 2 metres on the ground.
constexpr std::array<float, 24> corners = {
    -1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, // below
    -1, -1, 2, 1, -1, 2, 1, 1, 2, -1, 1, 2, // above
};

/// All sides use the same square of texture coordinates.
constexpr std::array<float, 8> texture_coordinates = {0, 0, 1, 0, 1, 1, 0, 1};

constexpr std::uint32_t triangle = 0;
constexpr std::uint32_t quad = 1;
constexpr std::uint32_t walls = 0;
constexpr std::uint32_t lid = 1;

/// A record begins with its kind; vertices, texture coordinates and the material follow.
constexpr std::uint32_t sides[] = {
    quad,     0, 3, 2, 1, 0, 1, 2,   3, walls, // the bottom
    quad,     0, 1, 5, 4, 0, 1, 2,   3, walls, // and around
    quad,     1, 2, 6, 5, 0, 1, 2,   3, walls, //
    quad,     2, 3, 7, 6, 0, 1, 2,   3, walls, //
    quad,     3, 0, 4, 7, 0, 1, 2,   3, walls, //
    triangle, 4, 5, 6, 0, 1, 2, lid,           // the top, of two triangles
    triangle, 4, 6, 7, 0, 2, 3, lid,           //
};

// Every node is added right after it is created. The scene owns it then, and its setters may still be called.

void addRenderSettings(VelmarScene* scene) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarScene_AddRenderSettings(scene, settings);
    VelmarRenderSettings_Width(settings, 800);
    VelmarRenderSettings_Height(settings, 600);
    VelmarRenderSettings_HaltSamplesPerPixel(settings, 200);
}

void addCamera(VelmarScene* scene) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarScene_AddCamera(scene, camera);
    VelmarCamera_SetPosition(camera, 0, -8, 2);
    VelmarCamera_SetForwards(camera, 0, 1, -0.125);
    VelmarCamera_SetUp(camera, 0, 0, 1);
    // As far from the lens as the sensor is wide: a field of view of 53 degrees.
    VelmarCamera_SetSensorWidth(camera, 0.036);
    VelmarCamera_SetLensSensorDistance(camera, 0.036);
    VelmarCamera_SetFocusDistance(camera, 8);
}

void addToneMapping(VelmarScene* scene) {
    VelmarTonemapping* const tone_mapping = VelmarTonemapping_Create();
    VelmarScene_AddTonemapping(scene, tone_mapping);
    VelmarTonemapping_SetType(tone_mapping, VELMAR_TONEMAPPING_REINHARD);
    VelmarTonemapping_SetBurn(tone_mapping, 10);
}

void addLight(VelmarScene* scene) {
    VelmarScene_AddBackground(scene, VelmarBackground_CreateSunSky(-1, -1, 1, "captured-simulation"));
}

VelmarMaterialNode* addMaterial(VelmarScene* scene, const char* name, double r, double g, double b) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode(name);
    VelmarScene_AddMaterial(scene, node);
    VelmarMaterial_AddToNode(node, VelmarMaterial_CreateDiffuse(name, r, g, b));
    return node;
}

VelmarMesh* addBox(VelmarScene* scene) {
    VelmarMesh* const mesh = VelmarMesh_Create("Box");
    VelmarScene_AddMesh(scene, mesh);
    VelmarMesh_AddMaterialUsed(mesh, "Walls");
    VelmarMesh_AddMaterialUsed(mesh, "Lid");
    VelmarMesh_AddVertices(mesh, 8, corners.data());
    VelmarMesh_AddTextureCoordinates(mesh, 4, texture_coordinates.data());
    VelmarMesh_AddFaces(mesh, 7, sides);
    VelmarMesh_Build(mesh);
    return mesh;
}

void addModel(VelmarScene* scene, VelmarMesh* mesh, std::array<VelmarMaterialNode*, 2> materials) {
    // A rotation by 90 degrees around z, row by row, and a position.
    constexpr float rotation[] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    constexpr float position[] = {0.5F, 0, 0};
    VelmarModel* const model = VelmarModel_Create("Box", mesh);
    VelmarScene_AddModel(scene, model);
    VelmarModel_SetMaterials(model, static_cast<int>(materials.size()), materials.data());
    VelmarModel_SetTransformation(model, rotation, position, 0);
}

ScenePointer makeScene() {
    ScenePointer owner(VelmarScene_Create());
    VelmarScene* const scene = owner.get();
    addRenderSettings(scene);
    addCamera(scene);
    addToneMapping(scene);
    addLight(scene);
    // In the order of the mesh's names.
    VelmarMaterialNode* const walls_node = addMaterial(scene, "Walls", 0.6, 0.2, 0.1);
    VelmarMaterialNode* const lid_node = addMaterial(scene, "Lid", 0.8, 0.8, 0.7);
    addModel(scene, addBox(scene), {walls_node, lid_node});
    VelmarScene_AddGroundPlane(scene, 0, 100);
    return owner;
}

/// Writes the scene. Returns an error message, or an empty string.
std::string writeScene(const std::string& path) {
    // The library's classes share no base and don't derive from std::exception: each is caught by its name.
    try {
        VelmarScene_WriteToXML(makeScene().get(), path.c_str());
    } catch (const Velmar::VelmarException& e) {
        return std::string(e.getMessage().view());
    } catch (const Velmar::Exception& e) {
        return e.getMessage();
    } catch (const std::exception& e) {
        return e.what();
    }
    // A document that can't be written isn't reported.
    return std::ifstream(path).peek() == '<' ? "" : path + " couldn't be written";
}

} // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "scene.xml";
    const std::string problem = writeScene(path);
    if (!problem.empty()) {
        std::cerr << problem << '\n';
        return 1;
    }
    std::cout << path << '\n';
    return 0;
}
