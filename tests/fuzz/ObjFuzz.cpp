#include "mesh/MeshReaders.h"
#include "tests/fuzz/support/FuzzFile.h"
#include "tests/fuzz/support/ReadMesh.h"
#include "tests/support/ReaderPaths.h"

/// Faces that were read refer to vertices that are there.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFile file("obj");
    const std::string path = file.fill(data, size);
    readMesh([&](Velmar::Mesh& mesh) {
        Velmar::MTLLibrary library;
        Velmar::loadOBJ(path, mesh, 0.5f, false, library);
        for (const Velmar::MeshTriangle& triangle : mesh.triangles)
            for (const std::uint32_t vertex : triangle.vertex_indices)
                if (vertex >= mesh.verts.size()) std::abort();
        for (const Velmar::MeshQuad& quad : mesh.quads)
            for (const std::uint32_t vertex : quad.vertex_indices)
                if (vertex >= mesh.verts.size()) std::abort();
    });
    const std::size_t part_size = size == 0 ? 1 : data[size / 2];
    try {
        if (!TestSupport::isOBJSameInParts({reinterpret_cast<const char*>(data), size}, part_size)) std::abort();
    } catch (const std::bad_alloc&) {
        // One way may need memory that the other doesn't.
    }
    return 0;
}
