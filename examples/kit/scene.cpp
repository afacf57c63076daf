// Builds a complete scene and writes it, by velmar.hpp: a box of two materials on the ground, in sunlight, seen by a
// camera.
//
// Usage: scene_with_kit_in_cpp [SCENE.xml]
#include <iostream>
#include <velmar.hpp>

namespace {

/// The corners of a box of 2 x 2 x 2 metres on the ground.
constexpr float corners[] = {
    -1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, // below
    -1, -1, 2, 1, -1, 2, 1, 1, 2, -1, 1, 2, // above
};

/// All sides use the same square of texture coordinates.
constexpr float texture_coordinates[] = {0, 0, 1, 0, 1, 1, 0, 1};

constexpr std::uint32_t walls[] = {
    0, 3, 2, 1,             // the bottom
    0, 1, 5, 4, 1, 2, 6, 5, // and around
    2, 3, 7, 6, 3, 0, 4, 7,
};
constexpr std::uint32_t square[] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
/// The top, of two triangles.
constexpr std::uint32_t lid[] = {4, 5, 6, 4, 6, 7};
constexpr std::uint32_t halves[] = {0, 1, 2, 0, 2, 3};

velmar::Mesh makeBox() {
    velmar::Mesh box("Box");
    box.addMaterialName("Walls");
    box.addMaterialName("Lid");
    box.addVertices(corners);
    box.setTextureCoordinates(texture_coordinates);
    box.addQuads(walls, 0, square);
    box.addTriangles(lid, 1, halves);
    box.build();
    return box;
}

void addCamera(velmar::Scene& scene) {
    velmar::Camera camera = scene.add(velmar::Camera());
    camera.setPosition({0, -8, 2});
    camera.setForwards({0, 1, -0.125});
    camera.setUp({0, 0, 1});
    // As far from the lens as the sensor is wide: a field of view of 53 degrees.
    camera.setSensorWidth(0.036);
    camera.setLensSensorDistance(0.036);
    camera.setFocusDistance(8);
}

void writeScene(const std::string& path) {
    velmar::Scene scene;
    scene.add(velmar::RenderSettings(800, 600)).setHaltSamplesPerPixel(200);
    addCamera(scene);
    scene.add(velmar::Tonemapping(velmar::TonemappingKind::reinhard)).setBurn(10);
    scene.add(velmar::Background::sunSky({-1, -1, 1}));
    const velmar::Material brick = scene.add(velmar::Material("Walls", {0.6, 0.2, 0.1}));
    const velmar::Material paint = scene.add(velmar::Material("Lid", {0.8, 0.8, 0.7}));
    const velmar::Mesh box = scene.add(makeBox());
    velmar::Model model = scene.add(velmar::Model("Box", box, {brick, paint}));
    // A rotation by 90 degrees around z, row by row.
    model.place({0.5, 0, 0}, {0, -1, 0, 1, 0, 0, 0, 0, 1});
    scene.addGroundPlane(0, 100);
    scene.write(path);
}

} // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "scene.xml";
    try {
        writeScene(path);
    } catch (const velmar::Error& error) {
        std::cerr << error.message() << "\n";
        return 1;
    }
    std::cout << path << "\n";
    return 0;
}
