#include "mesh/MeshReaders.h"
#include "tests/fuzz/support/FuzzFile.h"
#include "tests/fuzz/support/ReadMesh.h"
#include "tests/support/ReaderPaths.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFile file("stl");
    const std::string path = file.fill(data, size);
    readMesh([&](Velmar::Mesh& mesh) { Velmar::loadSTL(path, mesh, 0.5f); });
    const std::size_t part_size = size == 0 ? 1 : data[size / 2];
    try {
        if (!TestSupport::isSTLSameInParts({reinterpret_cast<const char*>(data), size}, part_size)) std::abort();
    } catch (const std::bad_alloc&) {
        // One way may need memory that the other doesn't.
    }
    return 0;
}
