#include "renderer/LibraryServices.h"

#include "velmarexceptions.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Velmar {

ToneMapper::ToneMapper(const VelmarContext& context, const Reference<RenderBuffer>& render_buffer_,
                       const Reference<UInt8Buffer>& uint8_buffer_, const Reference<FloatBuffer>& float_buffer_)
    : render_buffer(render_buffer_), uint8_buffer(uint8_buffer_), float_buffer(float_buffer_) {
    context.createObject("ToneMapperDLLAPI", interface);
    String error;
    callSlot<void>(interface.getPointer(), LibrarySlot::initialise, &context.sdk_dir, &context.appdata_dir,
                   render_buffer.getPointer(), uint8_buffer.getPointer(), float_buffer.getPointer(), &error);
    if (!error.empty()) error_msg = error;
}

TextureManager::TextureManager(const VelmarContext& context) {
    context.createObject("TextureManagerDLLAPI", interface);
    callSlot<void>(interface.getPointer(), LibrarySlot::initialise, &context.sdk_dir);
}

namespace {

constexpr std::size_t link_offset = 24;
constexpr std::size_t linked_word = 5 * sizeof(std::uint64_t);

/// Lets the texture manager find what the data manager keeps for it. Both are the library's objects; the offsets are
/// part of the contract with it.
void linkObjects(LibraryObject* texture_manager, const LibraryObject* data_manager) {
    const char* kept = nullptr;
    std::memcpy(&kept, reinterpret_cast<const char*>(data_manager) + link_offset, sizeof kept);
    std::memcpy(reinterpret_cast<char*>(texture_manager) + link_offset, kept + linked_word, sizeof(std::uint64_t));
}

} // namespace

DataManager::DataManager(const VelmarContext& context) {
    try {
        context.createObject("DataManagerDLLAPI", interface);
        callSlot<void>(interface.getPointer(), LibrarySlot::initialise, &context.sdk_dir);
        texture_manager = new TextureManager(context);
        linkObjects(texture_manager->getInterface(), interface.getPointer());
    } catch (const Exception& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    }
}

} // namespace Velmar
