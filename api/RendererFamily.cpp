#include "reference.h"
#include "velmarstring.h"
#include "velmarvector.h"

#include "api/Handles.h"
#include "renderer/ImageBuffers.h"
#include "renderer/LibraryCall.h"
#include "renderer/LibraryServices.h"
#include "renderer/Renderer.h"

namespace {

using Velmar::Reference;

Velmar::RendererImpl& implOf(VelmarRenderer* renderer) {
    return Velmar::fromHandle(renderer)->getImpl();
}

void initialiseWithScene(VelmarRenderer* renderer, ::VelmarContext* context_handle, VelmarScene* scene_handle) {
    const Velmar::HeldForCall held_context(Velmar::fromHandle(context_handle));
    const Velmar::HeldForCall held_scene(Velmar::fromHandle(scene_handle));
    const Reference<Velmar::RenderBuffer> render_buffer(
        new Velmar::RenderBuffer(Reference<Velmar::SceneNodeRoot>(Velmar::fromHandle(scene_handle))));
    const Reference<Velmar::UInt8Buffer> uint8_buffer(new Velmar::UInt8Buffer);
    const Reference<Velmar::FloatBuffer> float_buffer(new Velmar::FloatBuffer);
    const Reference<Velmar::VelmarContext> context(Velmar::fromHandle(context_handle));
    const Reference<Velmar::ToneMapper> tone_mapper(
        new Velmar::ToneMapper(*context, render_buffer, uint8_buffer, float_buffer));
    const Velmar::Vector<Velmar::String> strings;
    const Reference<Velmar::DataManager> data_manager(new Velmar::DataManager(*context));
    const Reference<Velmar::SceneNodeRoot> scene(Velmar::fromHandle(scene_handle));
    implOf(renderer).initialise(scene, render_buffer, strings, data_manager, tone_mapper);
}

} // namespace

VelmarRenderer* VelmarRenderer_Create(::VelmarContext* context) {
    // An exception of the library needs the library until it is caught, and the context keeps the library loaded.
    const Velmar::HeldForCall held(Velmar::fromHandle(context));
    return Velmar::passOnLibraryExceptions([context] {
        return Velmar::toHandle<VelmarRenderer>(
            new Velmar::Renderer(Reference<Velmar::VelmarContext>(Velmar::fromHandle(context))));
    });
}

void VelmarRenderer_InitializeWithScene(VelmarRenderer* renderer, ::VelmarContext* context, VelmarScene* scene) {
    Velmar::passOnLibraryExceptions([=] { initialiseWithScene(renderer, context, scene); });
}

uint64_t VelmarRenderer_Start(VelmarRenderer* renderer) {
    return implOf(renderer).start();
}

uint64_t VelmarRenderer_Pause(VelmarRenderer* renderer) {
    return implOf(renderer).pause();
}

uint64_t VelmarRenderer_Resume(VelmarRenderer* renderer) {
    return implOf(renderer).resume();
}

uint64_t VelmarRenderer_Stop(VelmarRenderer* renderer) {
    return implOf(renderer).stop();
}
