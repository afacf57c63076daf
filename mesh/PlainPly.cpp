#include "velmarcompiler.h"

#include "mesh/Mesh.h"
#include "mesh/MeshBuilder.h"
#include "mesh/PlainPlyText.h"
#include "mesh/PlyInput.h"
#include "mesh/PlyParts.h"
#include "utils/BinaryStreams.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace Velmar {

using namespace PlyParts;

namespace {

// ---- binary files ---------------------------------------------------------------------------------------------------

/// `other_order`: the file's bytes aren't in the order of the processor.
template <bool other_order>
class BinaryBody {
  public:
    BinaryBody(std::string_view body, Target& filled) : p(body.data()), end(p + body.size()), target(filled) {}

    bool readVertices(const Plan& plan) {
        const auto& properties = plan.vertices->properties;
        std::array<std::size_t, 3> offsets = {};
        std::size_t stride = 0;
        for (std::size_t i = 0; i < properties.size(); ++i) {
            for (std::size_t axis = 0; axis < 3; ++axis)
                if (plan.axes[axis] == i) offsets[axis] = stride;
            stride += sizeOf(properties[i].type);
        }
        const auto count = static_cast<std::size_t>(plan.vertices->count);
        if (count > rest() / stride) return false;
        target.tryReserveVertices(count);

        std::array<PlyType, 3> types = {};
        for (std::size_t axis = 0; axis < 3; ++axis)
            types[axis] = properties[plan.axes[axis]].type;
        const auto areAll = [&](PlyType type) { return std::count(types.begin(), types.end(), type) == 3; };
        if (areAll(PlyType::float32))
            addVertices(count, stride, offsets, [](const char* at, std::size_t) { return load<float>(at); });
        else if (areAll(PlyType::float64))
            addVertices(count, stride, offsets, [](const char* at, std::size_t) { return load<double>(at); });
        else
            addVertices(count, stride, offsets, [&](const char* at, std::size_t axis) {
                return types[axis] == PlyType::float32 ? load<float>(at) : load<double>(at);
            });
        return true;
    }

    bool readFaces(const Plan& plan) {
        const PlyElement& faces = *plan.faces;
        const PlyProperty& list = faces.properties[plan.indices];
        const std::size_t min_list = sizeOf(list.length_type) + 3 * sizeOf(list.type);
        target.tryReserveTriangles(maxInstances(faces, rest(), sizeOfScalars(faces) + min_list));
        const bool has_usual_types = list.length_type == PlyType::uint8 && sizeOf(list.type) == 4;
        if (has_usual_types && numLists(faces) == 1) return readUsualFaces(plan);
        return readRecords(faces, plan.indices);
    }

    bool pass(const PlyElement& element) {
        if (numLists(element) != 0) return readRecords(element, none);
        const std::size_t stride = sizeOfScalars(element);
        const auto count = static_cast<std::size_t>(element.count);
        if (stride == 0) return true;
        if (count > rest() / stride) return false;
        p += count * stride;
        return true;
    }

  private:
    template <class T>
    VELMAR_ALWAYS_INLINE static T load(const char* from) {
        T value;
        std::memcpy(&value, from, sizeof value);
        if constexpr (other_order) value = reversedBytes(value);
        return value;
    }

    static std::int64_t loadInteger(const char* from, PlyType type) {
        switch (type) {
        case PlyType::int8:
            return load<std::int8_t>(from);
        case PlyType::uint8:
            return load<std::uint8_t>(from);
        case PlyType::int16:
            return load<std::int16_t>(from);
        case PlyType::uint16:
            return load<std::uint16_t>(from);
        case PlyType::int32:
            return load<std::int32_t>(from);
        default:
            return load<std::uint32_t>(from);
        }
    }

    static std::size_t numLists(const PlyElement& element) {
        return static_cast<std::size_t>(std::count_if(element.properties.begin(), element.properties.end(),
                                                      [](const PlyProperty& property) { return property.is_list; }));
    }

    static std::size_t sizeOfScalars(const PlyElement& element) {
        std::size_t size = 0;
        for (const PlyProperty& property : element.properties)
            if (!property.is_list) size += sizeOf(property.type);
        return size;
    }

    std::size_t rest() const { return static_cast<std::size_t>(end - p); }

    /// `number` loads a coordinate from its place.
    template <class Number>
    void addVertices(std::size_t count, std::size_t stride, const std::array<std::size_t, 3>& offsets, Number number) {
        const auto [x, y, z] = offsets;
        const char* record = p;
        for (std::size_t i = 0; i < count; ++i, record += stride)
            target.addVertex(static_cast<float>(number(record + x, 0)), static_cast<float>(number(record + y, 1)),
                             static_cast<float>(number(record + z, 2)));
        p = record;
    }

    /// Faces of one list, with a length of a byte and indices of 32 bits.
    bool readUsualFaces(const Plan& plan) {
        const auto& properties = plan.faces->properties;
        std::size_t before = 0;
        for (std::size_t i = 0; i < plan.indices; ++i)
            before += sizeOf(properties[i].type);
        const std::size_t fixed_size = sizeOfScalars(*plan.faces) + 1;
        const auto count = static_cast<std::size_t>(plan.faces->count);
        const char* record = p;
        for (std::size_t i = 0; i < count; ++i) {
            const auto left = static_cast<std::size_t>(end - record);
            if (left < fixed_size) return false;
            const char* const list = record + before;
            const std::size_t length = load<std::uint8_t>(list);
            const std::size_t size = fixed_size + length * sizeof(std::uint32_t);
            if (left < size) return false;
            if (length >= 3 && !target.addTriangle(load<std::uint32_t>(list + 1), load<std::uint32_t>(list + 5),
                                                   load<std::uint32_t>(list + 9)))
                return false;
            record += size;
        }
        p = record;
        return true;
    }

    /// Records of any properties. Makes triangles of the list `indices`.
    bool readRecords(const PlyElement& element, std::size_t indices) {
        for (long i = 0; i < element.count; ++i)
            for (std::size_t k = 0; k < element.properties.size(); ++k) {
                const PlyProperty& property = element.properties[k];
                const std::size_t size = sizeOf(property.is_list ? property.length_type : property.type);
                if (rest() < size) return false;
                const char* const at = std::exchange(p, p + size);
                if (property.is_list && !readList(property, loadInteger(at, property.length_type), k == indices))
                    return false;
            }
        return true;
    }

    bool readList(const PlyProperty& list, std::int64_t length, bool is_face) {
        if (length <= 0) return true;
        const std::size_t size = sizeOf(list.type);
        // RPly counts in `long`.
        if (length > std::numeric_limits<std::int32_t>::max() || static_cast<std::size_t>(length) > rest() / size)
            return false;
        const auto index = [&](std::size_t corner) {
            return static_cast<std::uint32_t>(loadInteger(p + corner * size, list.type));
        };
        if (is_face && length >= 3 && !target.addTriangle(index(0), index(1), index(2))) return false;
        p += static_cast<std::size_t>(length) * size;
        return true;
    }

    const char* p;
    const char* end;
    Target& target;
};

template <class Body>
bool readBody(Body&& body, const PlyHeader& header, const Plan& plan) {
    for (const PlyElement& element : header.elements) {
        bool fine = false;
        if (&element == plan.vertices)
            fine = body.readVertices(plan);
        else if (&element == plan.faces)
            fine = body.readFaces(plan);
        else
            fine = body.pass(element);
        if (!fine) return false;
    }
    return true;
}

bool readElements(const PlyHeader& header, const Plan& plan, std::string_view body, Target& target) {
    static_assert(std::endian::native == std::endian::little);
    switch (header.format) {
    case PlyFormat::ascii:
        return readBody(TextBody(body, target), header, plan);
    case PlyFormat::little_endian:
        return readBody(BinaryBody<false>(body, target), header, plan);
    default:
        return readBody(BinaryBody<true>(body, target), header, plan);
    }
}

} // namespace

bool readPlainPly(const PlyHeader& header, std::string_view file, Mesh& mesh, float scale) {
    // The product of two NaNs is one of them, which one is up to the compiler.
    if (!mesh.verts.empty() || !mesh.triangles.empty() || mesh.num_uv_mappings != 0 || std::isnan(scale)) return false;
    const std::optional<Plan> plan = planOf(header);
    if (!plan) return false;
    {
        MeshBuilder builder(mesh);
        Target target(builder, scale);
        if (readElements(header, *plan, file.substr(header.body_offset), target)) {
            target.addWaiting();
            builder.build();
            return true;
        }
    }
    Vector<Vec3f>().swap(mesh.verts);
    Vector<MeshTriangle>().swap(mesh.triangles);
    return false;
}

} // namespace Velmar
