#include "renderer/Renderer.h"

#include "utils/Lines.h"

#include <utility>

// Each replaces the RendererImpl, which is the first argument, by its library object and jumps to an operation of that
// object, so that all further arguments and the result pass through as they are.
extern "C" {
void velmarForwardUnknown2();
void velmarForwardUnknown5();
void velmarForwardUnknown6();
void velmarForwardUnknown8();
void velmarForwardUnknown10();
void velmarForwardStart();
void velmarForwardPause();
void velmarForwardResume();
void velmarForwardStop();
}

namespace Velmar {

namespace {

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
    velmarForwardUnknown2,
    velmarForwardUnknown10,
    velmarForwardStart,
    velmarForwardPause,
    velmarForwardResume,
    velmarForwardStop,
    velmarForwardUnknown5,
    velmarForwardUnknown6,
    velmarForwardUnknown8,
};

RendererImpl::RendererImpl(const Reference<VelmarContext>& context_) : context(context_) {
    if (context->createObject("VelmarInterface", interface) != 0)
        printLine(LineStream::output, {"Failed to create Instance of 'VelmarInterface'"});
    const VelmarContext& bound = *context;
    if (callSlot<std::int32_t>(interface.getPointer(), LibrarySlot::initialise, &bound.sdk_dir, &bound.appdata_dir) !=
        0)
        printLine(LineStream::output, {"Failed to initialise 'VelmarInterface'"});
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
        return callSlot<std::uint64_t>(interface.getPointer(), LibrarySlot::initialise_scene, &std::as_const(scene),
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

Renderer::Renderer(const Reference<VelmarContext>& context) : impl(new RendererImpl(context)) {}

Renderer::~Renderer() {
    impl->destroy(1);
}

} // namespace Velmar
