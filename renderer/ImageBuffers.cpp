#include "renderer/ImageBuffers.h"

#include "velmarexceptions.h"

#include "scene/SceneNodeRoot.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeRenderSettings.h"

#include <cstddef>
#include <new>

namespace Velmar {

namespace {

/// Filters of the image reach beyond its edge, so a margin is rendered; a receiver has no filtered image.
constexpr std::uint32_t usual_margin = 4;

const SceneNodeRenderSettings& findSettings(const SceneNodeRoot& scene) {
    const SceneNode* const settings = scene.getRenderSettingsNode();
    if (settings == nullptr) throw VelmarException("no render settings node found.");
    return static_cast<const SceneNodeRenderSettings&>(*settings);
}

bool isReceiver(const SceneNodeRenderSettings& settings) {
    return settings.receiver_quad.value || settings.far_field_receiver.value;
}

ImageStoreSize sizeOf(const SceneNodeRenderSettings& settings) {
    ImageStoreSize size;
    size.width = static_cast<std::uint32_t>(settings.width.value);
    size.height = static_cast<std::uint32_t>(settings.height.value);
    size.super_sample_factor = static_cast<std::uint32_t>(settings.super_sample_factor.value);
    const bool without_margin =
        (settings.reserved_option_0.has_value && settings.reserved_option_0.value) || isReceiver(settings);
    size.margin = without_margin ? 0 : usual_margin;
    size.layer_width = (size.width + 2 * size.margin) * size.super_sample_factor;
    size.layer_height = (size.height + 2 * size.margin) * size.super_sample_factor;
    return size;
}

Vector<String> nameLayers(const SceneNodeRoot& scene, const SceneNodeRenderSettings& settings) {
    Vector<String> names;
    names.resize(std::size_t{SceneNode::getMaxLayerIndexOfTree(scene)} + 1);
    for (std::size_t i = 0; i < names.size() && i < settings.layer_settings.size(); ++i)
        if (settings.layer_settings[i]) names[i] = settings.layer_settings[i]->name;
    return names;
}

RenderChannelRequest requestChannels(const SceneNodeRenderSettings& settings, const Vector<String>& material_masks,
                                     const Vector<String>& object_masks) {
    RenderChannelRequest request;
    request.regions.reserve(settings.render_regions.size());
    for (const RenderRegion& region : settings.render_regions)
        request.regions.push_back({static_cast<std::uint32_t>(region.x1), static_cast<std::uint32_t>(region.y1),
                                   static_cast<std::uint32_t>(region.x2), static_cast<std::uint32_t>(region.y2)});
    request.alpha = settings.render_foreground_alpha.value;
    request.spectral = isReceiver(settings);
    request.num_spectral_components = settings.receiver_num_wavelength_buckets.value;
    request.progressive = settings.reserved_option_1.value;
    request.normals = settings.normals_channel.value;
    request.depth = settings.depth_channel.value;
    request.position = settings.position_channel.value;
    request.material_id = settings.material_id_channel.value;
    request.object_id = settings.object_id_channel.value;
    request.normals_pre_bump = settings.normals_pre_bump_channel.value;
    request.foreground = settings.foreground_channel.value;
    request.lighting_passes = {settings.direct_lighting_channel.value,
                               settings.indirect_lighting_channel.value,
                               settings.specular_reflection_lighting_channel.value,
                               settings.refraction_lighting_channel.value,
                               settings.transmission_lighting_channel.value,
                               settings.emission_lighting_channel.value,
                               settings.participating_media_lighting_channel.value,
                               settings.sss_lighting_channel.value};
    if (settings.material_masks.value) request.material_masks = material_masks;
    if (settings.object_masks.value) request.object_masks = object_masks;
    return request;
}

MasterBuffer* makeMasterBuffer(const SceneNodeRoot& scene, const SceneNodeRenderSettings& settings) {
    try {
        // Nodes of the renderer library see this order, and are asked for mask names whether or not they are used.
        const Vector<String> layer_names = nameLayers(scene, settings);
        const Vector<String> material_masks = SceneNode::getMaterialMaskNameList(scene);
        const Vector<String> object_masks = SceneNode::getModelMaskNameList(scene);
        return new MasterBuffer(sizeOf(settings), layer_names, settings.gpu.value,
                                requestChannels(settings, material_masks, object_masks));
    } catch (const Exception& exception) {
        throw VelmarException(toVelmarString("Error while allocating image buffer: " + exception.getMessage()));
    } catch (const std::bad_alloc&) {
        throw VelmarException("Error while allocating image buffer: memory allocation failure.");
    }
}

} // namespace

RenderBuffer::RenderBuffer(const Reference<SceneNodeRoot>& scene)
    : master_buffer(makeMasterBuffer(*scene, findSettings(*scene))) {}

RenderBuffer::~RenderBuffer() {
    master_buffer->destroy(1);
}

FloatBuffer::~FloatBuffer() {
    sdkFree(e);
}

UInt8Buffer::UInt8Buffer() = default;

UInt8Buffer::~UInt8Buffer() = default;

} // namespace Velmar
