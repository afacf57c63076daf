#include "tools/MeshSearch.h"

#include "import/MeshImport.h"

#include "tools/Console.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

class Search {
  public:
    Search(std::string folder, const std::string& left_out) : root(std::move(folder)) {
        if (const auto identity = System::getIdentity(left_out)) seen.insert(*identity);
    }

    MeshSearch run() {
        if (!lookInto({})) throw Failure(root + ": can't be read: " + PlatformUtils::getLastErrorText());
        // Not by recursion: folders may lie deeper than a stack reaches.
        while (!pending.empty()) {
            const std::string folder = std::move(pending.back());
            pending.pop_back();
            if (!lookInto(folder)) fail(folder, "can't be read: " + PlatformUtils::getLastErrorText());
        }
        std::sort(found.files.begin(), found.files.end());
        return std::move(found);
    }

  private:
    /// `folder` is empty or ends in a separator.
    bool lookInto(const std::string& folder) {
        const std::string path = Text::joinPaths(root, folder);
        // No folder is looked into twice, whatever the file system shows.
        if (const auto identity = System::getIdentity(path); identity && !seen.insert(*identity).second) return true;
        std::vector<System::DirectoryEntry> entries;
        const bool complete = System::listDirectory(path, entries);
        for (const System::DirectoryEntry& entry : entries)
            add(folder, entry);
        return complete;
    }

    void add(const std::string& folder, const System::DirectoryEntry& entry) {
        const std::string path = folder + entry.name;
        if (entry.name.empty()) {
            fail(folder, "the name of a file in it isn't text");
        } else if (entry.kind == System::EntryKind::link_to_directory) {
            ++found.linked_folders;
        } else if (entry.kind != System::EntryKind::directory &&
                   !Velmar::isMeshFormat(Velmar::getMeshFormat(entry.name))) {
            return;
        } else if (entry.name.find('\\') != std::string::npos) {
            // The library takes it for a separator, so the name could lead out of the folder.
            fail(path, "a name with a backslash can't be used");
        } else if (entry.kind == System::EntryKind::directory) {
            pending.push_back(path + '/');
        } else if (entry.kind == System::EntryKind::other) {
            fail(path, "isn't a regular file");
        } else {
            found.files.push_back(path);
        }
    }

    void fail(const std::string& path, const std::string& reason) {
        found.failures.push_back(Text::joinPaths(root, path) + ": " + reason);
    }

    std::string root;
    MeshSearch found;
    std::vector<std::string> pending;
    std::set<System::FileIdentity> seen;
};

} // namespace

MeshSearch findMeshFiles(const std::string& folder, const std::string& left_out) {
    return Search(folder, left_out).run();
}

void makeFolders(const std::string& folder) {
    std::vector<std::size_t> missing;
    for (std::string part = folder; !part.empty() && !System::isDirectory(part); part = FileUtils::getDirectory(part))
        missing.push_back(part.size());
    std::ranges::reverse(missing);
    for (const std::size_t size : missing) {
        const std::string part = folder.substr(0, size);
        // A separator at the end makes no other folder.
        if (System::isDirectory(part)) continue;
        try {
            FileUtils::createDir(part);
        } catch (...) {
            // Another process may have been faster.
            if (!System::isDirectory(part)) throw;
        }
    }
}
