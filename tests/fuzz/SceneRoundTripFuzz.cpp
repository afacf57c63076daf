// Scenes of random calls of the flat interface: the document of each is read and written again to the byte.

#include "scene/SceneXMLWriter.h"
#include "scene/reading/SceneXMLReader.h"
#include "tests/fuzz/support/ExportCalls.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace {

std::string readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::size_t count(std::string_view text, std::string_view piece) {
    std::size_t result = 0;
    for (std::size_t at = 0; (at = text.find(piece, at)) != std::string_view::npos; at += piece.size())
        ++result;
    return result;
}

/// Whether a text ends its own section, which the writer doesn't split: such a document may say something else.
bool isAmbiguous(const std::string& document) {
    return count(document, "]]>") > count(document, "<![CDATA[");
}

void checkRoundTrip(const std::string& path) {
    const std::string written = readBytes(path);
    if (written.empty() || isAmbiguous(written)) return;
    Velmar::SceneWriteRequest again;
    again.path = Velmar::toVelmarString(path + ".again");
    again.resolve_relative_paths = false;
    try {
        Velmar::writeSceneFile(*Velmar::readSceneXML(Velmar::toVelmarString(path)), again);
    } catch (const Velmar::SceneDocumentError& error) {
        std::fprintf(stderr, "%s\n", error.getMessage().c_str());
        std::abort();
    }
    if (readBytes(path + ".again") != written) {
        std::fprintf(stderr, "%s differs from what was read\n", path.c_str());
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ExportCalls;
    // Files take most of the time under Wine.
    writes_files = false;
    Input input(data, size);
    VelmarScene* scene = nullptr;
    bool is_complete = true;
    {
        Host host;
        scene = host.scene;
        for (int i = 0; i < max_steps && !input.empty(); ++i)
            take(steps[input.below(std::size(steps))], host, input);
        const std::string path = workFolder() + "/scene.xml";
        try {
            VelmarScene_WriteToXML(scene, path.c_str());
        } catch (const Velmar::VelmarException&) {
            is_complete = false;
        }
        if (is_complete) checkRoundTrip(path);
    }
    VelmarScene_Delete(scene);
    std::filesystem::remove_all(workFolder() + "/scene_meshes");
    return 0;
}
