#include "mesh/PlyLoader.h"

#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/PlyHeader.h"
#include "utils/CLibraryPath.h"
#include "utils/MappedFile.h"
#include "utils/NumericLocale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <rply.h>
#include <string>
#include <system_error>

namespace Velmar {

namespace {

struct PlyCloser {
    void operator()(p_ply ply) const { ply_close(ply); }
};
using PlyHandle = std::unique_ptr<t_ply_, PlyCloser>;

/// The state of one run, which the callbacks reach through their user pointer.
struct PlyRun {
    Mesh& mesh;
    float scale;
    float vertex[3] = {};
    std::uint32_t triangle[3] = {};
    /// What a callback threw. It must not pass through the reader's frames, so it waits here.
    std::exception_ptr failure{};
};

constexpr int go_on = 1;
constexpr int stop = 0;

/// The element's values arrive in the order x, y, z; z completes the vertex.
void takeCoordinate(PlyRun& run, long axis, double value) {
    run.vertex[axis] = static_cast<float>(value);
    if (axis == 2)
        run.mesh.addVertex({run.vertex[0] * run.scale, run.vertex[1] * run.scale, run.vertex[2] * run.scale});
}

/// The low 32 bits of the value without its fraction; 0 for what no 64-bit integer holds.
std::uint32_t toIndex(double value) {
    constexpr double limit = 9223372036854775808.0;
    if (!(std::fabs(value) < limit)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
}

void takeCorner(PlyRun& run, long corner, double value) {
    run.triangle[corner] = toIndex(value);
    if (corner == 2) run.mesh.addTriangle(run.triangle, {0, 0, 0}, 0);
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

int onVertex(p_ply_argument argument) {
    void* user = nullptr;
    long axis = 0;
    ply_get_argument_user_data(argument, &user, &axis);
    PlyRun& run = *static_cast<PlyRun*>(user);
    const double value = ply_get_argument_value(argument);
    // A list in place of a number calls with its length too, which is no coordinate but is taken as one.
    return guarded(run, [&] { takeCoordinate(run, axis, value); });
}

int onFace(p_ply_argument argument) {
    long corner = 0;
    ply_get_argument_property(argument, nullptr, nullptr, &corner);
    // -1 is the length of the list.
    if (corner < 0 || corner > 2) return go_on;
    void* user = nullptr;
    ply_get_argument_user_data(argument, &user, nullptr);
    PlyRun& run = *static_cast<PlyRun*>(user);
    const double value = ply_get_argument_value(argument);
    return guarded(run, [&] { takeCorner(run, corner, value); });
}

/// As the reader's own callback, but without a word when it was us who stopped it.
void onError(p_ply ply, const char* message) {
    void* user = nullptr;
    ply_get_ply_user_data(ply, &user, nullptr);
    if (user != nullptr && static_cast<PlyRun*>(user)->failure != nullptr) return;
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

/// Room for as many elements as the header claims, within reason: a claim that the body doesn't keep must cost nothing.
template <class T>
void reserveClaimed(Vector<T>& elements, long claimed) {
    constexpr long within_reason = 4000000;
    if (claimed > 0) elements.reserve(elements.size() + static_cast<std::size_t>(std::min(claimed, within_reason)));
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
    if (!check.complete) throwBadHeader();
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
    PlyRun run{mesh, scale};
    std::optional<TerminatedCopy> copy;
    const PlyHandle ply = openChecked(path, run, copy);
    if (ply_read_header(ply.get()) == 0 || !isReadable(ply.get())) throwBadHeader();

    ply_set_read_cb(ply.get(), "vertex", "x", onVertex, &run, 0);
    ply_set_read_cb(ply.get(), "vertex", "y", onVertex, &run, 1);
    const long num_vertices = ply_set_read_cb(ply.get(), "vertex", "z", onVertex, &run, 2);
    const long num_faces = ply_set_read_cb(ply.get(), "face", "vertex_indices", onFace, &run, 0);
    reserveClaimed(mesh.verts, num_vertices);
    reserveClaimed(mesh.triangles, num_faces);
    const bool complete = ply_read(ply.get()) != 0;
    if (run.failure != nullptr) std::rethrow_exception(run.failure);
    if (!complete) throw Velmar::Exception("read of body failed.");
    mesh.build();
}

} // namespace Velmar
