#include "preview/Picture.h"

#include "preview/SceneNodes.h"
#include "preview/Surface.h"
#include "preview/System.h"

#include "scene/nodes/ImageSettings.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>

// stb's encoders don't look whether their memory is there.
#define STBIW_MALLOC(size) Preview::EncoderMemory::allocate(size)
#define STBIW_REALLOC_SIZED(block, old_size, size) Preview::EncoderMemory::reallocate(block, old_size, size)
#define STBIW_FREE(block) Preview::EncoderMemory::release(block)

namespace Preview {

/// The memory of a thread's encoder. What is left when this object ends, because an exception went through the encoder,
/// is released then. One at a time for each thread.
class EncoderMemory {
  public:
    EncoderMemory() { blocks = nullptr; }
    ~EncoderMemory() {
        while (blocks != nullptr)
            release(blocks + 1);
    }
    EncoderMemory(const EncoderMemory&) = delete;
    EncoderMemory& operator=(const EncoderMemory&) = delete;

    /// Throws `std::bad_alloc`.
    static void* allocate(std::size_t size) {
        auto* const block = static_cast<Head*>(::operator new(sizeof(Head) + size));
        *block = {nullptr, blocks};
        if (blocks != nullptr) blocks->before = block;
        blocks = block;
        return block + 1;
    }

    /// Throws `std::bad_alloc`; the old block is released in the end then.
    static void* reallocate(void* memory, std::size_t old_size, std::size_t size) {
        void* const moved = allocate(size);
        if (memory != nullptr) std::memcpy(moved, memory, std::min(old_size, size));
        release(memory);
        return moved;
    }

    static void release(void* memory) {
        if (memory == nullptr) return;
        Head* const block = static_cast<Head*>(memory) - 1;
        if (block->before != nullptr)
            block->before->after = block->after;
        else
            blocks = block->after;
        if (block->after != nullptr) block->after->before = block->before;
        ::operator delete(block);
    }

  private:
    /// In front of each block.
    struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Head {
        Head* before;
        Head* after;
    };
    static thread_local Head* blocks;
};

thread_local EncoderMemory::Head* EncoderMemory::blocks = nullptr;

} // namespace Preview

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb_image_write.h>

namespace Preview {

namespace {

constexpr std::int32_t cubic_filter = 1;

/// The filter's weights around one pixel of the picture, for layer pixels from `first` on.
struct Taps {
    std::uint32_t first = 0;
    std::vector<float> weights;
};

std::vector<Taps> makeTaps(const PictureSettings& settings, std::uint32_t size, std::uint32_t margin,
                           std::uint32_t factor) {
    std::vector<Taps> all(size);
    const std::uint32_t layer_size = (size + 2 * margin) * factor;
    for (std::uint32_t i = 0; i < size; ++i) {
        Taps& taps = all[i];
        if (factor == 1) {
            taps = {i + margin, {1.0f}};
            continue;
        }
        const float middle = (static_cast<float>(i + margin) + 0.5f) * static_cast<float>(factor);
        const float reach = settings.radius * static_cast<float>(factor);
        taps.first = static_cast<std::uint32_t>(std::max(0.0f, std::floor(middle - reach)));
        const auto end =
            static_cast<std::uint32_t>(std::min(static_cast<float>(layer_size), std::ceil(middle + reach)));
        float sum = 0.0f;
        for (std::uint32_t at = taps.first; at < end; ++at) {
            taps.weights.push_back(
                settings.filterAt((static_cast<float>(at) + 0.5f - middle) / static_cast<float>(factor)));
            sum += taps.weights.back();
        }
        for (float& weight : taps.weights)
            weight /= sum;
    }
    return all;
}

/// Takes bytes that a function of stb hands over piece by piece. Throws `std::bad_alloc`.
void append(void* file, void* data, int size) {
    const auto* const begin = static_cast<const unsigned char*>(data);
    auto& bytes = *static_cast<std::vector<unsigned char>*>(file);
    bytes.insert(bytes.end(), begin, begin + size);
}

/// "PF", the size, the order of bytes, and the rows from the lowest on (Debevec's portable float map).
std::vector<unsigned char> encodePfm(const Picture& picture) {
    char head[64];
    const int length = std::snprintf(head, sizeof head, "PF\n%u %u\n%s\n", picture.width, picture.height,
                                     std::endian::native == std::endian::little ? "-1.0" : "1.0");
    std::vector<unsigned char> bytes(head, head + length);
    const std::size_t row = std::size_t{picture.width} * 3;
    for (std::size_t y = picture.height; y-- > 0;) {
        const auto* const from = reinterpret_cast<const unsigned char*>(picture.light.data() + y * row);
        bytes.insert(bytes.end(), from, from + row * sizeof(float));
    }
    return bytes;
}

bool endsWith(const std::string& path, const char* extension) {
    const std::size_t length = std::strlen(extension);
    if (path.size() < length) return false;
    return std::equal(path.end() - static_cast<std::ptrdiff_t>(length), path.end(), extension, [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

} // namespace

PictureSettings::PictureSettings(const Velmar::SceneNodeRenderSettings* settings, std::size_t layers)
    : layer_weights(layers, Vec3{1.0f, 1.0f, 1.0f}) {
    if (settings == nullptr) return;
    with_alpha = settings->render_foreground_alpha.value;
    transparent_outside_regions = valueOr(settings->zero_alpha_outside_region, false);
    for (std::size_t i = 0; i < std::min<std::size_t>(layers, settings->layer_settings.size()); ++i) {
        const Velmar::LayerSetting* const setting = settings->layer_settings.data()[i].getPointer();
        if (setting == nullptr) continue;
        layer_weights[i] = setting->enabled ? colourOf(setting->layer_scale.getPointer(), {1.0f, 1.0f, 1.0f}) : Vec3{};
    }
    const Velmar::DownsizeFilter* const filter = settings->downsize_filter.getPointer();
    if (filter == nullptr) return;
    if (filter->getType() != cubic_filter) {
        report("a filter for downsizing of an unknown kind is taken as its default");
        return;
    }
    const auto* const cubic = static_cast<const Velmar::DownsizeFilterMNCubic*>(filter);
    // The margin of the image store is 4 pixels wide.
    constexpr double max_weight = 100.0;
    if (!(std::abs(cubic->blur) <= max_weight) || !(std::abs(cubic->ring) <= max_weight) || !(cubic->radius >= 0.5) ||
        !(cubic->radius <= 4.0)) {
        report("a filter for downsizing whose numbers make no sense is taken as its default");
        return;
    }
    blur = static_cast<float>(cubic->blur);
    ring = static_cast<float>(cubic->ring);
    radius = static_cast<float>(cubic->radius);
}

float PictureSettings::filterAt(float distance) const {
    const float b = blur;
    const float c = ring;
    const float x = std::abs(distance) * 2.0f / radius;
    if (x >= 2.0f) return 0.0f;
    if (x < 1.0f) return (12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b);
    return (-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + (8 * b + 24 * c);
}

Picture makePicture(const ImageStore& store, const PictureSettings& settings) {
    const Channels& channels = store.getChannels();
    const std::uint32_t width = store.getWidth();
    const std::uint32_t height = store.getHeight();
    const std::size_t layer_width = store.getLayerWidth();
    const std::size_t n = channels.floats_per_pixel;
    const bool with_alpha = settings.with_alpha && channels.alpha >= 0;
    const std::size_t parts = with_alpha ? 4 : 3;
    const std::vector<Vec3>& weights = settings.layer_weights;
    const std::vector<Taps> columns = makeTaps(settings, width, store.getMargin(), store.getFactor());
    const std::vector<Taps> rows = makeTaps(settings, height, store.getMargin(), store.getFactor());

    Picture picture{width, height, std::vector<float>(std::size_t{width} * height * 3), {}};
    if (with_alpha) picture.alpha.resize(std::size_t{width} * height);

    // A row of a layer with the columns filtered, for the rows that the present row of the picture needs.
    const std::size_t kept = 4 + static_cast<std::size_t>(std::ceil(2 * settings.radius)) * store.getFactor();
    std::vector<std::vector<float>> filtered(kept);
    std::vector<std::uint32_t> row_in(filtered.size(), 0xFFFFFFFFu);
    std::vector<float> merged(layer_width * parts);
    store.readLocked([&](std::span<const float> floats) {
        const auto filteredRow = [&](std::uint32_t y) -> const std::vector<float>& {
            const std::size_t slot = y % filtered.size();
            std::vector<float>& result = filtered[slot];
            if (row_in[slot] == y) return result;
            row_in[slot] = y;
            const float* from = floats.data() + std::size_t{y} * layer_width * n;
            for (std::size_t x = 0; x < layer_width; ++x, from += n) {
                Vec3 sum;
                for (std::size_t layer = 0; layer < weights.size(); ++layer) {
                    const float* const at = from + channels.layers[layer];
                    sum += Vec3{at[0], at[1], at[2]} * weights[layer];
                }
                float* const to = merged.data() + x * parts;
                to[0] = sum.x;
                to[1] = sum.y;
                to[2] = sum.z;
                if (with_alpha) to[3] = from[channels.alpha];
            }
            result.assign(std::size_t{width} * parts, 0.0f);
            for (std::size_t x = 0; x < width; ++x)
                for (std::size_t tap = 0; tap < columns[x].weights.size(); ++tap)
                    for (std::size_t part = 0; part < parts; ++part)
                        result[x * parts + part] +=
                            columns[x].weights[tap] * merged[(columns[x].first + tap) * parts + part];
            return result;
        };
        for (std::uint32_t y = 0; y < height; ++y) {
            float* const light = picture.light.data() + std::size_t{y} * width * 3;
            for (std::size_t tap = 0; tap < rows[y].weights.size(); ++tap) {
                const std::vector<float>& row = filteredRow(rows[y].first + static_cast<std::uint32_t>(tap));
                const float weight = rows[y].weights[tap];
                for (std::size_t x = 0; x < width; ++x) {
                    for (std::size_t part = 0; part < 3; ++part)
                        light[3 * x + part] += weight * row[x * parts + part];
                    if (with_alpha) picture.alpha[std::size_t{y} * width + x] += weight * row[x * parts + 3];
                }
            }
        }
    });
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::size_t at = std::size_t{y} * width + x;
            const bool inside = !store.hasRegions() || store.isInRegions(x, y);
            // Filters with negative lobes.
            for (std::size_t part = 0; part < 3; ++part)
                picture.light[3 * at + part] = inside ? std::max(picture.light[3 * at + part], 0.0f) : 0.0f;
            if (with_alpha && !inside) picture.alpha[at] = settings.transparent_outside_regions ? 0.0f : 1.0f;
        }
    }
    return picture;
}

bool copyChannel(const ImageStore& store, const std::string& name, float* values, std::size_t count) {
    const Channels& channels = store.getChannels();
    struct Named {
        const char* name;
        std::int32_t offset;
        std::size_t components;
    };
    const Named named[] = {
        {"alpha", channels.alpha, 1},
        {"normals", channels.normals, 3},
        {"normals_pre_bump", channels.normals_pre_bump, 3},
        {"depth", channels.depth, 1},
        {"position", channels.position, 3},
        {"material_id", channels.material_id, 3},
        {"object_id", channels.object_id, 3},
        {"direct_lighting", channels.direct, 3},
        {"indirect_lighting", channels.indirect, 3},
        {"emission_lighting", channels.emission, 3},
    };
    std::int32_t offset = -1;
    std::size_t components = 1;
    for (const Named& each : named)
        if (name == each.name) offset = each.offset, components = each.components;
    const auto find = [&](const std::vector<std::string>& names, const std::vector<std::int32_t>& offsets) {
        const auto at = std::find(names.begin(), names.end(), name);
        if (offset < 0 && at != names.end()) offset = offsets[static_cast<std::size_t>(at - names.begin())];
    };
    find(channels.material_mask_names, channels.material_masks);
    find(channels.object_mask_names, channels.object_masks);
    if (offset < 0 || count != components * store.getWidth() * store.getHeight()) return false;

    const auto first = static_cast<std::size_t>(offset);
    const bool is_auxiliary = first >= channels.auxiliary_begin && first < channels.auxiliary_end;
    const std::size_t factor = store.getFactor();
    const std::size_t begin = is_auxiliary ? factor / 2 : 0;
    const std::size_t end = is_auxiliary ? begin + 1 : factor;
    const float weight = 1.0f / static_cast<float>((end - begin) * (end - begin));
    store.readLocked([&](std::span<const float> floats) {
        for (std::size_t y = 0; y < store.getHeight(); ++y) {
            for (std::size_t x = 0; x < store.getWidth(); ++x) {
                for (std::size_t part = 0; part < components; ++part) {
                    float sum = 0.0f;
                    for (std::size_t j = begin; j < end; ++j)
                        for (std::size_t i = begin; i < end; ++i)
                            sum += floats[(((y + store.getMargin()) * factor + j) * store.getLayerWidth() +
                                           (x + store.getMargin()) * factor + i) *
                                              channels.floats_per_pixel +
                                          first + part];
                    *values++ = sum * weight;
                }
            }
        }
    });
    return true;
}

bool holdsLinearLight(const std::string& path) {
    return endsWith(path, ".hdr") || endsWith(path, ".pfm");
}

std::string writePicture(const std::string& path, const Picture& picture, const std::vector<unsigned char>& bytes) {
    const EncoderMemory memory;
    std::vector<unsigned char> file;
    const int width = static_cast<int>(picture.width);
    const int height = static_cast<int>(picture.height);
    if (endsWith(path, ".pfm")) {
        file = encodePfm(picture);
    } else if (endsWith(path, ".hdr")) {
        if (stbi_write_hdr_to_func(append, &file, width, height, 3, picture.light.data()) == 0)
            return "the picture can't be encoded";
    } else {
        const int components = picture.alpha.empty() ? 3 : 4;
        if (stbi_write_png_to_func(append, &file, width, height, components, bytes.data(), width * components) == 0)
            return "the picture can't be encoded";
    }
    return System::writeFileAtomically(path, file);
}

} // namespace Preview
