// The reader of documents: any text is read, or refused with a place in it. What was read can be written, and that is
// read again as the same scene.

#include "velmarexceptions.h"

#include "scene/XMLPrimitives.h"
#include "scene/reading/SceneXMLReader.h"
#include "tests/support/MemoryOStream.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

namespace {

std::string documentOf(const Velmar::SceneNodeRoot& root) {
    Velmar::XMLWriteOptions options;
    options.resolve_relative_paths = false;
    return TestSupport::textOf([&](Velmar::OStream& stream) { root.writeXML(stream, 0, options); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Velmar::UnknownElements unknown;
    Velmar::SceneReadRequest request;
    request.path = "scene.xml";
    request.unknown_elements = &unknown;
    Velmar::Reference<Velmar::SceneNodeRoot> root;
    try {
        root = Velmar::parseSceneXML(text, request);
    } catch (const Velmar::SceneDocumentError& error) {
        if (error.line == 0 || error.column == 0 || error.fault.empty()) std::abort();
        return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
    const std::string document = documentOf(*root);
    // A text that ends its own section isn't written so that every reader understands it.
    if (document.find("]]>") != std::string::npos) return 0;
    if (documentOf(*Velmar::parseSceneXML(document, request)) != document) std::abort();
    return 0;
}
