#include "mesh/MeshReaders.h"
#include "tests/fuzz/support/FuzzFile.h"
#include "tests/fuzz/support/ReadMesh.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFile file("ply");
    const std::string path = file.fill(data, size);
    readMesh([&](Velmar::Mesh& mesh) { Velmar::loadPLY(path, mesh, 0.5f); });
    return 0;
}
