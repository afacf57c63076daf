#pragma once

#include "mesh/Mesh.h"
#include "tools/System.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What a store knows of a mesh file that was converted into it.
struct StoreEntry {
    /// The absolute path of the file.
    std::string source;
    /// Of the file when it was converted.
    System::FileStamp stamp;
    /// The options of the conversion that change the mesh, in words.
    std::string settings;
    std::uint64_t checksum = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t quads = 0;
    /// The corners of the box around the mesh.
    std::array<float, 6> bounds = {};
    std::vector<std::string> materials;
    /// When it was converted, in nanoseconds since 1970.
    std::int64_t converted = 0;
};

/// A folder that holds each mesh once, under the name of its content, and a manifest: which file became which mesh. Any
/// number of processes on any number of machines may write into it at once, without locks. A mesh is written under
/// another name and renamed. Each process appends to a manifest file of its own; together they are the manifest, in
/// which the entry converted last counts.
class MeshStore {
  public:
    explicit MeshStore(std::string folder);

    /// Makes the folder where it doesn't exist. Throws `Failure`.
    void create() const;

    /// Whether the folder is a store.
    bool exists() const;

    /// Has `append` continue `name`.jsonl, which no other process may use at the same time, in place of a new file.
    void continueManifest(const std::string& name) { own_name = name; }

    /// Reads the manifest. Throws `Failure` when there is none or a file of it can't be read.
    void load();

    /// By source and settings.
    const std::map<std::pair<std::string, std::string>, StoreEntry>& getEntries() const { return entries; }

    /// Lines of the manifest that aren't entries: where the file is, and its line. The last line of a file that a
    /// process was killed at isn't one.
    const std::vector<std::string>& getFaults() const { return faults; }

    /// The entry of a source that was converted with these settings and hasn't changed since, if its mesh is still
    /// there; else null.
    const StoreEntry* findCurrent(const std::string& source, const std::string& settings) const;

    /// DIR/ab/mesh_<checksum>.vmmesh, where ab are the first two of the checksum's sixteen hexadecimal digits.
    std::string getMeshPath(std::uint64_t checksum) const;

    /// All mesh files, in the order of their paths, and the files that a killed process left unfinished. Throws
    /// `Failure`.
    struct Files {
        std::vector<std::string> meshes;
        std::vector<std::string> unfinished;
    };
    Files findFiles() const;

    /// Adds an entry to the manifest file of this process, given to the system when this returns. Throws `Failure`.
    void append(const StoreEntry& entry);

    /// Replaces all manifest files by one of the present entries, or by those that `keep` chooses of them. Only while
    /// no other process writes. Throws `Failure`.
    void rewrite(const std::vector<const StoreEntry*>& kept);

  private:
    void loadFile(const std::string& path);
    std::string makeManifestPath() const;
    std::string getManifestPath(const std::string& name) const;

    std::string folder;
    std::string own_name;
    std::map<std::pair<std::string, std::string>, StoreEntry> entries;
    std::vector<std::string> faults;
    std::vector<std::string> manifest_files;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> own{nullptr, &std::fclose};
};

/// The entry of a mesh; source, stamp, settings and time are left to the caller.
StoreEntry describeMesh(const Velmar::Mesh& mesh, std::uint64_t checksum);

/// The entry as a line of JSON, without the end of the line.
std::string toJson(const StoreEntry& entry);
