#include "tools/MeshPicture.h"

#include "tools/Console.h"
#include "tools/Lighting.h"
#include "tools/SampleBand.h"
#include "tools/SceneBuilder.h"
#include "tools/ShadingNormals.h"
#include "tools/Vec.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

using namespace Vec;
using Velmar::Mesh;

namespace {

// In each direction, for each pixel.
constexpr std::int32_t samples_per_pixel = 3;
// What a band holds at most, so that a large picture doesn't need the memory of all its samples at once.
constexpr std::int32_t max_band_samples = 1 << 23;
// The part of the picture that the mesh may fill.
constexpr double filled_part = 0.9;

class Drawing {
  public:
    Drawing(const Mesh& drawn_mesh, const PictureView& picture_view)
        : mesh(drawn_mesh), view(picture_view), axes(getAxes(picture_view)), normals(drawn_mesh),
          lighting(axes[0], axes[1], axes[2]) {
        frame();
    }

    GreyImage draw() {
        GreyImage image = {view.width, view.height, {}};
        const std::int32_t width = view.width * samples_per_pixel;
        const std::int32_t height = view.height * samples_per_pixel;
        const std::int32_t band_rows = std::clamp(max_band_samples / width, 1, view.height) / samples_per_pixel + 1;
        SampleBand band(width, band_rows * samples_per_pixel);
        bool shows = false;
        for (std::int32_t row = 0; row < view.height; row += band_rows) {
            const std::int32_t end = std::min(row + band_rows, view.height);
            band.begin(row * samples_per_pixel, end * samples_per_pixel, height);
            shows = drawFaces(mesh.triangles, band) || shows;
            shows = drawFaces(mesh.quads, band) || shows;
            appendPixels(band, row, end, image);
        }
        if (!shows) throw Failure("all faces are seen from their edges; choose another side");
        return image;
    }

  private:
    using Axes = std::array<Vec3d, 3>;

    /// Rightwards, upwards and towards the viewer, in the space of the mesh.
    static Axes getAxes(const PictureView& view) {
        const Vec3d towards = getViewDirection(view.azimuth, view.elevation);
        const Vec3d right = getViewDirection(view.azimuth + 90, 0);
        const auto toMesh = [&](const Vec3d& v) { return view.y_up ? Vec3d{v.x, v.z, -v.y} : v; };
        return {toMesh(right), toMesh(cross(towards, right)), toMesh(towards)};
    }

    Vec3d toView(const Vec3d& point) const { return {dot(axes[0], point), dot(axes[1], point), dot(axes[2], point)}; }

    template <class Face>
    bool isDrawn(const Face& face) const {
        return std::all_of(std::begin(face.vertex_indices), std::end(face.vertex_indices),
                           [this](std::uint32_t vertex) { return isFinite(of(mesh.verts[vertex])); });
    }

    template <class Faces>
    void addTo(Box& box, const Faces& faces) const {
        for (const auto& face : faces) {
            if (!isDrawn(face)) continue;
            for (const std::uint32_t vertex : face.vertex_indices) {
                const Vec3d point = toView(of(mesh.verts[vertex]));
                box.add({point, point});
            }
        }
    }

    void frame() {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        Box box = {{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
        addTo(box, mesh.triangles);
        addTo(box, mesh.quads);
        if (box.min.x > box.max.x) throw Failure("there are no faces to draw");
        const Vec3d size = box.max - box.min;
        if (size.x <= 0 && size.y <= 0) throw Failure("the faces have no extent to draw");
        scale = filled_part * samples_per_pixel * std::min(view.width / size.x, view.height / size.y);
        centre = box.getCentre();
        depth = std::max(size.z, std::numeric_limits<double>::min());
    }

    RasterCorner getCorner(std::uint32_t vertex, const Vec3d& face_normal) const {
        const Vec3d offset = toView(of(mesh.verts[vertex])) - centre;
        const auto place = [this](double position, std::int32_t pixels) {
            const double samples = position * scale + 0.5 * pixels * samples_per_pixel;
            return static_cast<std::int32_t>(std::lround(samples * RasterCorner::units));
        };
        return {place(offset.x, view.width), place(-offset.y, view.height), offset.z / depth,
                normals.getNormal(vertex, face_normal)};
    }

    template <class Faces>
    bool drawFaces(const Faces& faces, SampleBand& band) const {
        bool shows = false;
        for (const auto& face : faces) {
            if (!isDrawn(face)) continue;
            Vec3d normal = getFaceNormal(mesh, face);
            if (dot(normal, axes[2]) < 0) normal = -normal;
            shows = drawFace(face, normal, band) || shows;
        }
        return shows;
    }

    bool drawFace(const Velmar::MeshTriangle& face, const Vec3d& normal, SampleBand& band) const {
        const auto& v = face.vertex_indices;
        return band.draw(getCorner(v[0], normal), getCorner(v[1], normal), getCorner(v[2], normal), lighting);
    }

    bool drawFace(const Velmar::MeshQuad& face, const Vec3d& normal, SampleBand& band) const {
        std::array<RasterCorner, 4> corners;
        for (std::size_t i = 0; i < corners.size(); ++i)
            corners[i] = getCorner(face.vertex_indices[i], normal);
        // A quad that is bent inwards is cut at the corner where it is.
        const auto turn = [&](std::size_t a, std::size_t b, std::size_t c) {
            return std::int64_t{corners[b].x - corners[a].x} * (corners[c].y - corners[a].y) -
                       std::int64_t{corners[b].y - corners[a].y} * (corners[c].x - corners[a].x) >
                   0;
        };
        const std::size_t first = turn(0, 1, 2) == turn(0, 2, 3) ? 0 : 1;
        const RasterCorner& start = corners[first];
        const RasterCorner& end = corners[first + 2];
        const bool one = band.draw(start, corners[first + 1], end, lighting);
        const bool other = band.draw(start, end, corners[(first + 3) % 4], lighting);
        return one || other;
    }

    static std::uint8_t toScreen(double light) {
        // The curve of sRGB.
        const double value =
            light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(std::min(light, 1.0), 1 / 2.4) - 0.055;
        return static_cast<std::uint8_t>(std::lround(value * 255));
    }

    void appendPixels(const SampleBand& band, std::int32_t first, std::int32_t end, GreyImage& image) const {
        for (std::int32_t row = first; row < end; ++row) {
            for (std::int32_t x = 0; x < view.width; ++x) {
                double sum = 0;
                for (std::int32_t i = 0; i < samples_per_pixel * samples_per_pixel; ++i)
                    sum += band.getLight(x * samples_per_pixel + i % samples_per_pixel,
                                         row * samples_per_pixel + i / samples_per_pixel);
                image.pixels.push_back(toScreen(sum / (samples_per_pixel * samples_per_pixel)));
            }
        }
    }

    const Mesh& mesh;
    const PictureView& view;
    Axes axes;
    ShadingNormals normals;
    Lighting lighting;
    Vec3d centre;
    /// Samples for each unit of the mesh.
    double scale = 1;
    /// Of the mesh, from nearest to farthest.
    double depth = 1;
};

} // namespace

GreyImage drawMesh(const Mesh& mesh, const PictureView& view) {
    return Drawing(mesh, view).draw();
}
