#include "renderer/ToneMapper.h"

#include <cstddef>

namespace Velmar {

struct ToneMapperLayout {
    static_assert(offsetof(ToneMapper, interface) == 16);
    static_assert(offsetof(ToneMapper, render_buffer) == 24);
    static_assert(offsetof(ToneMapper, uint8_buffer) == 32);
    static_assert(offsetof(ToneMapper, float_buffer) == 40);
    static_assert(offsetof(ToneMapper, error_msg) == 48);
};

namespace {

constexpr std::size_t initialise_slot = 1;

} // namespace

ToneMapper::ToneMapper(const VelmarContext& context, const Reference<RenderBuffer>& render_buffer_,
                       const Reference<UInt8Buffer>& uint8_buffer_, const Reference<FloatBuffer>& float_buffer_)
    : render_buffer(render_buffer_), uint8_buffer(uint8_buffer_), float_buffer(float_buffer_) {
    context.createObject("ToneMapperDLLAPI", interface);
    String error;
    callSlot<void>(interface.getPointer(), initialise_slot, &context.sdk_dir, &context.appdata_dir,
                   render_buffer.getPointer(), uint8_buffer.getPointer(), float_buffer.getPointer(), &error);
    if (!error.empty()) error_msg = error;
}

} // namespace Velmar
