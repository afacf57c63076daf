#include "tools/MeshStore.h"

#include "scene/nodes/SceneNodeMesh.h"
#include "tools/Console.h"
#include "tools/MeshSearch.h"
#include "tools/OutputFile.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>

using Velmar::SceneNodeMesh;

namespace {

constexpr std::string_view hex_digits = "0123456789abcdef";
constexpr std::string_view manifest_extension = ".jsonl";

/// The last `count` hexadecimal digits of a number.
std::string toHex(std::uint64_t number, int count) {
    std::string digits;
    for (int i = count - 1; i >= 0; --i)
        digits += hex_digits[number >> (4 * static_cast<unsigned>(i)) & 15U];
    return digits;
}

bool isHex(std::string_view text) {
    return text.find_first_not_of(hex_digits) == std::string_view::npos;
}

std::optional<StoreEntry> parseEntry(std::string_view line) {
    const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    try {
        StoreEntry entry;
        json.at("source").get_to(entry.source);
        json.at("size").get_to(entry.stamp.size);
        json.at("time").get_to(entry.stamp.time);
        json.at("settings").get_to(entry.settings);
        // As text: numbers of JSON readers often have 53 bits.
        entry.checksum = std::stoull(json.at("checksum").get<std::string>());
        json.at("vertices").get_to(entry.vertices);
        json.at("triangles").get_to(entry.triangles);
        json.at("quads").get_to(entry.quads);
        json.at("bounds").get_to(entry.bounds);
        json.at("materials").get_to(entry.materials);
        json.at("converted").get_to(entry.converted);
        return entry;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// The content of a file that other processes may have open for writing, which keeps Windows from mapping it.
std::string readShared(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(System::openFile(path), &std::fclose);
    std::string text;
    char block[65536];
    while (const std::size_t size = file == nullptr ? 0 : std::fread(block, 1, sizeof block, file.get()))
        text.append(block, size);
    if (file == nullptr || std::ferror(file.get()) != 0)
        throw Failure(path + ": can't be read: " + PlatformUtils::getLastErrorText());
    return text;
}

std::vector<System::DirectoryEntry> list(const std::string& path) {
    std::vector<System::DirectoryEntry> entries;
    if (!System::listDirectory(path, entries))
        throw Failure(path + ": can't be read: " + PlatformUtils::getLastErrorText());
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return entries;
}

} // namespace

MeshStore::MeshStore(std::string folder_) : folder(std::move(folder_)) {}

void MeshStore::create() const {
    try {
        makeFolders(Text::joinPaths(folder, "manifest"));
    } catch (...) {
        throw makeFailureOf(folder);
    }
}

bool MeshStore::exists() const {
    return System::isDirectory(Text::joinPaths(folder, "manifest"));
}

void MeshStore::load() {
    const std::string manifest = Text::joinPaths(folder, "manifest");
    if (!exists()) throw Failure(folder + ": is no store of meshes: it has no folder 'manifest'");
    for (const System::DirectoryEntry& file : list(manifest)) {
        if (file.kind != System::EntryKind::file || !file.name.ends_with(manifest_extension)) continue;
        const std::string path = Text::joinPaths(manifest, file.name);
        try {
            loadFile(path);
        } catch (...) {
            throw makeFailureOf(path);
        }
        manifest_files.push_back(path);
    }
}

void MeshStore::loadFile(const std::string& path) {
    const std::string text = readShared(path);
    std::string_view rest = text;
    for (std::size_t number = 1;; ++number) {
        const std::size_t end = rest.find('\n');
        // Without its end, a line is one that a process is writing or was killed at.
        if (end == std::string_view::npos) return;
        std::optional<StoreEntry> entry = parseEntry(rest.substr(0, end));
        rest.remove_prefix(end + 1);
        if (!entry) {
            faults.push_back(path + ":" + std::to_string(number));
            continue;
        }
        StoreEntry& known = entries[{entry->source, entry->settings}];
        if (known.source.empty() || known.converted <= entry->converted) known = std::move(*entry);
    }
}

const StoreEntry* MeshStore::findCurrent(const std::string& source, const std::string& settings) const {
    const auto found = entries.find({source, settings});
    if (found == entries.end() || System::getStamp(source) != found->second.stamp) return nullptr;
    return System::getStamp(getMeshPath(found->second.checksum)) ? &found->second : nullptr;
}

std::string MeshStore::getMeshPath(std::uint64_t checksum) const {
    return Text::joinPaths(Text::joinPaths(folder, toHex(checksum >> 56U, 2)),
                           SceneNodeMesh::getMeshFileName(checksum));
}

MeshStore::Files MeshStore::findFiles() const {
    Files files;
    for (const System::DirectoryEntry& part : list(folder)) {
        if (part.kind != System::EntryKind::directory || part.name.size() != 2 || !isHex(part.name)) continue;
        const std::string path = Text::joinPaths(folder, part.name);
        for (const System::DirectoryEntry& file : list(path)) {
            if (file.kind != System::EntryKind::file) continue;
            const std::string file_path = Text::joinPaths(path, file.name);
            if (SceneNodeMesh::isMeshFileName(file.name))
                files.meshes.push_back(file_path);
            else if (OutputFile::isPartialName(file.name))
                files.unfinished.push_back(file_path);
        }
    }
    return files;
}

void MeshStore::append(const StoreEntry& entry) {
    if (own == nullptr)
        own.reset(System::openForAppending(own_name.empty() ? makeManifestPath() : getManifestPath(own_name)));
    const std::string line = toJson(entry) + '\n';
    if (own == nullptr || std::fwrite(line.data(), 1, line.size(), own.get()) != line.size() ||
        std::fflush(own.get()) != 0)
        throw Failure(folder + ": the manifest can't be written: " + PlatformUtils::getLastErrorText());
}

void MeshStore::rewrite(const std::vector<const StoreEntry*>& kept) {
    const std::string path = makeManifestPath();
    OutputFile output(path);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(System::openForAppending(output.getPartialPath()),
                                                         &std::fclose);
    bool written = file != nullptr;
    for (const StoreEntry* entry : kept) {
        const std::string line = toJson(*entry) + '\n';
        written = written && std::fwrite(line.data(), 1, line.size(), file.get()) == line.size();
    }
    written = written && std::fclose(file.release()) == 0;
    if (!written) throw Failure(path + ": can't be written: " + PlatformUtils::getLastErrorText());
    output.commit();
    for (const std::string& old : manifest_files)
        System::removeFile(old);
    manifest_files = {path};
}

std::string MeshStore::makeManifestPath() const {
    std::random_device random;
    const std::uint64_t number = (std::uint64_t{random()} << 32U) | random();
    return getManifestPath(toHex(number, 16));
}

std::string MeshStore::getManifestPath(const std::string& name) const {
    return Text::joinPaths(Text::joinPaths(folder, "manifest"), name).append(manifest_extension);
}

StoreEntry describeMesh(const Velmar::Mesh& mesh, std::uint64_t checksum) {
    StoreEntry entry;
    entry.checksum = checksum;
    entry.vertices = mesh.verts.size();
    entry.triangles = mesh.triangles.size();
    entry.quads = mesh.quads.size();
    mesh.getBoundingBox(entry.bounds.data());
    for (const Velmar::String& name : mesh.used_materials)
        entry.materials.emplace_back(name.view());
    return entry;
}

std::string toJson(const StoreEntry& entry) {
    const nlohmann::ordered_json json = {
        {"source", entry.source},
        {"size", entry.stamp.size},
        {"time", entry.stamp.time},
        {"settings", entry.settings},
        {"checksum", std::to_string(entry.checksum)},
        {"vertices", entry.vertices},
        {"triangles", entry.triangles},
        {"quads", entry.quads},
        {"bounds", entry.bounds},
        {"materials", entry.materials},
        {"converted", entry.converted},
    };
    // A path that isn't UTF-8 is written with replacement characters, so its file is converted again each time.
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}
