#include "renderer/DataManager.h"

#include "velmarexceptions.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Velmar {

struct DataManagerLayout {
    static_assert(offsetof(DataManager, texture_manager) == 16);
    static_assert(offsetof(DataManager, interface) == 24);
};

namespace {

constexpr std::size_t initialise_slot = 1;
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
        callSlot<void>(interface.getPointer(), initialise_slot, &context.sdk_dir);
        texture_manager = new TextureManager(context);
        linkObjects(texture_manager->getInterface(), interface.getPointer());
    } catch (const Exception& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    }
}

} // namespace Velmar
