#include "tools/Placement.h"

#include "import/MeshImport.h"

#include "tools/Console.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

using Velmar::Vec3d;
using Velmar::Vec3f;

void Box::add(const Vec3d& point) {
    min = {std::min(min.x, point.x), std::min(min.y, point.y), std::min(min.z, point.z)};
    max = {std::max(max.x, point.x), std::max(max.y, point.y), std::max(max.z, point.z)};
}

void Box::add(const Box& other) {
    add(other.min);
    add(other.max);
}

Vec3d Box::getCentre() const {
    return {(min.x + max.x) / 2, (min.y + max.y) / 2, (min.z + max.z) / 2};
}

double Box::getRadius() const {
    const double radius = std::hypot(max.x - min.x, max.y - min.y, max.z - min.z) / 2;
    return radius > 0 ? radius : 1;
}

Vec3d Placement::apply(const Vec3d& p) const {
    return {matrix[0] * p.x + matrix[1] * p.y + matrix[2] * p.z + position.x,
            matrix[3] * p.x + matrix[4] * p.y + matrix[5] * p.z + position.y,
            matrix[6] * p.x + matrix[7] * p.y + matrix[8] * p.z + position.z};
}

Placement Placement::after(const Placement& first) const {
    Placement both;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) {
            double sum = 0;
            for (std::size_t i = 0; i < 3; ++i)
                sum += matrix[3 * row + i] * first.matrix[3 * i + column];
            both.matrix[3 * row + column] = sum;
        }
    both.position = apply(first.position);
    return both;
}

Box Placement::getBounds(const Velmar::Mesh& mesh) const {
    Box box;
    for (const Vec3f& v : mesh.verts)
        box.add(apply({v.x, v.y, v.z}));
    return box;
}

bool Placement::turns() const {
    const Placement none;
    return !std::equal(std::begin(matrix), std::end(matrix), std::begin(none.matrix));
}

bool Placement::moves() const {
    return position.x != 0 || position.y != 0 || position.z != 0;
}

// ---- the height ----------------------------------------------------------------------------------------------------

namespace {

struct UpAxis {
    const char* name;
    double matrix[9];
};

/// Quarter and half turns, without a mirror among them.
constexpr UpAxis up_axes[] = {
    {"x", {0, 0, -1, 0, 1, 0, 1, 0, 0}},  {"y", {1, 0, 0, 0, 0, -1, 0, 1, 0}},  {"z", {1, 0, 0, 0, 1, 0, 0, 0, 1}},
    {"-x", {0, 0, 1, 0, 1, 0, -1, 0, 0}}, {"-y", {1, 0, 0, 0, 0, 1, 0, -1, 0}}, {"-z", {1, 0, 0, 0, -1, 0, 0, 0, -1}},
};

} // namespace

const std::vector<std::string>& getUpAxes() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all = {"auto"};
        for (const UpAxis& axis : up_axes)
            all.emplace_back(axis.name);
        return all;
    }();
    return names;
}

Placement makeUpright(std::string_view up, std::string_view path) {
    const std::string_view name = up != "auto" ? up : Velmar::getMeshFormat(path) == "obj" ? "y" : "z";
    Placement rotation;
    for (const UpAxis& axis : up_axes)
        if (name == axis.name) std::copy(std::begin(axis.matrix), std::end(axis.matrix), rotation.matrix);
    return rotation;
}

void turnMesh(Velmar::Mesh& mesh, const Placement& rotation, bool inverse) {
    if (!rotation.turns()) return;
    Placement used = rotation;
    if (inverse) {
        for (std::size_t row = 0; row < 3; ++row)
            for (std::size_t column = 0; column < 3; ++column)
                used.matrix[3 * row + column] = rotation.matrix[3 * column + row];
    }
    const auto turn = [&](Vec3f& v) {
        // The sum turns negative zeros into plain ones.
        const Vec3d turned = used.apply({v.x, v.y, v.z});
        v = {static_cast<float>(turned.x), static_cast<float>(turned.y), static_cast<float>(turned.z)};
    };
    for (Vec3f& v : mesh.verts)
        turn(v);
    for (Vec3f& normal : mesh.normals)
        turn(normal);
    mesh.build();
}

// ---- requests ------------------------------------------------------------------------------------------------------

namespace {

/// Sines and cosines differ in their last bits between systems, and scenes mustn't.
double roundEntry(double value) {
    constexpr double steps = 1e9;
    return std::round(value * steps) / steps + 0.0;
}

/// The rotation by `degrees` in the plane of two axes, from the first to the second.
Placement makeRotation(double degrees, std::size_t from, std::size_t to) {
    const double angle = degrees * std::numbers::pi / 180;
    const double sine = roundEntry(std::sin(angle));
    const double cosine = roundEntry(std::cos(angle));
    Placement rotation;
    rotation.matrix[3 * from + from] = cosine;
    rotation.matrix[3 * from + to] = -sine;
    rotation.matrix[3 * to + from] = sine;
    rotation.matrix[3 * to + to] = cosine;
    return rotation;
}

} // namespace

namespace {

Placement turnAndMove(const Placement& first, const PlacementRequest& request) {
    Placement placement = first;
    if (request.rotate) {
        constexpr std::size_t x = 0;
        constexpr std::size_t y = 1;
        constexpr std::size_t z = 2;
        placement = makeRotation(request.rotate->x, y, z).after(placement);
        placement = makeRotation(request.rotate->y, z, x).after(placement);
        placement = makeRotation(request.rotate->z, x, y).after(placement);
    }
    if (request.at) placement.position = *request.at;
    return placement;
}

} // namespace

Placement place(const Velmar::Mesh& mesh, const Placement& upright, const PlacementRequest& request) {
    Placement placement = turnAndMove(upright, request);
    if (request.on_ground) placement.position.z += placement.position.z - placement.getBounds(mesh).min.z;
    return placement;
}

Placement placeTogether(const Box& bounds, double scale, const PlacementRequest& request) {
    Placement scaling;
    for (double& entry : scaling.matrix)
        entry *= scale;
    Placement placement = turnAndMove(scaling, request);
    if (!request.on_ground) return placement;
    Box placed;
    for (const double x : {bounds.min.x, bounds.max.x})
        for (const double y : {bounds.min.y, bounds.max.y})
            for (const double z : {bounds.min.z, bounds.max.z})
                placed.add(placement.apply({x, y, z}));
    placement.position.z += placement.position.z - placed.min.z;
    return placement;
}

Vec3d parsePoint(const std::string& option, const std::string& text) {
    double numbers[3] = {};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < 3; ++i) {
        const auto [stop, error] = std::from_chars(at, end, numbers[i]);
        const bool separated = i == 2 ? stop == end : stop != end && *stop == ',';
        if (error != std::errc() || !separated || !std::isfinite(numbers[i]))
            throw UsageError(std::string(option)
                                 .append(": three numbers with commas between are needed, as in 1,0,-2.5, not '")
                                 .append(text)
                                 .append("'"));
        at = stop + 1;
    }
    return {numbers[0], numbers[1], numbers[2]};
}

Vec3d parseRotation(const std::string& option, const std::string& text) {
    if (text.find(',') != std::string::npos) return parsePoint(option, text);
    double degrees = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), degrees);
    if (error != std::errc() || stop != text.data() + text.size() || !std::isfinite(degrees))
        throw UsageError(option + ": degrees around the height are needed, or three numbers around x, y and z, not '" +
                         text + "'");
    return {0, 0, degrees};
}

std::vector<std::string> splitWords(std::string_view line) {
    std::vector<std::string> words;
    constexpr std::string_view blanks = " \t\r";
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        if (line.empty() || line.front() == '#') return words;
        if (line.front() == '"') {
            const std::size_t end = std::min(line.find('"', 1), line.size());
            words.emplace_back(line.substr(1, end - 1));
            line.remove_prefix(std::min(end + 1, line.size()));
        } else {
            const std::size_t end = std::min(line.find_first_of(blanks), line.size());
            words.emplace_back(line.substr(0, end));
            line.remove_prefix(end);
        }
    }
}
