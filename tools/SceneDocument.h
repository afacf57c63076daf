#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A node of a scene document, as far as it is told.
struct DocumentNode {
    /// The name of its element.
    std::string kind;
    /// Curves have none.
    std::optional<std::uint32_t> uid;
    std::string name;
    /// What distinguishes it from others of its kind, in words; may be empty.
    std::string detail;
    /// The mesh file that a mesh names.
    std::optional<std::string> mesh_file;
    /// Other files that it names: textures, profiles of lamps.
    std::vector<std::string> other_files;
    /// The uid of what a model places.
    std::optional<std::uint32_t> geometry;
    /// The uids of a model's materials.
    std::vector<std::uint32_t> materials;
};

/// What a scene document holds, its nodes in their order.
struct SceneDocument {
    std::uint64_t size = 0;
    std::vector<DocumentNode> nodes;
};

/// Stands where a node has no geometry or material.
constexpr std::uint32_t no_uid = 0xFFFFFFFF;

/// Reads a scene document. Throws `Failure` that names the file, the line and what is wrong there.
SceneDocument readSceneDocument(const std::string& path);

/// Prints the nodes of a scene document and the state of the files that it names. Throws `Failure` when the document is
/// damaged, and after printing when something that it names doesn't exist.
void printSceneInfo(const std::string& path);
