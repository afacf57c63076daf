#include "renderer/TextureManager.h"

#include <cstddef>

namespace Velmar {

struct TextureManagerLayout {
    static_assert(offsetof(TextureManager, interface) == 16);
};

namespace {

constexpr std::size_t initialise_slot = 1;

} // namespace

TextureManager::TextureManager(const VelmarContext& context) {
    context.createObject("TextureManagerDLLAPI", interface);
    callSlot<void>(interface.getPointer(), initialise_slot, &context.sdk_dir);
}

} // namespace Velmar
