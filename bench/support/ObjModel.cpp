#include "bench/support/ObjModel.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace BenchSupport {

namespace {

void appendNumbers(std::string& text, const char* keyword, double x, double y, double z, int count) {
    char line[128];
    const int length = count == 3 ? std::snprintf(line, sizeof line, "%s %.6f %.6f %.6f\n", keyword, x, y, z)
                                  : std::snprintf(line, sizeof line, "%s %.6f %.6f\n", keyword, x, y);
    text.append(line, static_cast<std::size_t>(length));
}

void appendFace(std::string& text, const std::uint32_t (&indices)[3], ObjCorners corners) {
    text += 'f';
    for (const std::uint32_t index : indices) {
        const std::string number = std::to_string(index);
        text += ' ';
        text += number;
        if (corners == ObjCorners::positions_uvs_normals) {
            text += '/';
            text += number;
            text += '/';
            text += number;
        }
    }
    text += '\n';
}

} // namespace

std::string makeObjText(std::uint32_t cells, ObjCorners corners) {
    std::string text = "# a wavy square\n";
    const std::uint32_t side = cells + 1;
    const bool full = corners == ObjCorners::positions_uvs_normals;
    const auto forEachPoint = [&](auto visit) {
        for (std::uint32_t row = 0; row < side; ++row)
            for (std::uint32_t column = 0; column < side; ++column)
                visit(100.0 * column / cells - 50.0, 100.0 * row / cells - 50.0);
    };
    forEachPoint(
        [&](double x, double y) { appendNumbers(text, "v", x, y, 5.0 * std::sin(0.3 * x) * std::cos(0.2 * y), 3); });
    if (full) {
        forEachPoint([&](double x, double y) { appendNumbers(text, "vt", x / 100 + 0.5, y / 100 + 0.5, 0, 2); });
        forEachPoint([&](double x, double y) {
            const double dx = -1.5 * std::cos(0.3 * x) * std::cos(0.2 * y);
            const double dy = std::sin(0.3 * x) * std::sin(0.2 * y);
            const double length = std::sqrt(dx * dx + dy * dy + 1);
            appendNumbers(text, "vn", dx / length, dy / length, 1 / length, 3);
        });
    }
    for (std::uint32_t row = 0; row < cells; ++row) {
        for (std::uint32_t column = 0; column < cells; ++column) {
            const std::uint32_t corner = row * side + column + 1;
            appendFace(text, {corner, corner + 1, corner + side + 1}, corners);
            appendFace(text, {corner, corner + side + 1, corner + side}, corners);
        }
    }
    return text;
}

ScratchFile::ScratchFile(const std::string& name, const std::string& bytes)
    : full_path((std::filesystem::temp_directory_path() / name).string()) {
    std::ofstream file(full_path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("can't write " + full_path);
}

ScratchFile::~ScratchFile() {
    std::filesystem::remove(full_path);
}

} // namespace BenchSupport
