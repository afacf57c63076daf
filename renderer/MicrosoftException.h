#pragma once

/// The data by which Microsoft's compiler describes an exception in flight: what of it is a contract with the runtimes
/// of all its hosts. "Rva" is an address as distance from the start of the module that threw.

#include <cstdint>

namespace Velmar::Microsoft {

constexpr std::uint32_t cpp_exception = 0xE06D7363;
constexpr std::uint64_t first_magic = 0x19930520;
/// Later forms of the same data, for which hosts' runtimes have the same handlers.
constexpr std::uint64_t last_magic = 0x19930522;

using Rva = std::int32_t;

struct TypeDescriptor {
    const void* table;
    void* reserved;
    /// As ".?AVbad_alloc@std@@"; as long as it is.
    char name[1];
};

/// One of the types by which an exception may be caught.
struct CatchableType {
    enum : std::uint32_t { simple = 1, virtual_base = 4 };

    std::uint32_t properties;
    Rva type;
    /// Where in the object the part of that type lies.
    std::int32_t member_offset;
    std::int32_t virtual_table_offset;
    std::int32_t virtual_table_index;
    std::int32_t size;
    Rva copy;
};

static_assert(sizeof(CatchableType) == 28);

/// From the object's own type to its bases.
struct CatchableTypes {
    std::int32_t count;
    Rva types[1];
};

struct ThrowInfo {
    std::uint32_t attributes;
    Rva destroy;
    Rva forward_compatible;
    Rva catchable_types;
};

static_assert(sizeof(ThrowInfo) == 16);

/// std::string. Texts of 16 bytes or more lie elsewhere.
struct StdString {
    union {
        char inside[16];
        char* outside;
    };
    std::uint64_t size;
    std::uint64_t capacity;
};

static_assert(sizeof(StdString) == 32);

/// std::exception and the standard classes derived from it, which add nothing.
struct StdException {
    const void* const* operations;
    const char* text;
    /// Whether its destructor releases the text.
    bool owns_text;
};

static_assert(sizeof(StdException) == 24);

} // namespace Velmar::Microsoft
