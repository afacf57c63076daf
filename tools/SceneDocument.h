#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class JsonWriter;

/// A node of a scene document, as far as it is described.
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

/// The uid that says that there is no geometry or material.
constexpr std::uint32_t no_uid = 0xFFFFFFFF;

/// Reads a scene document and calls `use` with each node in its order. Only one node at a time is in memory. Returns
/// the size of the file. Throws `Failure` that names the file, the line and what is wrong there, also for bytes that no
/// XML document may hold.
std::uint64_t readSceneDocument(const std::string& path, const std::function<void(DocumentNode&&)>& use);

/// Prints the nodes of a scene document and the state of the files that it names, or adds them to an open object of
/// `json`; neither if `quiet`. Throws `Failure` when the document is damaged, and at the end when something that it
/// names doesn't exist.
void describeScene(const std::string& path, bool quiet, JsonWriter* json);
