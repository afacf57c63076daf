#include "velmarcompiler.h"
#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshBuilder.h"
#include "mesh/MeshReaders.h"
#include "mesh/PlyInput.h"
#include "utils/MappedFile.h"
#include "utils/System.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <emmintrin.h>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <rply.h>
#include <string>
#include <string_view>
#include <utility>

namespace Velmar {

namespace {

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

    /// Reserves memory for as many vertices and triangles as are likely to come. A hint: not having it is no failure.
    void reserve(std::size_t num_vertices, std::size_t num_faces) {
        mesh.tryReserveVertices(num_vertices);
        mesh.tryReserveTriangles(num_faces);
    }

    void addVertex() { mesh.addVertex({vertex[0] * scale, vertex[1] * scale, vertex[2] * scale}); }

    /// Has every number of a face looked at when it arrives, because vertices may come later.
    void expectFacesBeforeVertices() { numbers_end = numbers + 1; }

    /// Stores the length or an index of a list, for `addTriangles` to read. False if the buffer is full then.
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

    void build() { mesh.build(); }

  private:
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

    VELMAR_ALWAYS_INLINE void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        mesh.addTriangle({a, b, c}, {0, 0, 0}, 0);
    }

    static constexpr std::size_t max_numbers = 2048;

    MeshBuilder mesh;
    float scale;
    double* next_number = numbers;
    double* numbers_end = numbers + max_numbers;
    /// Of the list whose numbers are looked at: how many are to come, and the corners that there were.
    long list_rest = 0;
    int num_corners = 0;
    std::uint32_t corners[3] = {};
    double numbers[max_numbers];
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

constexpr const char* index_list = "vertex_indices";

/// Whether the property `index_list` is a list; one number makes no face.
bool hasListOfIndices(p_ply_element face) {
    for (p_ply_property property = ply_get_next_property(face, nullptr); property != nullptr;
         property = ply_get_next_property(face, property)) {
        const char* name = nullptr;
        e_ply_type type = PLY_INT8;
        ply_get_property_info(property, &name, &type, nullptr, nullptr);
        if (std::string_view(name) == index_list) return type == PLY_LIST;
    }
    return false;
}

/// The least number of bytes that an instance of `element` takes in the body, with a triangle if it is a face.
std::size_t minInstanceSize(p_ply_element element, bool ascii) {
    static constexpr std::size_t sizes[] = {1, 1, 2, 2, 4, 4, 4, 8, 1, 1, 2, 2, 4, 4, 4, 8};
    static_assert(std::size(sizes) == PLY_LIST);
    // In a text a digit and a blank.
    const auto sizeOf = [ascii](e_ply_type type) { return ascii ? 2 : sizes[type]; };
    std::size_t size = 0;
    for (p_ply_property property = ply_get_next_property(element, nullptr); property != nullptr;
         property = ply_get_next_property(element, property)) {
        const char* name = nullptr;
        e_ply_type type = PLY_INT8;
        e_ply_type length_type = PLY_INT8;
        e_ply_type value_type = PLY_INT8;
        ply_get_property_info(property, &name, &type, &length_type, &value_type);
        size += sizeOf(type == PLY_LIST ? length_type : type);
        if (type == PLY_LIST && std::string_view(name) == index_list) size += 3 * sizeOf(value_type);
    }
    return std::max<std::size_t>(size, 1);
}

/// How many instances of `element` the body may hold: no more than the header claims.
std::size_t maxInstances(p_ply_element element, bool ascii, std::size_t body_size) {
    long claimed = 0;
    ply_get_element_info(element, nullptr, &claimed);
    return std::min(static_cast<std::size_t>(std::max(claimed, 0L)), body_size / minInstanceSize(element, ascii));
}

void setCallbacks(p_ply ply, PlyRun& run, bool ascii, std::size_t body_size) {
    ply_set_read_cb(ply, "vertex", "x", onXOrY, &run.vertex[0], 0);
    ply_set_read_cb(ply, "vertex", "y", onXOrY, &run.vertex[1], 0);
    const bool has_vertices = ply_set_read_cb(ply, "vertex", "z", onZ, &run, 0) != 0;
    std::size_t num_vertices = 0;
    std::size_t num_faces = 0;
    bool vertices_seen = false;
    for (p_ply_element element = ply_get_next_element(ply, nullptr); element != nullptr;
         element = ply_get_next_element(ply, element)) {
        const char* name = nullptr;
        ply_get_element_info(element, &name, nullptr);
        if (std::string_view(name) == "vertex" && !std::exchange(vertices_seen, true) && has_vertices)
            num_vertices = maxInstances(element, ascii, body_size);
        if (std::string_view(name) != "face") continue;
        if (hasListOfIndices(element)) {
            ply_set_read_cb(ply, "face", index_list, onIndex, &run, 0);
            num_faces = maxInstances(element, ascii, body_size);
        }
        if (!vertices_seen) run.expectFacesBeforeVertices();
        break;
    }
    run.reserve(num_vertices, num_faces);
}

[[noreturn]] void throwBadHeader() {
    throw Velmar::Exception("could not read header.");
}

/// Prints where the header is broken, as RPly prints what it doesn't understand. Control characters of the word are
/// replaced: a terminal would obey them.
void printBrokenLine(const PlyHeader& header) {
    std::string what = "ends too early or too late";
    if (!header.word.empty()) {
        what = "has an unexpected '";
        for (const char c : header.word)
            what += c > ' ' && c < '\x7F' ? c : '?';
        what += '\'';
    }
    std::fprintf(stderr, "PLY header: line %s %s\n", std::to_string(header.line).c_str(), what.c_str());
}

[[noreturn]] void throwNotOpened(std::string_view path) {
    throw Velmar::Exception("could not open file '" + std::string(path) + "' for reading.");
}

/// The file, which other programs may be writing.
void openFile(std::optional<MappedFile>& file, std::string_view path) {
    try {
        file.emplace(path, MappedFile::Sharing::with_writers);
    } catch (const Velmar::Exception&) {
        throwNotOpened(path);
    }
}

} // namespace

void loadPLY(std::string_view path, Mesh& mesh, float scale) {
    mesh.raiseNumUVMappings(0);
    mesh.addMaterialUsed("default");

    std::optional<MappedFile> file;
    openFile(file, path);
    const PlyHeader header = parsePlyHeader(file->getText());
    if (!header.complete) {
        printBrokenLine(header);
        throwBadHeader();
    }

    if (!readPlainPly(header, file->getText(), mesh, scale)) readPlyByRPly(header, file->getText(), path, mesh, scale);
}

void readPlyByRPly(const PlyHeader& header, std::string_view file, std::string_view path, Mesh& mesh, float scale) {
    // RPly reads the numbers of text files by the C runtime.
    const PlainNumericLocale locale;
    PlyRun run(mesh, scale);
    PlyFileStream stream(header, file);
    const PlyHandle ply = openPly(stream, onError, &run);
    if (ply == nullptr) throwNotOpened(path);
    if (!readPlyHeader(ply.get())) throwBadHeader();

    setCallbacks(ply.get(), run, header.isAscii(), file.size() - header.body_offset);
    const bool complete = ply_read(ply.get()) != 0 && addTakenTriangles(run) == go_on;
    if (run.failure != nullptr) std::rethrow_exception(run.failure);
    if (!complete) throw Velmar::Exception("read of body failed.");
    run.build();
}

} // namespace Velmar
