#include "api/TextMeshDump.h"

#include "api/Handles.h"

#include <cstddef>
#include <fstream>
#include <locale>

using namespace Velmar;

namespace {

template <std::size_t count>
void writeIndices(std::ostream& file, const char* indent, const std::uint32_t (&indices)[count]) {
    file << indent;
    for (const std::uint32_t index : indices)
        file << index << ' ';
    file << '\n';
}

template <class Face>
void writeFaces(std::ostream& file, const char* header, const Vector<Face>& faces) {
    file << header << '\n';
    for (std::size_t i = 0; i < faces.size(); ++i) {
        writeIndices(file, "  ", faces[i].vertex_indices);
        writeIndices(file, "     ", faces[i].uv_indices);
    }
}

} // namespace

void Velmar::writeMeshText(std::ostream& file, const SceneNodeMesh& node) {
    const Reference<Mesh> kept(node.mesh);
    const Mesh& data = *kept;
    file << node.getName().view() << '\n';
    file << "vertices\n";
    for (const Vec3f& vertex : data.verts)
        file << "  " << vertex.x << ' ' << vertex.y << ' ' << vertex.z << '\n';
    file << "uv pairs\n";
    for (const Vec2f& uv : data.uv_pairs)
        file << "  " << uv.x << ' ' << uv.y << '\n';
    writeFaces(file, "triangles", data.triangles);
    writeFaces(file, "quads", data.quads);
}

void velmar_write_mesh_to_file(VelmarMesh* mesh, const char* path) {
    std::ofstream file;
    // Numbers don't depend on the host's locale.
    file.imbue(std::locale::classic());
    file.open(path);
    writeMeshText(file, *fromHandle(mesh));
}
