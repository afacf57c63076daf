#include "tools/Console.h"
#include "tools/FolderConversion.h"
#include "tools/MeshFile.h"
#include "tools/MeshSearch.h"
#include "tools/MeshStore.h"
#include "tools/OrderedWork.h"
#include "tools/System.h"
#include "utils/FileUtils.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace {

/// What became of one file.
struct StoredFile {
    std::string from;
    StoreEntry entry;
    bool unchanged = false;
    std::vector<std::string> notes;
    /// The mesh file, whole but not renamed yet; null if it exists already or after a failure.
    std::unique_ptr<OutputFile> file;
    std::string error;
};

class StoreConversion {
  public:
    StoreConversion(const std::string& store_folder, const ConversionSettings& conversion_settings)
        : store(store_folder), settings(conversion_settings), progress(settings.quiet) {}

    /// Returns whether all went well.
    bool run(const std::vector<std::string>& files) {
        store.create();
        store.load();
        for (const std::string& file : files)
            outcomes.emplace_back().from = file;
        const OrderedWork tasks = {outcomes.size(), [this](std::size_t i) { return estimateMemory(outcomes[i].from); },
                                   [this](std::size_t i) { convert(i); }, [this](std::size_t i) { finish(i); }};
        runInOrder(tasks, settings.jobs, settings.memory);
        progress.clear();
        if (!settings.quiet) printSummary();
        return failed == 0;
    }

    void fail(const std::string& message) {
        ++failed;
        progress.interrupt([&] { printError(message); });
    }

  private:
    /// At the same time as others.
    void convert(std::size_t index) {
        StoredFile& outcome = outcomes[index];
        progress.show('[' + std::to_string(index + 1) + '/' + std::to_string(outcomes.size()) + "] " +
                          Text::fileName(outcome.from),
                      static_cast<double>(index) / static_cast<double>(outcomes.size()));
        try {
            const std::string source = System::getAbsolutePath(outcome.from);
            const std::string words = "scale " + Text::number(settings.scale) + ", up " + settings.up;
            outcome.unchanged = store.findCurrent(source, words) != nullptr;
            if (outcome.unchanged) return;
            // Before the file is read: what is changed meanwhile is converted again next time.
            const auto stamp = System::getStamp(source).value_or(System::FileStamp{});
            const Velmar::ImportedMesh imported = readForConversion(outcome.from, settings);
            outcome.notes = imported.notes;
            outcome.entry = describeMesh(*imported.mesh, imported.mesh->checksum());
            outcome.entry.source = source;
            outcome.entry.stamp = stamp;
            outcome.entry.settings = words;
            write(*imported.mesh, outcome);
        } catch (...) {
            outcome.file.reset();
            outcome.error = getCurrentMessage();
        }
    }

    void write(const Velmar::Mesh& mesh, StoredFile& outcome) const {
        const std::string path = store.getMeshPath(outcome.entry.checksum);
        // Files appear whole under such names.
        if (System::getStamp(path)) return;
        try {
            makeFolders(FileUtils::getDirectory(path));
            outcome.file = std::make_unique<OutputFile>(path);
            writeMesh(mesh, *outcome.file, !settings.write.plain);
            outcome.file->flush();
        } catch (...) {
            throw makeFailureOf(path);
        }
    }

    /// One file at a time, in order.
    void finish(std::size_t index) {
        StoredFile outcome = std::move(outcomes[index]);
        if (!outcome.notes.empty())
            progress.interrupt([&] { printNotes(outcome.from, outcome.notes, settings.quiet); });
        if (outcome.unchanged) {
            ++unchanged;
            return;
        }
        if (outcome.error.empty()) commit(outcome);
        if (!outcome.error.empty()) fail(outcome.error);
    }

    /// The mesh first: the manifest names no mesh that isn't there.
    void commit(StoredFile& outcome) {
        using namespace std::chrono;
        try {
            // Another file of this run may have become the same mesh meanwhile.
            if (outcome.file != nullptr && !System::getStamp(store.getMeshPath(outcome.entry.checksum))) {
                bytes_out += outcome.file->commit();
                ++added;
            }
            outcome.entry.converted = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
            store.append(outcome.entry);
            bytes_in += outcome.entry.stamp.size;
            ++converted;
        } catch (...) {
            outcome.error = getCurrentMessage();
        }
    }

    void printSummary() const {
        std::printf("%s converted, %llu unchanged, %llu failed; %s added; %s in, %s out\n",
                    Text::count(converted, "file", "files").c_str(), static_cast<unsigned long long>(unchanged),
                    static_cast<unsigned long long>(failed), Text::count(added, "mesh", "meshes").c_str(),
                    Text::size(bytes_in).c_str(), Text::size(bytes_out).c_str());
    }

    MeshStore store;
    ConversionSettings settings;
    Progress progress;
    std::vector<StoredFile> outcomes;
    std::uint64_t converted = 0;
    std::uint64_t unchanged = 0;
    std::uint64_t failed = 0;
    std::uint64_t added = 0;
    std::uint64_t bytes_in = 0;
    std::uint64_t bytes_out = 0;
};

} // namespace

void convertIntoStore(const std::string& input, bool recursive, const std::string& store_folder,
                      const ConversionSettings& settings) {
    StoreConversion conversion(store_folder, settings);
    std::vector<std::string> files = {input};
    if (recursive) {
        const MeshSearch search = findMeshFiles(input, store_folder);
        for (const std::string& failure : search.failures)
            conversion.fail(failure);
        files.clear();
        for (const std::string& file : search.files)
            files.push_back(Text::joinPaths(input, file));
    }
    if (!conversion.run(files)) throw ReportedFailure();
}
