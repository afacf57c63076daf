#include "kit/PlyPolygons.h"

#include "velmarexceptions.h"

#include "mesh/PlyInput.h"
#include "utils/MappedFile.h"
#include "utils/System.h"

#include <cmath>
#include <exception>
#include <rply.h>

namespace Velmar::Kit {

namespace {

/// Numbers of a vertex, as they are stored until all have come.
enum Component : long { x, y, z, normal_x, normal_y, normal_z, u, v, component_count };

/// What the callbacks fill.
struct Reading {
    Mesh& mesh;
    float values[component_count] = {};
    long last_component = z;
    bool has_normals = false;
    bool has_uvs = false;
    /// Of the face at hand: its first corner and the two before the next.
    std::uint32_t corners[4] = {};
    std::exception_ptr thrown{};
};

/// Calls `fill` from a callback: no exception may pass RPly's frames. Returns what tells it to go on.
template <class Fill>
int guardedFill(Reading& reading, const Fill& fill) {
    try {
        fill();
        return 1;
    } catch (...) {
        reading.thrown = std::current_exception();
        return 0;
    }
}

Reading& readingOf(p_ply_argument argument, long& index) {
    void* pointer = nullptr;
    ply_get_argument_user_data(argument, &pointer, &index);
    return *static_cast<Reading*>(pointer);
}

void addVertex(Reading& reading) {
    const float* const values = reading.values;
    if (reading.has_normals)
        reading.mesh.addVertexWithNormal({values[x], values[y], values[z]},
                                         {values[normal_x], values[normal_y], values[normal_z]});
    else
        reading.mesh.addVertex({values[x], values[y], values[z]});
    if (reading.has_uvs) reading.mesh.uv_pairs.push_back({values[u], values[v]});
}

int takeComponent(p_ply_argument argument) {
    long component = 0;
    Reading& reading = readingOf(argument, component);
    return guardedFill(reading, [&] {
        reading.values[component] = static_cast<float>(ply_get_argument_value(argument));
        if (component == reading.last_component) addVertex(reading);
    });
}

void addTriangle(Reading& reading, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    reading.mesh.triangles.push_back({{a, b, c}, {a, b, c}, 0});
}

/// Takes corner `index` of `count`: up to four are kept, and from the fifth on each makes a triangle of a fan.
void addCorner(Reading& reading, long index, long count, std::uint32_t vertex) {
    std::uint32_t(&corners)[4] = reading.corners;
    if (index < 4) corners[index] = vertex;
    if (count == 3 && index == 2) addTriangle(reading, corners[0], corners[1], corners[2]);
    if (count == 4 && index == 3)
        reading.mesh.quads.push_back(
            {{corners[0], corners[1], corners[2], corners[3]}, {corners[0], corners[1], corners[2], corners[3]}, 0});
    if (count > 4 && index >= 2) {
        if (index > 2) corners[1] = corners[2];
        corners[2] = vertex;
        addTriangle(reading, corners[0], corners[1], corners[2]);
    }
}

int takeCorner(p_ply_argument argument) {
    long unused = 0;
    Reading& reading = readingOf(argument, unused);
    long count = 0;
    long index = 0;
    ply_get_argument_property(argument, nullptr, &count, &index);
    // The length comes first, as if it were the corner before the first.
    if (index < 0) return 1;
    return guardedFill(reading, [&] {
        const double value = ply_get_argument_value(argument);
        constexpr double end = 4294967296.0;
        if (!(value >= 0 && value < end)) throw Exception("A face names a vertex that isn't there.");
        addCorner(reading, index, count, static_cast<std::uint32_t>(value));
    });
}

void reportToNobody(p_ply, const char*) {}

/// Asks for a property of vertices. Returns whether there is one.
bool ask(p_ply file, Reading& reading, const char* name, Component component) {
    if (ply_set_read_cb(file, "vertex", name, takeComponent, &reading, component) == 0) return false;
    reading.last_component = component;
    return true;
}

/// Asks for all properties that are there, and finds out which comes last in the file's order.
void askForVertices(p_ply file, Reading& reading) {
    if (!ask(file, reading, "x", x) || !ask(file, reading, "y", y) || !ask(file, reading, "z", z))
        throw Exception("The vertices have no positions.");
    const bool nx = ask(file, reading, "nx", normal_x);
    const bool ny = ask(file, reading, "ny", normal_y);
    const bool nz = ask(file, reading, "nz", normal_z);
    reading.has_normals = nx && ny && nz;
    constexpr const char* names[][2] = {{"u", "v"}, {"s", "t"}, {"texture_u", "texture_v"}};
    for (const auto& pair : names) {
        const bool has_u = ask(file, reading, pair[0], u);
        const bool has_v = ask(file, reading, pair[1], v);
        reading.has_uvs = has_u && has_v;
        if (reading.has_uvs) break;
    }
}

/// The component of the last property of vertices that has one, in the file's order.
long lastComponent(p_ply file, long fallback) {
    constexpr std::pair<std::string_view, Component> names[] = {
        {"x", x}, {"y", y}, {"z", z}, {"nx", normal_x}, {"ny", normal_y}, {"nz", normal_z},
        {"u", u}, {"v", v}, {"s", u}, {"t", v},         {"texture_u", u}, {"texture_v", v}};
    long last = fallback;
    for (p_ply_element element = ply_get_next_element(file, nullptr); element != nullptr;
         element = ply_get_next_element(file, element)) {
        const char* name = nullptr;
        long count = 0;
        ply_get_element_info(element, &name, &count);
        if (std::string_view(name) != "vertex") continue;
        for (p_ply_property property = ply_get_next_property(element, nullptr); property != nullptr;
             property = ply_get_next_property(element, property)) {
            const char* property_name = nullptr;
            ply_get_property_info(property, &property_name, nullptr, nullptr, nullptr);
            for (const auto& [known, component] : names)
                if (known == property_name) last = component;
        }
    }
    return last;
}

/// Faces may come before the vertices in a file, so their indices are checked at the end.
template <class Face>
void checkIndices(const Vector<Face>& faces, std::size_t count) {
    for (const Face& face : faces)
        for (const std::uint32_t index : face.vertex_indices)
            if (index >= count)
                throw Exception("A face names vertex " + std::to_string(index) + ", which isn't there.");
}

} // namespace

Reference<Mesh> readPlyPolygons(const std::string& path, float scale) {
    const Reference<Mesh> mesh(new Mesh);
    const PlainNumericLocale locale;
    const MappedFile bytes(path);
    const PlyHeader header = parsePlyHeader(bytes.getText());
    if (!header.complete) throw Exception("could not read header.");
    PlyFileStream stream(header, bytes.getText());
    const PlyHandle file = openPly(stream, reportToNobody, nullptr);
    if (!file) throw BadAlloc();
    if (!readPlyHeader(file.get())) throw Exception("could not read header.");

    Reading reading{*mesh};
    askForVertices(file.get(), reading);
    reading.last_component = lastComponent(file.get(), reading.last_component);
    if (ply_set_read_cb(file.get(), "face", "vertex_indices", takeCorner, &reading, 0) == 0)
        ply_set_read_cb(file.get(), "face", "vertex_index", takeCorner, &reading, 0);
    const bool is_read = ply_read(file.get()) != 0;
    if (reading.thrown) std::rethrow_exception(reading.thrown);
    if (!is_read) throw Exception("read of body failed.");

    checkIndices(mesh->triangles, mesh->verts.size());
    checkIndices(mesh->quads, mesh->verts.size());
    for (Vec3f& position : mesh->verts)
        position = {position.x * scale, position.y * scale, position.z * scale};
    if (reading.has_uvs) mesh->num_uv_mappings = 1;
    mesh->build();
    return mesh;
}

} // namespace Velmar::Kit
