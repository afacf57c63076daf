#pragma once

#include "velmarapi.h"

#include "tests/support/FileBytes.h"
#include "tests/support/Golden.h"
#include "tests/support/TempDir.h"

#include <string>
#include <vector>

namespace TestSupport {

/// The scene as it is written to "scene.xml" in `dir`.
inline std::string documentIn(const TempDir& dir, VelmarScene* scene) {
    const std::string path = dir.file("scene.xml");
    VelmarScene_WriteToXML(scene, path.c_str());
    return readFileBytes(path);
}

inline std::string documentOf(VelmarScene* scene) {
    return documentIn(TempDir(), scene);
}

/// The document that holds `elements`, with this system's line ends.
inline std::string document(const std::vector<std::string>& elements) {
    std::string content;
    for (const std::string& element : elements)
        content += (content.empty() ? "" : "\n") + indented(element);
    return withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<scene>\n" + content + "</scene>\n");
}

} // namespace TestSupport
