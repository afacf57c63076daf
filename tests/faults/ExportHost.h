#pragma once

#include "velmarapi.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNode.h"
#include "tests/support/LibraryFolder.h"
#include "tests/support/TempDir.h"

#include <streambuf>
#include <string>

namespace Faults {

/// Drops what is written to the standard streams while it lives, and allocates nothing for it.
class SilentStreams {
  public:
    SilentStreams();
    ~SilentStreams();
    SilentStreams(const SilentStreams&) = delete;
    SilentStreams& operator=(const SilentStreams&) = delete;

  private:
    class Nowhere final : public std::streambuf {
        int_type overflow(int_type byte) override { return traits_type::not_eof(byte); }
        std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    };
    Nowhere nowhere;
    std::streambuf* const out;
    std::streambuf* const err;
};

/// How far the host has come on the way to a picture.
enum class Stage { without_renderer, with_context, with_renderer, rendering };

/// A host with a handle of every kind, some of them in a scene and some not. Its end uses every handle once more,
/// deletes all of them and expects that nothing else counts them.
class ExportHost {
  public:
    /// Where files go, and where the renderer library is that allocates in each operation. One for all hosts.
    struct Folders {
        TestSupport::TempDir files;
        TestSupport::LibraryFolder library;
        Folders() { library.install("only_allocates"); }
    };

    ExportHost(const Folders& folders_, Stage stage_);
    ~ExportHost();
    ExportHost(const ExportHost&) = delete;
    ExportHost& operator=(const ExportHost&) = delete;

    /// All that a host could see of its handles: counts, elements and meshes.
    std::string describe() const;

    /// For the call under test: where it may write.
    const std::string path;
    const char* filePath() const { return path.c_str(); }

    // What no scene holds. A call that deletes one of them sets it to null.
    VelmarScene* empty_scene = nullptr;
    /// With nothing but render settings.
    VelmarScene* other_scene = nullptr;
    VelmarMesh* mesh = nullptr;
    VelmarMaterialNode* material_node = nullptr;
    VelmarMaterial* material = nullptr;
    VelmarModel* model = nullptr;
    VelmarTonemapping* tonemapping = nullptr;
    VelmarRenderSettings* settings = nullptr;
    VelmarCamera* camera = nullptr;
    VelmarBackground* background = nullptr;
    VelmarContext* new_context = nullptr;
    /// Holds a node, as VelmarBackground_Delete takes it.
    void* background_record = nullptr;

    // What a scene holds, and that scene.
    VelmarScene* scene = nullptr;
    VelmarMesh* scene_mesh = nullptr;
    VelmarMaterialNode* scene_material_node = nullptr;

    // From the stage on that is called so.
    VelmarContext* context = nullptr;
    VelmarRenderer* renderer = nullptr;

    /// What the call under test made, if it makes something.
    void* made = nullptr;

  private:
    void useEveryHandle();
    void deleteEveryHandle();

    const Folders& folders;
    const Stage stage;
};

} // namespace Faults
