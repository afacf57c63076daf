#pragma once

#include "velmarstring.h"

#include <cstdint>

namespace Velmar {

/// Hears how far the writing of a document has come. Called by slot number, for listeners live in other libraries.
class ProgressListener {
  public:
    ProgressListener() = default;
    ProgressListener(const ProgressListener&) = delete;
    ProgressListener& operator=(const ProgressListener&) = delete;

    /// Slot 0: runs the destructor and, with bit 0 of `flags` set, frees the memory. Not called by the writer.
    virtual void* destroy(unsigned flags) = 0;
    /// Slot 1: `fraction` lies between 0 and 1, both excluded.
    virtual void reportProgress(float fraction) = 0;

  protected:
    ~ProgressListener() = default;
};

/// What nodes need to know of the document that they write themselves into. Made once a document.
struct XMLWriteOptions {
    /// The path given to the writer.
    String scene_path;
    /// `scene_path` up to its last slash or backslash, without it; empty if it has none.
    String scene_dir;
    /// Where mesh files go; empty for the folder beside the scene.
    String meshes_dir;
    /// Whether relative paths are written joined to `scene_dir`.
    bool resolve_relative_paths = true;
    bool write_material_uids = true;
    std::uint32_t write_mode = 0;
    /// Not owned; null for none.
    ProgressListener* progress_listener = nullptr;
};

} // namespace Velmar
