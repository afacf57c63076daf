#include "preview/ImageTexture.h"

#include "preview/System.h"

#include <cmath>
#include <limits>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_NO_GIF
#define STBI_NO_PIC
#define STBI_NO_PSD
#define STBI_NO_SIMD
#include <stb_image.h>

namespace Preview {

namespace {

struct FreePixels {
    void operator()(void* pixels) const { stbi_image_free(pixels); }
};

/// The place in 0 .. size - 1 that `i` falls on when the image repeats; `i` is between -1 and `size`.
int wrap(int i, int size) {
    if (i < 0) return size - 1;
    return i >= size ? 0 : i;
}

} // namespace

std::shared_ptr<const ImageTexture> ImageTexture::load(const std::string& path, std::string& complaint) {
    std::string file;
    constexpr std::uint64_t max_file_size = std::numeric_limits<int>::max();
    complaint = System::readFile(path, max_file_size, file);
    if (!complaint.empty()) return nullptr;

    const auto* const data = reinterpret_cast<const unsigned char*>(file.data());
    const int size = static_cast<int>(file.size());
    const auto image = std::make_shared<ImageTexture>();
    image->linear = stbi_is_hdr_from_memory(data, size) != 0;
    int components = 0;
    if (image->linear) {
        const std::unique_ptr<float, FreePixels> pixels(
            stbi_loadf_from_memory(data, size, &image->width, &image->height, &components, 3));
        if (pixels != nullptr)
            image->floats.assign(pixels.get(), pixels.get() + std::size_t{3} * static_cast<std::size_t>(image->width) *
                                                                  static_cast<std::size_t>(image->height));
    } else {
        const std::unique_ptr<unsigned char, FreePixels> pixels(
            stbi_load_from_memory(data, size, &image->width, &image->height, &components, 3));
        if (pixels != nullptr)
            image->bytes.assign(pixels.get(), pixels.get() + std::size_t{3} * static_cast<std::size_t>(image->width) *
                                                                 static_cast<std::size_t>(image->height));
    }
    if (image->bytes.empty() && image->floats.empty()) {
        const char* const reason = stbi_failure_reason();
        complaint = reason == nullptr ? "the image can't be decoded" : reason;
        return nullptr;
    }
    return image;
}

Vec3 ImageTexture::texel(int x, int y) const {
    const std::size_t at =
        3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    if (linear) return {floats[at], floats[at + 1], floats[at + 2]};
    constexpr float step = 1.0f / 255.0f;
    return Vec3{static_cast<float>(bytes[at]), static_cast<float>(bytes[at + 1]), static_cast<float>(bytes[at + 2])} *
           step;
}

Vec3 ImageTexture::lookUp(float u, float v) const {
    // Not finite: anything that is inside.
    const float fu = std::isfinite(u) ? u - std::floor(u) : 0.0f;
    const float fv = std::isfinite(v) ? v - std::floor(v) : 0.0f;
    const float x = fu * static_cast<float>(width) - 0.5f;
    const float y = (1.0f - fv) * static_cast<float>(height) - 0.5f;
    const float x_floor = std::floor(x);
    const float y_floor = std::floor(y);
    const int x0 = wrap(static_cast<int>(x_floor), width);
    const int y0 = wrap(static_cast<int>(y_floor), height);
    const int x1 = wrap(x0 + 1, width);
    const int y1 = wrap(y0 + 1, height);
    const Vec3 top = mix(texel(x0, y0), texel(x1, y0), x - x_floor);
    const Vec3 bottom = mix(texel(x0, y1), texel(x1, y1), x - x_floor);
    return mix(top, bottom, y - y_floor);
}

} // namespace Preview
