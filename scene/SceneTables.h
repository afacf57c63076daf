#pragma once

#include "reference.h"
#include "velmarhashtable.h"
#include "velmarstring.h"

#include <cstdint>

namespace Velmar {

class SceneNode;

/// Names a node within its scene.
using UID = std::uint32_t;

constexpr UID invalid_uid = 0xFFFFFFFF;
constexpr UID root_uid = 0;

/// The sum, wrapping at 32 bits; the invalid UID stays invalid.
constexpr UID offsetUID(UID uid, std::uint32_t offset) {
    return uid == invalid_uid ? invalid_uid : uid + offset;
}

struct UIDTraits {
    static std::uint64_t hash(UID uid) { return uid; }
    static bool equal(UID a, UID b) { return a == b; }
};

/// FNV-1a over bytes taken as signed and sign-extended, which differs from the published form for bytes from 0x80 up.
struct SignedByteHashTraits {
    static std::uint64_t hash(const String& key) {
        std::uint64_t hash = 0xCBF29CE484222325;
        for (const char byte : key.view()) {
            hash ^= static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<signed char>(byte)));
            hash *= 0x100000001B3;
        }
        return hash;
    }
    static bool equal(const String& a, const String& b) { return a == b; }
};

struct NodeAddressTraits {
    static std::uint64_t hash(const Reference<SceneNode>& node) {
        return reinterpret_cast<std::uintptr_t>(node.getPointer());
    }
    static bool equal(const Reference<SceneNode>& a, const Reference<SceneNode>& b) { return a == b; }
};

/// Nodes by UID; the table counts no references.
using NodeUIDMap = HashTable<UID, SceneNode*, UIDTraits>;
/// Mask names with the order of their first use.
using MaskNameMap = HashTable<String, std::uint32_t, SignedByteHashTraits>;
/// Old paths to new ones.
using PathMap = HashTable<String, String, SignedByteHashTraits>;
using VisitedMeshes = HashTable<UID, bool, UIDTraits>;
using ChangedNodes = HashTable<Reference<SceneNode>, std::uint32_t, NodeAddressTraits>;

static_assert(sizeof(NodeUIDMap) == 40);
static_assert(sizeof(NodeUIDMap::Entry) == 16);
static_assert(sizeof(MaskNameMap::Entry) == 48);
static_assert(sizeof(PathMap::Entry) == 80);
static_assert(sizeof(VisitedMeshes::Entry) == 8);
static_assert(sizeof(ChangedNodes::Entry) == 16);

} // namespace Velmar
