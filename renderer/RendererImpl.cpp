#include "renderer/RendererImpl.h"

#include <iostream>
#include <utility>

// Each replaces the RendererImpl, which is the first argument, by its library object and jumps to an operation of that
// object, so that all further arguments and the result pass through as they stand.
extern "C" {
void velmarForwardToSlot2();
void velmarForwardToSlot5();
void velmarForwardToSlot6();
void velmarForwardToSlot8();
void velmarForwardToSlot10();
void velmarForwardToSlot11();
void velmarForwardToSlot12();
void velmarForwardToSlot13();
void velmarForwardToSlot14();
}

namespace Velmar {

struct RendererImplLayout {
    static_assert(offsetof(RendererImpl, operations) == 0);
    static_assert(offsetof(RendererImpl, context) == 8);
    // The forwarders find the library object here.
    static_assert(offsetof(RendererImpl, interface) == 16);
    static_assert(offsetof(RendererImpl, render_buffer) == 24);
    static_assert(offsetof(RendererImpl, data_manager) == 32);
    static_assert(offsetof(RendererImpl, scene) == 40);
    static_assert(offsetof(RendererImpl, tone_mapper) == 48);
};

namespace {

constexpr std::size_t library_object_initialise = 1;
constexpr std::size_t library_scene_initialise = 9;

void* destroyOperation(RendererImpl* self, unsigned flags) {
    return self->destroy(flags);
}

std::uint64_t initialiseOperation(RendererImpl* self, const Reference<SceneNodeRoot>* scene,
                                  const Reference<RenderBuffer>* render_buffer, const Vector<String>* strings,
                                  const Reference<DataManager>* data_manager,
                                  const Reference<ToneMapper>* tone_mapper) {
    return self->initialise(*scene, *render_buffer, *strings, *data_manager, *tone_mapper);
}

} // namespace

const RendererImpl::Operation RendererImpl::operation_table[slot_count] = {
    reinterpret_cast<Operation>(destroyOperation),
    reinterpret_cast<Operation>(initialiseOperation),
    velmarForwardToSlot2,
    velmarForwardToSlot10,
    velmarForwardToSlot11,
    velmarForwardToSlot12,
    velmarForwardToSlot13,
    velmarForwardToSlot14,
    velmarForwardToSlot5,
    velmarForwardToSlot6,
    velmarForwardToSlot8,
};

RendererImpl::RendererImpl(const Reference<VelmarContext>& context_) : context(context_) {
    if (context->createObject("VelmarInterface", interface) != 0)
        std::cout << "Failed to create Instance of 'VelmarInterface'" << std::endl;
    const VelmarContext& bound = *context;
    if (callSlot<std::int32_t>(interface.getPointer(), library_object_initialise, &bound.sdk_dir, &bound.appdata_dir) !=
        0)
        std::cout << "Failed to initialise 'VelmarInterface'" << std::endl;
}

RendererImpl::~RendererImpl() {
    // Not left to the order of the fields: the library's object may still look at what the others hold.
    interface.clear();
}

void* RendererImpl::destroy(unsigned flags) {
    this->~RendererImpl();
    if ((flags & 1) != 0) sdkFree(this);
    return this;
}

std::uint64_t RendererImpl::initialise(const Reference<SceneNodeRoot>& new_scene,
                                       const Reference<RenderBuffer>& new_render_buffer, const Vector<String>& strings,
                                       const Reference<DataManager>& new_data_manager,
                                       const Reference<ToneMapper>& new_tone_mapper) {
    const Reference<SceneNodeRoot> old_scene = scene;
    const Reference<RenderBuffer> old_render_buffer = render_buffer;
    const Reference<DataManager> old_data_manager = data_manager;
    const Reference<ToneMapper> old_tone_mapper = tone_mapper;
    scene = new_scene;
    render_buffer = new_render_buffer;
    data_manager = new_data_manager;
    tone_mapper = new_tone_mapper;
    try {
        // The addresses of our own holders, which last as long as the library's object does.
        return callSlot<std::uint64_t>(interface.getPointer(), library_scene_initialise, &std::as_const(scene),
                                       render_buffer.getPointer(), &strings, &std::as_const(data_manager),
                                       &std::as_const(tone_mapper));
    } catch (...) {
        scene = old_scene;
        render_buffer = old_render_buffer;
        data_manager = old_data_manager;
        tone_mapper = old_tone_mapper;
        throw;
    }
}

std::uint64_t RendererImpl::callOperation(Slot slot) {
    return reinterpret_cast<std::uint64_t (*)(RendererImpl*)>(operations[slot])(this);
}

} // namespace Velmar
