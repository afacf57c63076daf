#pragma once

#include "preview/velmarpreview.h"
#include "velmarapi.h"

#include "tools/OutputFile.h"

#include <cstdint>
#include <functional>
#include <string>

struct PreviewSettings {
    /// 0: one for each processor.
    std::uint32_t threads = 0;
    std::uint32_t seed = 0;
};

/// A render by the preview library in the folder `vs2017_64` beside this program.
class Preview {
  public:
    /// Takes the scene, also when it throws. Throws `Failure` when the library can't be loaded or is another one.
    Preview(VelmarScene* scene, const PreviewSettings& settings);
    ~Preview();
    Preview(const Preview&) = delete;
    Preview& operator=(const Preview&) = delete;

    /// Renders to the end, and calls `show` several times a second.
    void render(const std::function<void(const VelmarPreviewProgress&)>& show) const;

    VelmarPreviewProgress getProgress() const;

    /// Writes the picture so far to a file whose path is absolute. Returns whether that worked.
    bool writeImage(const std::string& path) const;

  private:
    template <class Function>
    Function* get(const char* name) const;
    void load();

    ::VelmarContext* context = nullptr;
    VelmarRenderer* renderer = nullptr;
    std::string library;
};

/// "12 of 64 samples, 5 s left"
std::string describeProgress(const VelmarPreviewProgress& progress);

/// Renders a scene to the end, writes the picture to the place of `output`, which is to be committed then, and returns
/// the last progress. Takes the scene, also when it throws. Calls `show` several times a second. Throws `Failure` when
/// nothing was rendered or written; `image` is the picture's name in its text.
VelmarPreviewProgress renderPicture(VelmarScene* scene, const PreviewSettings& settings, const OutputFile& output,
                                    const std::string& image,
                                    const std::function<void(const VelmarPreviewProgress&)>& show);
