#include "tools/FolderConversion.h"

#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/MeshSearch.h"
#include "tools/OrderedWork.h"
#include "tools/Placement.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace {

/// What became of one file.
struct ConvertedFile {
    /// As seen from the folder.
    std::string name;
    std::string from;
    std::string to;
    std::vector<std::string> notes;
    /// Whole, but not renamed yet; null after a failure.
    std::unique_ptr<OutputFile> file;
    std::uint64_t size = 0;
    std::string error;
};

class FolderConversion {
  public:
    FolderConversion(std::string input_folder, std::string output_folder, ConversionSettings conversion_settings)
        : input(std::move(input_folder)), output(std::move(output_folder)), settings(std::move(conversion_settings)),
          progress(settings.quiet) {}

    /// Returns whether all went well.
    bool run() {
        progress.show("looking for mesh files");
        const MeshSearch search = findMeshFiles(input, output);
        makeOutputFolder();
        for (const std::string& failure : search.failures)
            fail(failure);
        for (const std::string& file : search.files)
            protect(Text::joinPaths(input, file), Text::joinPaths(input, file));
        const std::vector<std::string> names = nameConverted(search.files, '.' + settings.format);
        for (std::size_t i = 0; i < names.size(); ++i) {
            outcomes.emplace_back();
            outcomes.back().name = search.files[i];
            outcomes.back().from = Text::joinPaths(input, search.files[i]);
            outcomes.back().to = Text::joinPaths(output, names[i]);
        }
        const OrderedWork tasks = {outcomes.size(), [this](std::size_t i) { return estimateMemory(outcomes[i].from); },
                                   [this](std::size_t i) { convert(i); }, [this](std::size_t i) { finish(i); }};
        runInOrder(tasks, settings.jobs, settings.memory);
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

    /// At the same time as others.
    void convert(std::size_t index) {
        ConvertedFile& outcome = outcomes[index];
        progress.show('[' + std::to_string(index + 1) + '/' + std::to_string(outcomes.size()) + "] " + outcome.name,
                      static_cast<double>(index) / static_cast<double>(outcomes.size()));
        try {
            const Velmar::ImportedMesh imported = readForConversion(outcome.from, settings);
            outcome.notes = imported.notes;
            outcome.size = MappedFile(outcome.from).getSize();
            requireReplaceable(outcome);
            write(imported, outcome);
        } catch (...) {
            outcome.file.reset();
            outcome.error = getCurrentMessage();
        }
    }

    void write(const Velmar::ImportedMesh& imported, ConvertedFile& outcome) const {
        try {
            makeFolders(FileUtils::getDirectory(outcome.to));
            outcome.file = std::make_unique<OutputFile>(outcome.to);
            writeMeshAs(settings.format, *imported.mesh, *outcome.file, settings.write);
            outcome.file->flush();
        } catch (...) {
            throw makeFailureOf(outcome.to);
        }
    }

    /// One file at a time, in order: of two that would become one file, the first does.
    void finish(std::size_t index) {
        ConvertedFile outcome = std::move(outcomes[index]);
        if (!outcome.notes.empty())
            progress.interrupt([&] { printNotes(outcome.from, outcome.notes, settings.quiet); });
        if (outcome.file != nullptr) commit(outcome);
        if (outcome.error.empty())
            ++converted;
        else
            fail(outcome.error);
    }

    void commit(ConvertedFile& outcome) {
        try {
            requireReplaceable(outcome);
            bytes_out += outcome.file->commit();
            bytes_in += outcome.size;
        } catch (...) {
            outcome.error = getCurrentMessage();
            return;
        }
        protect(outcome.to, "what became of " + outcome.from);
    }

    /// Links and file systems that don't tell letters apart make one file of two names.
    void requireReplaceable(const ConvertedFile& outcome) {
        const auto identity = System::getIdentity(outcome.to);
        if (!identity) return;
        const std::lock_guard lock(mutex);
        if (const auto other = untouchable.find(*identity); other != untouchable.end())
            throw Failure(outcome.from + ": " + outcome.to + " is not replaced: it is " + other->second);
    }

    void protect(const std::string& path, const std::string& description) {
        const std::lock_guard lock(mutex);
        if (const auto identity = System::getIdentity(path)) untouchable[*identity] = description;
    }

    void fail(const std::string& message) {
        ++failed;
        progress.interrupt([&] { printError(message); });
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
    std::vector<ConvertedFile> outcomes;
    std::mutex mutex;
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

std::uint64_t estimateMemory(const std::string& path) {
    // The mapped file and the mesh, or its compressed form and the mesh: at most 2.8 times the file in the benchmarks;
    // compressed files may hold much more than their size. Reading it reports a file that isn't there.
    const std::uint64_t factor = Velmar::getMeshFormat(path) == "vmmesh" ? 12 : 4;
    const auto stamp = System::getStamp(path);
    return stamp ? factor * stamp->size : 0;
}

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
