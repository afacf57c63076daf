#include "tests/api/SettingDefaults.h"

#include "tests/api/SceneDocument.h"

#include <gtest/gtest.h>
#include <string>

namespace SettingDefaultsTests {

using namespace TestSupport;

namespace {

template <class Handle>
using Change = void (*)(Handle*);

template <class Handle>
struct Node {
    Handle* (*create)();
    /// Not the export itself: a sanitizer refuses indirect calls of a function that is several exports.
    void (*add)(VelmarScene*, Handle*);
    /// Changes without which some settings aren't written.
    std::vector<Change<Handle>> variants = {nullptr};
};

const Node<VelmarCamera> camera_node = {
    VelmarCamera_Create, [](VelmarScene* scene, VelmarCamera* node) { VelmarScene_AddCamera(scene, node); }};
const Node<VelmarMesh> mesh_node = {[] { return VelmarMesh_Create("Mesh"); },
                                    [](VelmarScene* scene, VelmarMesh* node) { VelmarScene_AddMesh(scene, node); }};
const Node<VelmarRenderSettings> render_settings_node = {
    VelmarRenderSettings_Create,
    [](VelmarScene* scene, VelmarRenderSettings* node) { VelmarScene_AddRenderSettings(scene, node); }};
const Node<VelmarTonemapping> tonemapping_node = {
    VelmarTonemapping_Create,
    [](VelmarScene* scene, VelmarTonemapping* node) { VelmarScene_AddTonemapping(scene, node); },
    {nullptr, [](VelmarTonemapping* node) { VelmarTonemapping_SetType(node, VELMAR_TONEMAPPING_REINHARD); },
     [](VelmarTonemapping* node) { VelmarTonemapping_SetType(node, VELMAR_TONEMAPPING_CAMERA); }}};

/// The documents of new nodes, one for each variant, after `change`.
template <class Handle>
std::string written(const TempDir& dir, const Node<Handle>& kind, Change<Handle> change) {
    std::string documents;
    for (const Change<Handle> variant : kind.variants) {
        VelmarScene* const scene = VelmarScene_Create();
        Handle* const node = kind.create();
        kind.add(scene, node);
        if (change) change(node);
        if (variant) variant(node);
        documents += documentIn(dir, scene);
        VelmarScene_Delete(scene);
    }
    return documents;
}

template <class Handle>
void expectDefaults(const Node<Handle>& kind, const std::vector<SettingDefault<Handle>>& settings) {
    const TempDir dir;
    const std::string of_new_node = written(dir, kind, Change<Handle>());
    for (const SettingDefault<Handle>& setting : settings) {
        SCOPED_TRACE(setting.setter);
        if (setting.set_default) {
            EXPECT_EQ(written(dir, kind, setting.set_default), of_new_node);
        }
        EXPECT_NE(written(dir, kind, setting.set_another), of_new_node);
    }
}

} // namespace

TEST(SettingDefaults, ANewCameraHasThem) {
    expectDefaults(camera_node, velmarCameraDefaults);
}

TEST(SettingDefaults, ANewMeshHasThem) {
    expectDefaults(mesh_node, velmarMeshDefaults);
}

TEST(SettingDefaults, NewRenderSettingsHaveThem) {
    expectDefaults(render_settings_node, velmarRenderSettingsDefaults);
}

TEST(SettingDefaults, NewToneMappingHasThem) {
    expectDefaults(tonemapping_node, velmarTonemappingDefaults);
}

} // namespace SettingDefaultsTests
