/// Compares the readers with other libraries on the same files, in both builds.
///
/// Usage: bench_ratios [ROUNDS [FILTER]]
///
/// Prints a Markdown table of the shortest processor times of ROUNDS (10) rounds, in which each reader reads each file
/// in turn, for the files whose names contain FILTER. "System" is the part of our time, in all rounds together, that
/// the system took: nearly all for the first access to memory.

#include "velmarbulkmemory.h"

#include "bench/support/BenchMesh.h"
#include "bench/support/MeshTexts.h"
#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "mesh/PlyInput.h"
#include "utils/MappedFile.h"
#include "utils/numbers/Digits.h"
#include "utils/numbers/LineShapes.h"
#include "utils/numbers/PlainFloats.h"

#ifdef VELMAR_BENCH_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <new>
#include <rply.h>
#include <stdexcept>
#include <string>
#include <string_view>
#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <sys/resource.h>
#endif

using namespace BenchSupport;
using Velmar::Mesh;

namespace {

/// Processor times.
struct Seconds {
    double total = 0;
    /// The part of the system.
    double system = 0;
};

/// Those of the process so far.
Seconds processorSeconds() {
#ifdef _WIN32
    FILETIME created;
    FILETIME ended;
    FILETIME kernel;
    FILETIME user;
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto secondsOf = [](const FILETIME& time) {
        return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime) * 1e-7;
    };
    return {secondsOf(kernel) + secondsOf(user), secondsOf(kernel)};
#else
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto secondsOf = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime), secondsOf(usage.ru_stime)};
#endif
}

/// Windows counts processor time in ticks of some ten milliseconds, so each measurement lasts many.
#ifdef _WIN32
constexpr double min_seconds = 0.5;
#else
constexpr double min_seconds = 0;
#endif

Seconds secondsOf(const std::function<void()>& work) {
    int repetitions = 0;
    const Seconds start = processorSeconds();
    Seconds taken;
    do {
        work();
        ++repetitions;
        const Seconds now = processorSeconds();
        taken = {now.total - start.total, now.system - start.system};
    } while (taken.total < min_seconds);
    return {taken.total / repetitions, taken.system / repetitions};
}

struct Reader {
    std::string name;
    std::function<void(const std::string& path)> read;
};

void compare(const std::string& name, const std::string& bytes, const std::string& extension,
             const std::vector<Reader>& readers, int rounds) {
    const ScratchFile file("velmar_ratios" + extension, bytes);
    std::vector<double> shortest(readers.size(), std::numeric_limits<double>::infinity());
    // The two parts of a time are counted in ticks.
    Seconds ours;
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < readers.size(); ++i) {
            const Seconds taken = secondsOf([&] { readers[i].read(file.path()); });
            shortest[i] = std::min(shortest[i], taken.total);
            if (i == 0) ours = {ours.total + taken.total, ours.system + taken.system};
        }
    for (std::size_t i = 1; i < readers.size(); ++i)
        std::printf("| %s | %.1f | %.1f ms | %.0f %% | %s | %.1f ms | %.2f |\n", name.c_str(),
                    static_cast<double>(bytes.size()) / 0x100000, 1000 * shortest[0], 100 * ours.system / ours.total,
                    readers[i].name.c_str(), 1000 * shortest[i], shortest[i] / shortest[0]);
    std::fflush(stdout);
}

void readObj(const std::string& path) {
    Mesh mesh;
    Velmar::MTLLibrary library;
    Velmar::loadOBJ(path, mesh, 1.0f, false, library);
}

void readByTinyObj(const std::string& path) {
    tinyobj::attrib_t attributes;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
    std::string warnings;
    std::string errors;
    if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, path.c_str()))
        throw std::runtime_error(errors);
}

void readPly(const std::string& path) {
    Mesh mesh;
    Velmar::loadPLY(path, mesh, 1.0f);
}

/// A file read as RPly itself does.
class StdioStream final : public Velmar::PlyStream {
  public:
    explicit StdioStream(const std::string& path) : file(std::fopen(path.c_str(), "rb")) {}
    ~StdioStream() override { std::fclose(file); }

    std::size_t read(char* to, std::size_t size) noexcept override { return std::fread(to, 1, size, file); }

  private:
    std::FILE* file;
};

/// With empty callbacks.
void readByRPly(const std::string& path) {
    StdioStream stream(path);
    const Velmar::PlyHandle ply = Velmar::openPly(stream, nullptr, nullptr);
    const auto ignore = [](p_ply_argument) { return 1; };
    ply_read_header(ply.get());
    for (const char* axis : {"x", "y", "z"})
        ply_set_read_cb(ply.get(), "vertex", axis, ignore, nullptr, 0);
    ply_set_read_cb(ply.get(), "face", "vertex_indices", ignore, nullptr, 0);
    if (ply_read(ply.get()) == 0) throw std::runtime_error("RPly failed");
}

void readStl(const std::string& path) {
    Mesh mesh;
    Velmar::loadSTL(path, mesh, 1.0f);
}

/// One large read into a buffer that is kept.
void readBytes(const std::string& path) {
    static std::vector<char> buffer;
    buffer.resize(static_cast<std::size_t>(std::filesystem::file_size(path)));
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (std::fread(buffer.data(), 1, buffer.size(), file) != buffer.size()) throw std::runtime_error("fread failed");
    std::fclose(file);
}

volatile float kept_number;
volatile std::uint32_t kept_sum;

/// Only what takes the least: the numbers and indices of a text of `MeshTexts.h`, by the functions of our readers, and
/// nothing made of them.
class NumbersAlone {
  public:
    explicit NumbersAlone(std::string_view text)
        : p(text.data()), end(p + text.size() - std::min<std::size_t>(text.size(), 2 * PlainFloats::reach)) {}

    void readObj() {
        while (p < end) {
            if (*p == 'v' && p[1] == 't')
                p = PlainFloats::scan(p + 3, pair);
            else if (*p == 'v')
                p = shapes.scan(p + (p[1] == 'n' ? 3 : 2), triple);
            else if (*p == 'f')
                passFace();
            while (*p != '\n')
                ++p;
            ++p;
        }
        keep();
    }

    void readStl() {
        p += std::string_view("solid mesh\n").size();
        while (p < end) {
            p = normal_shapes.pass(p + std::string_view("facet normal ").size());
            p += std::string_view("\n outer loop\n").size();
            for (int corner = 0; corner < 3; ++corner) {
                p = shapes.scan(p + std::string_view("  vertex ").size(), triple);
                ++p;
            }
            p += std::string_view(" endloop\nendfacet\n").size();
        }
        keep();
    }

  private:
    void passFace() {
        ++p;
        while (*p == ' ') {
            ++p;
            std::uint64_t stops = Digits::findOthers<32>(p);
            const auto take = [&] {
                const auto stop = static_cast<std::size_t>(Velmar::lowestBit(stops));
                stops &= stops - 1;
                return stop;
            };
            const std::size_t a = take();
            if (p[a] != '/') {
                sum += Digits::join(Digits::makePair(p, a, p, 0), Digits::makePair(p, 0, p, 0)).get<0>();
                p += a;
                continue;
            }
            const std::size_t b = take();
            const std::size_t c = take();
            const Digits::Four indices = Digits::join(Digits::makePair(p, a, p + a + 1, b - a - 1),
                                                      Digits::makePair(p + b + 1, c - b - 1, p, 0));
            sum += indices.get<0>() + indices.get<1>() + indices.get<2>();
            p += c;
        }
    }

    /// Otherwise the compiler might leave out all.
    void keep() const {
        kept_number = triple[0] + triple[1] + triple[2] + pair[0] + pair[1];
        kept_sum = sum;
    }

    const char* p;
    const char* end;
    PlainFloats::LineShapes shapes;
    PlainFloats::LineShapes normal_shapes;
    float triple[3] = {};
    float pair[2] = {};
    std::uint32_t sum = 0;
};

Reader numbersOfObj() {
    return {"numbers alone", [](const std::string& path) { NumbersAlone(MappedFile(path).getText()).readObj(); }};
}

Reader numbersOfStl() {
    return {"numbers alone", [](const std::string& path) { NumbersAlone(MappedFile(path).getText()).readStl(); }};
}

/// What the system takes for so much new memory, which any mesh needs.
Reader newMemory(std::size_t bytes) {
    return {"new memory", [bytes](const std::string&) {
#ifdef _WIN32
                auto* const memory =
                    static_cast<char*>(VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
                if (memory == nullptr) throw std::bad_alloc();
#else
                void* const block =
                    mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                if (block == MAP_FAILED) throw std::bad_alloc();
                Velmar::preferLargePages(block, bytes);
                auto* const memory = static_cast<char*>(block);
#endif
                constexpr std::size_t page = 4096;
                for (std::size_t at = 0; at < bytes; at += page)
                    *const_cast<volatile char*>(memory + at) = 1;
#ifdef _WIN32
                VirtualFree(memory, 0, MEM_RELEASE);
#else
                munmap(block, bytes);
#endif
            }};
}

void compareOn(const std::string& mesh_name, const Mesh& mesh, std::string_view filter, int rounds) {
    const auto run = [&](const std::string& file, const auto& make, const char* extension,
                         std::vector<Reader> readers) {
        const std::string name = file + ", " + mesh_name;
        readers.push_back({"`fread`", readBytes});
        if (name.find(filter) != std::string::npos) compare(name, make(), extension, readers, rounds);
    };
    const std::size_t points = mesh.verts.size() * sizeof(Velmar::Vec3f);
    const std::size_t faces = mesh.triangles.size() * sizeof(Velmar::MeshTriangle);
    const std::size_t uvs = mesh.verts.size() * sizeof(Velmar::Vec2f);
    run("OBJ, `v`, `f`", [&] { return makeObjText(mesh, ObjCorners::positions_only); }, ".obj",
        {{"ours", readObj}, {"tinyobjloader", readByTinyObj}, numbersOfObj(), newMemory(points + faces)});
    run("OBJ, `v`, `vt`, `vn`, `f`", [&] { return makeObjText(mesh, ObjCorners::positions_uvs_normals); }, ".obj",
        {{"ours", readObj}, {"tinyobjloader", readByTinyObj}, numbersOfObj(), newMemory(2 * points + uvs + faces)});
    run("PLY, binary", [&] { return makeBinaryPly(mesh); }, ".ply",
        {{"ours", readPly}, {"RPly", readByRPly}, newMemory(points + faces)});
    run("PLY, text", [&] { return makePlyText(mesh); }, ".ply",
        {{"ours", readPly}, {"RPly", readByRPly}, newMemory(points + faces)});
    std::vector<Reader> stl = {{"ours", readStl}};
#ifdef VELMAR_BENCH_ASSIMP
    stl.push_back({"assimp", [](const std::string& path) {
                       Assimp::Importer importer;
                       if (importer.ReadFile(path, 0) == nullptr) throw std::runtime_error(importer.GetErrorString());
                   }});
#endif
    stl.push_back(numbersOfStl());
    stl.push_back(newMemory(3 * mesh.triangles.size() * sizeof(Velmar::Vec3f) + faces));
    run(
        "STL, text, `%.6f`", [&] { return makeStlText(mesh, StlNumbers::decimals); }, ".stl", stl);
    run(
        "STL, text, `%.6e`", [&] { return makeStlText(mesh, StlNumbers::exponents); }, ".stl", stl);
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 10;
    const std::string_view filter = argc > 2 ? argv[2] : "";
    std::printf("| file | MiB | ours | system | compared with | its time | ratio |\n|---|---|---|---|---|---|---|\n");
    compareOn("bunny", noisyBunny(), filter, rounds);
    compareOn("square", wavySquare(), filter, rounds);
}
