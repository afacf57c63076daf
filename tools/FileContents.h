#pragma once

#include "velmarvec.h"

#include "tools/DocumentFiles.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class Progress;

/// Equal for equal contents; different ones differ, but for a chance of one in 2^64 among billions.
struct Digest {
    std::uint64_t low = 0;
    std::uint64_t high = 0;

    // The checker takes the 0 of the comparison for a pointer.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    auto operator<=>(const Digest&) const = default;

    /// Of bytes.
    static Digest of(std::string_view bytes);
};

/// What a mesh is described by.
struct MeshFacts {
    std::uint64_t checksum;
    std::uint64_t vertices;
    std::uint64_t triangles;
    std::uint64_t quads;
    /// Not of a mesh without vertices.
    std::optional<std::pair<Velmar::Vec3f, Velmar::Vec3f>> bounds;
};

/// The content of a file that a document names.
struct FileContent {
    /// The digest is that of its content. Otherwise it is that of the name after the last separator.
    bool is_read = false;
    Digest digest;
    std::uint64_t size = 0;
    /// Of a mesh file.
    std::optional<MeshFacts> mesh;
};

/// The contents of the files that a document names, read when they are first asked for. Documents that are compared
/// share the contents of places, so that a file that both name is read once.
class FileContents {
  public:
    using Places = std::unordered_map<std::string, FileContent>;

    FileContents(const std::string& document, Places& shared_, Progress& progress_)
        : files(document), shared(shared_), progress(progress_) {}

    const FileContent& get(std::string_view name);

    /// The names of files that couldn't be read, in the order in which they were asked for.
    const std::vector<std::string>& getUnread() const { return unread; }

  private:
    DocumentFiles files;
    Places& shared;
    Progress& progress;
    std::unordered_map<std::string, const FileContent*> by_name;
    std::vector<std::string> unread;
};
