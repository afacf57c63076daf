#include "mesh/PlainPly.h"

#include "velmarcompiler.h"

#include "mesh/Mesh.h"
#include "mesh/MeshBuilder.h"
#include "utils/numbers/Digits.h"
#include "utils/numbers/FloatScanner.h"
#include "utils/numbers/PlainFloats.h"

#include <algorithm>
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

namespace {

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

constexpr std::size_t sizeOf(PlyType type) {
    constexpr std::array<std::size_t, 8> sizes = {1, 1, 2, 2, 4, 4, 4, 8};
    return sizes[static_cast<std::size_t>(type)];
}

constexpr bool isFloat(PlyType type) {
    return type == PlyType::float32 || type == PlyType::float64;
}

/// The first property `name`, which is the one that RPly takes, or `none`.
std::size_t findProperty(const PlyElement& element, std::string_view name) {
    const auto& properties = element.properties;
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [name](const PlyProperty& property) { return property.name == name; });
    return found == properties.end() ? none : static_cast<std::size_t>(found - properties.begin());
}

/// What is read of a file.
struct Plan {
    const PlyElement* vertices = nullptr;
    /// The properties of the coordinates.
    std::array<std::size_t, 3> axes = {};
    /// Null if no element has a list of indices.
    const PlyElement* faces = nullptr;
    /// The property of the list of indices.
    std::size_t indices = none;
};

bool planVertices(const PlyElement& element, Plan& plan) {
    constexpr std::array<std::string_view, 3> names = {"x", "y", "z"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t at = findProperty(element, names[axis]);
        if (at == none || !isFloat(element.properties[at].type)) return false;
        plan.axes[axis] = at;
    }
    plan.vertices = &element;
    // RPly's callback for z completes a vertex.
    return std::is_sorted(plan.axes.begin(), plan.axes.end()) &&
           std::none_of(element.properties.begin(), element.properties.end(),
                        [](const PlyProperty& property) { return property.is_list; });
}

bool planFaces(const PlyElement& element, Plan& plan) {
    const std::size_t at = findProperty(element, "vertex_indices");
    if (at == none || !element.properties[at].is_list) return true;
    plan.faces = &element;
    plan.indices = at;
    return plan.vertices != nullptr && !isFloat(element.properties[at].type);
}

std::optional<Plan> planOf(const PlyHeader& header) {
    if (header.format == PlyFormat::none) return {};
    Plan plan;
    bool faces_seen = false;
    for (const PlyElement& element : header.elements) {
        for (const PlyProperty& property : element.properties)
            if (property.is_list && isFloat(property.length_type)) return {};
        if (element.name == "vertex" && plan.vertices == nullptr && !planVertices(element, plan)) return {};
        if (element.name == "face" && !std::exchange(faces_seen, true) && !planFaces(element, plan)) return {};
    }
    if (plan.vertices == nullptr) return {};
    return plan;
}

/// How many instances of `element` fit into `body_size` bytes if each takes `min_size`: no more than it claims.
std::size_t maxInstances(const PlyElement& element, std::size_t body_size, std::size_t min_size) {
    return std::min(static_cast<std::size_t>(element.count), body_size / std::max<std::size_t>(min_size, 1));
}

/// The mesh that is filled. Triangles wait until the processor has fetched their vertices, which may be anywhere.
class Target {
  public:
    Target(MeshBuilder& filled, float position_scale) : mesh(filled), scale(position_scale) {}
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void tryReserveVertices(std::size_t count) { mesh.tryReserveVertices(count); }
    void tryReserveTriangles(std::size_t count) { mesh.tryReserveTriangles(count); }

    VELMAR_ALWAYS_INLINE void addVertex(float x, float y, float z) {
        mesh.addVertex({x * scale, y * scale, z * scale});
    }

    /// False if a vertex doesn't exist.
    VELMAR_ALWAYS_INLINE bool addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        const std::size_t count = mesh.numVertices();
        if (a >= count || b >= count || c >= count) [[unlikely]]
            return false;
        mesh.prefetchVertices(a, b, c);
        waiting[num_waiting++] = {a, b, c};
        if (num_waiting == waiting.size()) [[unlikely]]
            addWaiting();
        return true;
    }

    /// Adds the triangles that still wait.
    void addWaiting() {
        for (const auto& [a, b, c] : std::span(waiting).first(num_waiting))
            mesh.addTriangleOfVertices({a, b, c}, {0, 0, 0}, 0);
        num_waiting = 0;
    }

  private:
    MeshBuilder& mesh;
    float scale;
    std::size_t num_waiting = 0;
    std::array<std::array<std::uint32_t, 3>, 64> waiting;
};

template <class T>
T reversed(T value) {
    auto bytes = std::bit_cast<std::array<char, sizeof(T)>>(value);
    std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<T>(bytes);
}

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
        if constexpr (other_order && sizeof(T) > 1) value = reversed(value);
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

// ---- texts ----------------------------------------------------------------------------------------------------------

class TextBody {
  public:
    TextBody(std::string_view body, Target& filled) : p(body.data()), target(filled) {
        size_left_at_start = body.size();
        if (body.size() < margin)
            continueInTail(body.size());
        else
            last_far_from_end = p + (body.size() - margin);
    }
    TextBody(const TextBody&) = delete;
    TextBody& operator=(const TextBody&) = delete;

    bool readVertices(const Plan& plan) {
        const PlyElement& vertices = *plan.vertices;
        target.tryReserveVertices(maxInstances(vertices, size_left_at_start, 2 * vertices.properties.size()));
        float numbers[4] = {};
        const std::vector<Step> steps = stepsOf(vertices, plan);
        for (long i = 0; i < vertices.count; ++i) {
            for (const Step& step : steps)
                if (!take(step, numbers)) return false;
            target.addVertex(numbers[0], numbers[1], numbers[2]);
        }
        return true;
    }

    bool readFaces(const Plan& plan) {
        const std::size_t min_size = 2 * (plan.faces->properties.size() + 3);
        target.tryReserveTriangles(maxInstances(*plan.faces, size_left_at_start, min_size));
        return takeAll(*plan.faces, stepsOf(*plan.faces, plan));
    }

    bool pass(const PlyElement& element) { return takeAll(element, stepsOf(element, {})); }

  private:
    enum class Kind : std::uint8_t { three_floats, one_float, integer, list, face };

    /// What is taken of a record at once.
    struct Step {
        Kind kind;
        PlyType type;
        PlyType length_type;
        /// The places of the floats.
        std::array<std::uint8_t, 3> targets;
    };

    /// The place of floats that are ignored.
    static constexpr std::uint8_t ignored = 3;

    static std::vector<Step> stepsOf(const PlyElement& element, const Plan& plan) {
        const auto& properties = element.properties;
        const auto isFloatAt = [&](std::size_t i) {
            return i < properties.size() && !properties[i].is_list && isFloat(properties[i].type);
        };
        const auto targetOf = [&](std::size_t i) {
            const auto axis = std::find(plan.axes.begin(), plan.axes.end(), i) - plan.axes.begin();
            return &element == plan.vertices ? static_cast<std::uint8_t>(axis) : ignored;
        };
        std::vector<Step> steps;
        for (std::size_t i = 0; i < properties.size(); ++i) {
            Step step = {Kind::integer, properties[i].type, properties[i].length_type, {}};
            if (properties[i].is_list) {
                step.kind = &element == plan.faces && i == plan.indices ? Kind::face : Kind::list;
            } else if (isFloatAt(i) && isFloatAt(i + 1) && isFloatAt(i + 2)) {
                step.kind = Kind::three_floats;
                step.targets = {targetOf(i), targetOf(i + 1), targetOf(i + 2)};
                i += 2;
            } else if (isFloatAt(i)) {
                step.kind = Kind::one_float;
                step.targets[0] = targetOf(i);
            }
            steps.push_back(step);
        }
        return steps;
    }

    bool takeAll(const PlyElement& element, const std::vector<Step>& steps) {
        float numbers[4];
        for (long i = 0; i < element.count; ++i)
            for (const Step& step : steps)
                if (!take(step, numbers)) return false;
        return true;
    }

    VELMAR_ALWAYS_INLINE bool take(const Step& step, float (&numbers)[4]) {
        switch (step.kind) {
        case Kind::three_floats:
            return takeThreeFloats(step, numbers);
        case Kind::one_float:
            return takeFloat(numbers[step.targets[0]]);
        case Kind::integer: {
            std::int64_t value = 0;
            return takeInteger(value, step.type);
        }
        case Kind::list:
            return takeList(step);
        default:
            return takeFace(step);
        }
    }

    VELMAR_ALWAYS_INLINE bool takeThreeFloats(const Step& step, float (&numbers)[4]) {
        if (!goToNumber()) return false;
        float three[3];
        const char* after = PlainFloats::scan(p, three);
        if (after == nullptr) after = PlainFloats::scanWithExponents(p, three);
        if (after == nullptr)
            return takeFloat(numbers[step.targets[0]]) && takeFloat(numbers[step.targets[1]]) &&
                   takeFloat(numbers[step.targets[2]]);
        for (std::size_t i = 0; i < 3; ++i)
            numbers[step.targets[i]] = three[i];
        p = after;
        return true;
    }

    /// RPly rounds to a double first. Only a double in the middle of two floats could make a difference, and near the
    /// middle the scanner refuses.
    bool takeFloat(float& number) {
        if (!goToNumber()) return false;
        const char* const after = FloatScanner::scan(p, number);
        if (after == nullptr || !isBlank(*after)) return false;
        p = after;
        return true;
    }

    /// Takes no magnitude of more than 31 bits: what becomes of larger ones depends on the system's `long`.
    bool takeInteger(std::int64_t& value, PlyType type) {
        if (!goToNumber()) return false;
        const char* digit = p;
        const bool negative = *digit == '-';
        if (negative || *digit == '+') ++digit;
        const char* const first = digit;
        value = 0;
        for (; Digits::isDigit(*digit); ++digit) {
            value = value * 10 + (*digit - '0');
            if (value > std::numeric_limits<std::int32_t>::max()) return false;
        }
        if (digit == first || !isBlank(*digit)) return false;
        if (negative) value = -value;
        p = digit;
        return isInRange(value, type);
    }

    static bool isInRange(std::int64_t value, PlyType type) {
        switch (type) {
        case PlyType::int8:
            return value == static_cast<std::int8_t>(value);
        case PlyType::uint8:
            return value == static_cast<std::uint8_t>(value);
        case PlyType::int16:
            return value == static_cast<std::int16_t>(value);
        case PlyType::uint16:
            return value == static_cast<std::uint16_t>(value);
        case PlyType::int32:
            return true;
        default:
            return value >= 0;
        }
    }

    bool takeList(const Step& step) {
        std::int64_t length = 0;
        if (!takeInteger(length, step.length_type)) return false;
        return isFloat(step.type) ? passFloats(length) : passIntegers(length, step.type);
    }

    bool passFloats(std::int64_t count) {
        float number = 0;
        for (; count > 0; --count)
            if (!takeFloat(number)) return false;
        return true;
    }

    bool passIntegers(std::int64_t count, PlyType type) {
        std::int64_t value = 0;
        for (; count > 0; --count)
            if (!takeInteger(value, type)) return false;
        return true;
    }

    VELMAR_ALWAYS_INLINE bool takeFace(const Step& step) {
        if (!goToNumber()) return false;
        std::array<std::uint32_t, 3> corners;
        if (sizeOf(step.type) == 4) [[likely]]
            if (const char* const after = scanUsualFace(p, corners)) [[likely]] {
                p = after;
                return target.addTriangle(corners[0], corners[1], corners[2]);
            }
        return takeAnyFace(step);
    }

    /// Reads a list of three or four indices of up to eight digits, with one space between them. Returns the place
    /// after it, which is a blank, or null.
    VELMAR_ALWAYS_INLINE static const char* scanUsualFace(const char* first, std::array<std::uint32_t, 3>& corners) {
        const bool is_quad = first[0] == '4';
        if ((first[0] != '3' && !is_quad) || first[1] != ' ') return nullptr;
        std::uint64_t stops = Digits::findOthers<48>(first);
        stops &= stops - 1;
        const std::size_t a = takeLowestBit(stops);
        const std::size_t b = takeLowestBit(stops);
        const std::size_t c = takeLowestBit(stops);
        std::size_t end = c;
        if (!isIndexLength(a - 2) || !isIndexLength(b - a - 1) || !isIndexLength(c - b - 1)) return nullptr;
        if (is_quad) {
            end = takeLowestBit(stops);
            if (first[c] != ' ' || !isIndexLength(end - c - 1)) return nullptr;
        }
        if (first[a] != ' ' || first[b] != ' ' || !isBlank(first[end])) return nullptr;
        const Digits::Four numbers = Digits::join(Digits::makePair(first + 2, a - 2, first + a + 1, b - a - 1),
                                                  Digits::makePair(first + b + 1, c - b - 1, first, 0));
        corners = {numbers.get<0>(), numbers.get<1>(), numbers.get<2>()};
        return first + end;
    }

    static std::size_t takeLowestBit(std::uint64_t& bits) {
        const std::size_t bit = lowestBit(bits);
        bits &= bits - 1;
        return bit;
    }

    /// Returns false for negative lengths too.
    static bool isIndexLength(std::size_t length) {
        constexpr std::size_t max_index_length = 8;
        return length - 1 < max_index_length;
    }

    bool takeAnyFace(const Step& step) {
        std::int64_t length = 0;
        if (!takeInteger(length, step.length_type)) return false;
        if (length < 3) return passIntegers(length, step.type);
        std::int64_t a = 0;
        std::int64_t b = 0;
        std::int64_t c = 0;
        return takeInteger(a, step.type) && takeInteger(b, step.type) && takeInteger(c, step.type) &&
               target.addTriangle(static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b),
                                  static_cast<std::uint32_t>(c)) &&
               passIntegers(length - 3, step.type);
    }

    static bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

    /// Skips blanks. Afterwards `number_reach` bytes are readable. False at the end of the text and for so many blanks
    /// that RPly, whose buffer they could fill, may refuse them.
    VELMAR_ALWAYS_INLINE bool goToNumber() {
        if (p > last_far_from_end) [[unlikely]]
            continueInTail(static_cast<std::size_t>(last_far_from_end + margin - p));
        for (std::size_t i = 0; i < max_blanks; ++i, ++p)
            if (!isBlank(*p)) return true;
        return false;
    }

    /// Goes on in a copy of the last bytes, which are followed by line ends. RPly gets one after a text without.
    void continueInTail(std::size_t size) {
        tail.fill('\n');
        std::memcpy(tail.data(), p, size);
        p = tail.data();
        last_far_from_end = tail.data() + tail.size();
    }

    static constexpr std::size_t max_blanks = 32;
    static constexpr std::size_t number_reach = PlainFloats::reach;
    static_assert(FloatScanner::reach <= number_reach);
    static constexpr std::size_t margin = max_blanks + number_reach;

    const char* p;
    /// So many bytes as `margin` are readable from here on.
    const char* last_far_from_end = nullptr;
    std::size_t size_left_at_start = 0;
    Target& target;
    std::array<char, 2 * margin> tail;
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
