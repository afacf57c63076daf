#include "tools/FolderConversion.h"

#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/Placement.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <set>
#include <utility>

namespace {

// ---- looking for mesh files ----------------------------------------------------------------------------------------

/// The mesh files below a folder.
struct MeshSearch {
    /// As seen from the folder, with `/` between, in the order of their names.
    std::vector<std::string> files;
    /// What couldn't be looked into or named, and why.
    std::vector<std::string> failures;
    /// Links to folders, which aren't followed: they may lead anywhere, also back.
    std::size_t linked_folders = 0;
};

/// Looks for mesh files of every format in a folder and below, but not in the folder `left_out` and below.
class Search {
  public:
    Search(std::string folder, const std::string& left_out) : root(std::move(folder)) {
        if (const auto identity = System::getIdentity(left_out)) seen.insert(*identity);
    }

    /// Throws `Failure` when the folder itself can't be read.
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

// ---- converting ---------------------------------------------------------------------------------------------------

/// Makes `folder` and those above it that aren't there. Throws the library's exception when one can't be made.
void makeFolders(const std::string& folder) {
    std::vector<std::size_t> missing;
    for (std::string part = folder; !part.empty() && !System::isDirectory(part); part = FileUtils::getDirectory(part))
        missing.push_back(part.size());
    std::reverse(missing.begin(), missing.end());
    for (const std::size_t size : missing) {
        const std::string part = folder.substr(0, size);
        // A separator at the end makes no other folder.
        if (!System::isDirectory(part)) FileUtils::createDir(part);
    }
}

class FolderConversion {
  public:
    FolderConversion(std::string input_folder, std::string output_folder, ConversionSettings conversion_settings)
        : input(std::move(input_folder)), output(std::move(output_folder)), settings(std::move(conversion_settings)),
          progress(settings.quiet) {}

    /// Returns whether all went well.
    bool run() {
        progress.show("looking for mesh files");
        const MeshSearch search = Search(input, output).run();
        makeOutputFolder();
        for (const std::string& failure : search.failures)
            fail(failure);
        for (const std::string& file : search.files)
            protect(Text::joinPaths(input, file), Text::joinPaths(input, file));
        const std::vector<std::string> names = nameConverted(search.files, '.' + settings.format);
        for (std::size_t i = 0; i < names.size(); ++i) {
            progress.show('[' + std::to_string(i + 1) + '/' + std::to_string(names.size()) + "] " + search.files[i],
                          static_cast<double>(i) / static_cast<double>(names.size()));
            try {
                convert(Text::joinPaths(input, search.files[i]), Text::joinPaths(output, names[i]));
            } catch (...) {
                fail(getCurrentMessage());
            }
        }
        progress.clear();
        if (!settings.quiet) printSummary(search);
        return failed == 0;
    }

  private:
    void makeOutputFolder() const {
        try {
            makeFolders(output);
        } catch (...) {
            throw makeFailureOf(output);
        }
    }

    void convert(const std::string& from, const std::string& to) {
        const Velmar::ImportedMesh imported = readForConversion(from, settings);
        if (!imported.notes.empty()) progress.clear();
        printNotes(from, imported, settings.quiet);
        const std::uint64_t size = MappedFile(from).getSize();
        // Links and file systems that don't tell letters apart make one file of two names.
        if (const auto identity = System::getIdentity(to)) {
            if (const auto other = untouchable.find(*identity); other != untouchable.end())
                throw Failure(from + ": " + to + " is not replaced: it is " + other->second);
        }
        try {
            makeFolders(FileUtils::getDirectory(to));
            OutputFile file(to);
            writeMeshAs(settings.format, *imported.mesh, file, settings.write);
            bytes_out += file.commit();
        } catch (...) {
            throw makeFailureOf(to);
        }
        protect(to, "what became of " + from);
        bytes_in += size;
        ++converted;
    }

    void protect(const std::string& path, const std::string& description) {
        if (const auto identity = System::getIdentity(path)) untouchable[*identity] = description;
    }

    void fail(const std::string& message) {
        ++failed;
        progress.clear();
        printError(message);
    }

    void printSummary(const MeshSearch& search) const {
        std::printf("%s converted, %llu failed; %s in, %s out\n", Text::count(converted, "file", "files").c_str(),
                    static_cast<unsigned long long>(failed), Text::size(bytes_in).c_str(),
                    Text::size(bytes_out).c_str());
        if (search.linked_folders != 0)
            std::printf("%s not followed\n",
                        Text::count(search.linked_folders, "link to a folder was", "links to folders were").c_str());
    }

    std::string input;
    std::string output;
    ConversionSettings settings;
    Progress progress;
    /// The files that must not be replaced, and what they are.
    std::map<System::FileIdentity, std::string> untouchable;
    std::uint64_t converted = 0;
    std::uint64_t failed = 0;
    std::uint64_t bytes_in = 0;
    std::uint64_t bytes_out = 0;
};

std::string replaceExtension(const std::string& path, const std::string& extension) {
    return Text::folderOf(path) + Text::fileStem(path) + extension;
}

} // namespace

Velmar::ImportedMesh readForConversion(const std::string& path, const ConversionSettings& settings) {
    Velmar::ImportedMesh imported = readMesh(path, settings.scale);
    requireUsable(path, *imported.mesh);
    turnMesh(*imported.mesh, makeUpright(settings.up, path));
    return imported;
}

std::vector<std::string> nameConverted(const std::vector<std::string>& files, const std::string& extension) {
    std::map<std::string, std::vector<std::size_t>> claims;
    std::vector<std::string> names;
    std::vector<std::size_t> clashing;
    for (std::size_t i = 0; i < files.size(); ++i) {
        names.push_back(replaceExtension(files[i], extension));
        claims[FileUtils::toLowerCase(names[i])].push_back(i);
    }
    for (const auto& [name, claimants] : claims)
        if (claimants.size() > 1) clashing.insert(clashing.end(), claimants.begin(), claimants.end());
    // A longer name may be one that another file was to get, which then gets a longer one too.
    for (std::size_t done = 0; done < clashing.size(); ++done) {
        const std::size_t file = clashing[done];
        names[file] = files[file] + extension;
        const auto other = claims.find(FileUtils::toLowerCase(names[file]));
        if (other != claims.end() && other->second.size() == 1) clashing.push_back(other->second.front());
    }
    return names;
}

void convertFolder(const std::string& input, const std::string& output, const ConversionSettings& settings) {
    const auto identity = System::getIdentity(input);
    if (identity && identity == System::getIdentity(output))
        throw UsageError(output + ": is the folder to convert; another one must take the output");
    if (!FolderConversion(input, output, settings).run()) throw ReportedFailure();
}
