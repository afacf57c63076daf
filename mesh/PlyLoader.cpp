#include "mesh/PlyLoader.h"

#include "velmarcompiler.h"
#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshChecks.h"
#include "mesh/PlyHeader.h"
#include "mesh/RecordAppender.h"
#include "utils/MappedFile.h"
#include "utils/System.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <emmintrin.h>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <rply.h>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace Velmar {

namespace {

struct PlyCloser {
    void operator()(p_ply ply) const { ply_close(ply); }
};
using PlyHandle = std::unique_ptr<t_ply_, PlyCloser>;

/// The state of one run, which the callbacks reach through their user pointer.
class PlyRun {
  public:
    PlyRun(Mesh& filled, float position_scale) : mesh(filled), scale(position_scale) {}
    PlyRun(const PlyRun&) = delete;
    PlyRun& operator=(const PlyRun&) = delete;

    /// The vertex whose coordinates are arriving.
    float vertex[3] = {};
    /// What a callback threw. It must not pass through the reader's frames, so it waits here.
    std::exception_ptr failure{};

    void reserve(long num_vertices, long num_faces) {
        reserveClaimed(vertices, num_vertices);
        reserveClaimed(triangles, num_faces);
    }

    void addVertex() { vertices.append() = {vertex[0] * scale, vertex[1] * scale, vertex[2] * scale}; }

    /// Has every number of a face looked at when it arrives, because vertices may come later.
    void expectFacesBeforeVertices() { numbers_end = numbers + 1; }

    /// Takes the length or an index of a list, which may be looked at later. False when there is no room for another.
    bool takeListNumber(double number) {
        *next_number++ = number;
        return next_number != numbers_end;
    }

    /// Adds the triangles of all numbers that were taken.
    void addTriangles() {
        const double* const end = std::exchange(next_number, numbers);
        for (const double* number = numbers; number != end;) {
            if (list_rest == 0) {
                // Most lists are triangles.
                if (*number == 3.0 && end - number > 3) {
                    addTriangle(toIndex(number[1]), toIndex(number[2]), toIndex(number[3]));
                    number += 4;
                } else {
                    list_rest = toLength(*number++);
                    num_corners = 0;
                }
                continue;
            }
            --list_rest;
            const std::uint32_t index = toIndex(*number++);
            if (num_corners == 3) continue;
            corners[num_corners++] = index;
            if (num_corners == 3) addTriangle(corners[0], corners[1], corners[2]);
        }
    }

    void settle() {
        vertices.settle();
        triangles.settle();
    }

  private:
    /// Room for as many elements as the header claims, within reason: a claim that the body doesn't keep must cost
    /// nothing.
    template <class T>
    static void reserveClaimed(RecordAppender<T>& elements, long claimed) {
        constexpr long within_reason = 4000000;
        if (claimed > 0) elements.reserve(elements.size() + static_cast<std::size_t>(std::min(claimed, within_reason)));
    }

    /// How many values follow a length: what the conversion to `long` makes of it, with the processor's answer to what
    /// no `long` holds, which is negative.
    static long toLength(double value) {
        const auto number = _mm_set_sd(value);
        const long length =
            sizeof(long) == 4 ? static_cast<long>(_mm_cvttsd_si32(number)) : static_cast<long>(_mm_cvttsd_si64(number));
        return std::max(length, 0L);
    }

    /// The low 32 bits of the value without its fraction; 0 for what no 64-bit integer holds.
    static std::uint32_t toIndex(double value) {
        return static_cast<std::uint32_t>(_mm_cvttsd_si64(_mm_set_sd(value)));
    }

    /// As `Mesh::addTriangle`.
    VELMAR_ALWAYS_INLINE void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        const std::size_t num_vertices = vertices.size();
        if (a >= num_vertices || b >= num_vertices || c >= num_vertices || mesh.num_uv_mappings != 0) [[unlikely]]
            checkIndices(a, b, c);
        const Vec3f* const at = vertices.data();
        if (!hasArea(at[a], at[b], at[c])) return;
        MeshTriangle& triangle = triangles.append();
        triangle.vertex_indices[0] = a;
        triangle.vertex_indices[1] = b;
        triangle.vertex_indices[2] = c;
        std::fill(std::begin(triangle.uv_indices), std::end(triangle.uv_indices), 0);
        triangle.material_index = 0;
    }

    void checkIndices(std::uint32_t a, std::uint32_t b, std::uint32_t c) const {
        for (const std::uint32_t index : {a, b, c})
            if (index >= vertices.size()) throwVertexIndexOutOfBounds(FaceKind::triangle, index);
        checkUVIndices(mesh.num_uv_mappings, mesh.uv_pairs.size(), FaceKind::triangle, {0, 0, 0});
    }

    static constexpr std::size_t most_numbers = 2048;

    Mesh& mesh;
    float scale;
    RecordAppender<Vec3f> vertices{mesh.verts};
    RecordAppender<MeshTriangle> triangles{mesh.triangles};
    double* next_number = numbers;
    double* numbers_end = numbers + most_numbers;
    /// Of the list whose numbers are looked at: how many are to come, and the corners that there were.
    long list_rest = 0;
    int num_corners = 0;
    std::uint32_t corners[3] = {};
    double numbers[most_numbers];
};

constexpr int go_on = 1;
constexpr int stop = 0;

// RPly calls back for each number, so every look at the argument, a call of its own, is a large part of the work.

template <class User>
User& userOf(p_ply_argument argument) {
    void* user = nullptr;
    ply_get_argument_user_data(argument, &user, nullptr);
    return *static_cast<User*>(user);
}

template <class Take>
int guarded(PlyRun& run, Take take) noexcept {
    try {
        take();
        return go_on;
    } catch (...) {
        run.failure = std::current_exception();
        return stop;
    }
}

/// A list in place of a number calls with its length too, which is no coordinate but is taken as one.
int onXOrY(p_ply_argument argument) {
    userOf<float>(argument) = static_cast<float>(ply_get_argument_value(argument));
    return go_on;
}

/// The element's values arrive in the order x, y, z; z completes the vertex.
int onZ(p_ply_argument argument) {
    auto& run = userOf<PlyRun>(argument);
    run.vertex[2] = static_cast<float>(ply_get_argument_value(argument));
    return guarded(run, [&run] { run.addVertex(); });
}

int addTakenTriangles(PlyRun& run) noexcept {
    return guarded(run, [&run] { run.addTriangles(); });
}

/// Called with the length of a list, then with each of its values.
int onIndex(p_ply_argument argument) {
    auto& run = userOf<PlyRun>(argument);
    if (run.takeListNumber(ply_get_argument_value(argument))) return go_on;
    return addTakenTriangles(run);
}

/// As the reader's own callback, but without a word when it was us who stopped it, or would have by now.
void onError(p_ply ply, const char* message) {
    void* user = nullptr;
    ply_get_ply_user_data(ply, &user, nullptr);
    if (user != nullptr) {
        PlyRun& run = *static_cast<PlyRun*>(user);
        if (run.failure != nullptr || addTakenTriangles(run) == stop) return;
    }
    std::fprintf(stderr, "RPly: %s\n", message);
}

/// The value of a type word as a plain number: some versions of RPly store -1 there, which its enumeration can't hold.
unsigned toNumber(const e_ply_type& type) {
    unsigned number = 0;
    static_assert(sizeof type == sizeof number);
    std::memcpy(&number, &type, sizeof number);
    return number;
}

/// Whether the element has no properties but so many instances that RPly would count through them for ever.
bool countsThroughNothing(p_ply_element element) {
    constexpr long many = 100000000;
    long instances = 0;
    ply_get_element_info(element, nullptr, &instances);
    return ply_get_next_property(element, nullptr) == nullptr && instances > many;
}

/// Whether all properties have types that exist, and all elements something to read. RPly takes any word for a type in
/// the header, and then reads the body by a function from beside its table.
bool isReadable(p_ply ply) {
    for (p_ply_element element = ply_get_next_element(ply, nullptr); element != nullptr;
         element = ply_get_next_element(ply, element)) {
        if (countsThroughNothing(element)) return false;
        for (p_ply_property property = ply_get_next_property(element, nullptr); property != nullptr;
             property = ply_get_next_property(element, property)) {
            e_ply_type type = PLY_INT8;
            e_ply_type length_type = PLY_INT8;
            e_ply_type value_type = PLY_INT8;
            ply_get_property_info(property, nullptr, &type, &length_type, &value_type);
            if (toNumber(type) > PLY_LIST) return false;
            if (toNumber(type) == PLY_LIST && (toNumber(length_type) >= PLY_LIST || toNumber(value_type) >= PLY_LIST))
                return false;
        }
    }
    return true;
}

/// Whether the property "vertex_indices" is a list; one number makes no face.
bool hasListOfIndices(p_ply_element face) {
    for (p_ply_property property = ply_get_next_property(face, nullptr); property != nullptr;
         property = ply_get_next_property(face, property)) {
        const char* name = nullptr;
        e_ply_type type = PLY_INT8;
        ply_get_property_info(property, &name, &type, nullptr, nullptr);
        if (std::string_view(name) == "vertex_indices") return type == PLY_LIST;
    }
    return false;
}

void setCallbacks(p_ply ply, PlyRun& run) {
    ply_set_read_cb(ply, "vertex", "x", onXOrY, &run.vertex[0], 0);
    ply_set_read_cb(ply, "vertex", "y", onXOrY, &run.vertex[1], 0);
    const long num_vertices = ply_set_read_cb(ply, "vertex", "z", onZ, &run, 0);
    long num_faces = 0;
    bool vertices_seen = false;
    for (p_ply_element element = ply_get_next_element(ply, nullptr); element != nullptr;
         element = ply_get_next_element(ply, element)) {
        const char* name = nullptr;
        ply_get_element_info(element, &name, nullptr);
        if (std::string_view(name) == "vertex") vertices_seen = true;
        if (std::string_view(name) != "face") continue;
        if (hasListOfIndices(element)) num_faces = ply_set_read_cb(ply, "face", "vertex_indices", onIndex, &run, 0);
        if (!vertices_seen) run.expectFacesBeforeVertices();
        break;
    }
    run.reserve(num_vertices, num_faces);
}

/// A copy of a text with a line end behind it, in a file that goes with the object.
class TerminatedCopy {
  public:
    explicit TerminatedCopy(std::string_view text) {
        std::random_device random;
        std::error_code error;
        full_path = std::filesystem::temp_directory_path(error);
        if (error) throw Velmar::Exception("read of body failed.");
        full_path /= ("velmar-" + std::to_string(random()) + "-" + std::to_string(random()) + ".ply");
        try {
            write(text);
        } catch (...) {
            remove();
            throw;
        }
    }
    ~TerminatedCopy() { remove(); }
    TerminatedCopy(const TerminatedCopy&) = delete;
    TerminatedCopy& operator=(const TerminatedCopy&) = delete;

    std::string path() const {
        const std::u8string text = full_path.u8string();
        return std::string(text.begin(), text.end());
    }

  private:
    void write(std::string_view text) const {
        std::ofstream file(full_path, std::ios::binary);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
        file.put('\n');
        file.close();
        if (file.fail()) throw Velmar::Exception("read of body failed.");
    }

    void remove() const noexcept {
        std::error_code ignored;
        std::filesystem::remove(full_path, ignored);
    }

    std::filesystem::path full_path;
};

[[noreturn]] void throwBadHeader() {
    throw Velmar::Exception("could not read header.");
}

/// As RPly tells of what it doesn't understand itself. The word may hold anything, which terminals needn't obey.
void tellWhere(const PlyHeaderCheck& check) {
    std::string what = "ends too early or too late";
    if (!check.word.empty()) {
        what = "has an unexpected '";
        for (const char c : check.word)
            what += c > ' ' && c < '\x7F' ? c : '?';
        what += '\'';
    }
    std::fprintf(stderr, "PLY header: line %s %s\n", std::to_string(check.line).c_str(), what.c_str());
}

/// Opens the file for RPly after a look at what it would stumble over. `copy` holds a text that needed its end.
PlyHandle openChecked(std::string_view path, PlyRun& run, std::optional<TerminatedCopy>& copy) {
    PlyHandle ply(ply_open(FileUtils::toCLibraryPath(path).c_str(), onError, 0, &run));
    if (ply == nullptr) throw Velmar::Exception("could not open file '" + std::string(path) + "' for reading.");

    std::optional<MappedFile> file;
    try {
        file.emplace(path);
    } catch (const Velmar::Exception&) {
        throwBadHeader();
    }
    const PlyHeaderCheck check = checkPlyHeader(file->getText());
    if (!check.complete) {
        tellWhere(check);
        throwBadHeader();
    }
    if (check.ascii && !endsWithBlank(file->getText())) {
        copy.emplace(file->getText());
        ply.reset(ply_open(FileUtils::toCLibraryPath(copy->path()).c_str(), onError, 0, &run));
        if (ply == nullptr) throw Velmar::Exception("could not open file '" + std::string(path) + "' for reading.");
    }
    return ply;
}

} // namespace

void loadPLY(std::string_view path, Mesh& mesh, float scale) {
    mesh.raiseNumUVMappings(0);
    mesh.addMaterialUsed("default");

    // RPly reads the numbers of text files by the C runtime.
    const PlainNumericLocale locale;
    PlyRun run(mesh, scale);
    std::optional<TerminatedCopy> copy;
    const PlyHandle ply = openChecked(path, run, copy);
    if (ply_read_header(ply.get()) == 0 || !isReadable(ply.get())) throwBadHeader();

    setCallbacks(ply.get(), run);
    const bool complete = ply_read(ply.get()) != 0 && addTakenTriangles(run) == go_on;
    if (run.failure != nullptr) std::rethrow_exception(run.failure);
    if (!complete) throw Velmar::Exception("read of body failed.");
    run.settle();
    mesh.build();
}

} // namespace Velmar
