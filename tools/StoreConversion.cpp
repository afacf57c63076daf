#include "tools/Console.h"
#include "tools/FolderConversion.h"
#include "tools/MeshFile.h"
#include "tools/MeshSearch.h"
#include "tools/MeshStore.h"
#include "tools/OrderedWork.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

using Json = nlohmann::ordered_json;

namespace {

/// What became of one file.
struct StoredFile {
    std::string from;
    StoreEntry entry;
    bool unchanged = false;
    std::vector<std::string> notes;
    /// The mesh file, whole but not renamed yet; null if it exists already or after a failure.
    std::unique_ptr<OutputFile> file;
    /// Of the mesh file if this run has added it.
    std::uint64_t written = 0;
    std::string error;
};

/// Flushed, as other programs read the lines while the work goes on.
void printJson(const Json& json) {
    std::printf("%s\n", json.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
    std::fflush(stdout);
}

class StoreConversion {
  public:
    StoreConversion(StoreSettings store_settings, ConversionSettings conversion_settings)
        : options(std::move(store_settings)), settings(std::move(conversion_settings)), store(options.folder),
          words("scale " + Text::number(settings.scale) + ", up " + settings.up),
          progress(settings.quiet || options.json) {}

    /// Returns whether all went well.
    bool run(const std::vector<std::string>& files) {
        if (options.dry_run) {
            printPlan(files);
            return failed == 0;
        }
        store.create();
        store.continueManifest(options.manifest);
        if (!options.force) store.load();
        for (const std::string& file : files)
            outcomes.emplace_back().from = file;
        const OrderedWork tasks = {outcomes.size(), [this](std::size_t i) { return estimateMemory(outcomes[i].from); },
                                   [this](std::size_t i) { convert(i); }, [this](std::size_t i) { finish(i); }};
        runInOrder(tasks, settings.jobs, settings.memory);
        progress.clear();
        if (options.json)
            printJson({{"summary",
                        {{"converted", converted},
                         {"unchanged", unchanged},
                         {"failed", failed},
                         {"added", added},
                         {"bytes_in", bytes_in},
                         {"bytes_out", bytes_out}}}});
        else if (!settings.quiet)
            printSummary();
        return failed == 0;
    }

    /// `source` is empty for what has no name.
    void fail(const std::string& source, const std::string& message) {
        ++failed;
        if (!options.json) {
            progress.interrupt([&] { printError(message); });
            return;
        }
        Json json = {{"source", source}, {"state", "failed"}, {"message", message}};
        if (source.empty()) json.erase("source");
        printJson(json);
    }

  private:
    /// What `run` would convert.
    void printPlan(const std::vector<std::string>& files) {
        if (!options.force && store.exists()) store.load();
        for (const std::string& file : files) {
            const std::string source = System::getAbsolutePath(file);
            if (isCurrent(source)) {
                ++unchanged;
                continue;
            }
            const std::uint64_t size = System::getStamp(source).value_or(System::FileStamp{}).size;
            if (options.json)
                printJson(
                    {{"source", source}, {"state", "pending"}, {"size", size}, {"memory", estimateMemory(source)}});
            else
                std::printf("%s (%s)\n", Text::printable(file).c_str(), Text::size(size).c_str());
            bytes_in += size;
            ++converted;
        }
        if (options.json)
            printJson(
                {{"summary",
                  {{"pending", converted}, {"unchanged", unchanged}, {"failed", failed}, {"bytes_in", bytes_in}}}});
        else if (!settings.quiet)
            std::printf("%s would be converted, %s; %llu unchanged\n", Text::count(converted, "file", "files").c_str(),
                        Text::size(bytes_in).c_str(), static_cast<unsigned long long>(unchanged));
    }

    bool isCurrent(const std::string& source) const {
        return !options.force && store.findCurrent(source, words) != nullptr;
    }

    /// At the same time as others.
    void convert(std::size_t index) {
        StoredFile& outcome = outcomes[index];
        progress.show('[' + std::to_string(index + 1) + '/' + std::to_string(outcomes.size()) + "] " +
                          Text::fileName(outcome.from),
                      static_cast<double>(index) / static_cast<double>(outcomes.size()));
        try {
            const std::string source = System::getAbsolutePath(outcome.from);
            outcome.unchanged = isCurrent(source);
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
        if (!outcome.notes.empty() && !options.json)
            progress.interrupt([&] { printNotes(outcome.from, outcome.notes, settings.quiet); });
        if (outcome.unchanged)
            ++unchanged;
        else if (outcome.error.empty())
            commit(outcome);
        if (!outcome.error.empty())
            fail(outcome.from, outcome.error);
        else if (options.json)
            printJson(describe(outcome));
    }

    static Json describe(const StoredFile& outcome) {
        if (outcome.unchanged) return {{"source", outcome.from}, {"state", "unchanged"}};
        return {{"source", outcome.from},
                {"state", "converted"},
                {"checksum", std::to_string(outcome.entry.checksum)},
                {"size", outcome.entry.stamp.size},
                {"written", outcome.written},
                {"notes", outcome.notes}};
    }

    /// The mesh first: the manifest names no mesh that isn't there.
    void commit(StoredFile& outcome) {
        using namespace std::chrono;
        try {
            // Another file of this run may have become the same mesh meanwhile.
            if (outcome.file != nullptr && !System::getStamp(store.getMeshPath(outcome.entry.checksum))) {
                outcome.written = outcome.file->commit();
                bytes_out += outcome.written;
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

    StoreSettings options;
    ConversionSettings settings;
    MeshStore store;
    /// The options of the conversion, as the manifest has them.
    std::string words;
    Progress progress;
    std::vector<StoredFile> outcomes;
    std::uint64_t converted = 0;
    std::uint64_t unchanged = 0;
    std::uint64_t failed = 0;
    std::uint64_t added = 0;
    std::uint64_t bytes_in = 0;
    std::uint64_t bytes_out = 0;
};

std::string readAll(std::FILE* file, const std::string& name) {
    std::string text;
    char block[65536];
    while (const std::size_t size = file == nullptr ? 0 : std::fread(block, 1, sizeof block, file))
        text.append(block, size);
    if (file == nullptr || std::ferror(file) != 0)
        throw Failure(name + ": can't be read: " + PlatformUtils::getLastErrorText());
    return text;
}

/// The names in a list of files.
std::vector<std::string> readList(const std::string& path) {
    const bool standard = path == "-";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(standard ? nullptr : System::openFile(path),
                                                               &std::fclose);
    const std::string text = readAll(standard ? stdin : file.get(), path);
    const char end = text.find('\0') == std::string::npos ? '\n' : '\0';
    std::vector<std::string> names;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t stop = std::min(text.find(end, at), text.size());
        std::string_view name(text.data() + at, stop - at);
        if (end == '\n' && name.ends_with('\r')) name.remove_suffix(1);
        if (!name.empty()) names.emplace_back(name);
        at = stop + 1;
    }
    return names;
}

} // namespace

void convertIntoStore(const std::string& input, const StoreSettings& store, const ConversionSettings& settings) {
    const bool listed = !store.list.empty();
    const std::vector<std::string> inputs = listed ? readList(store.list) : std::vector<std::string>{input};
    StoreConversion conversion(store, settings);
    std::vector<std::string> files;
    for (const std::string& name : inputs) {
        if (!System::isDirectory(name)) {
            files.push_back(name);
        } else if (store.recursive) {
            const MeshSearch search = findMeshFiles(name, store.folder);
            for (const std::string& failure : search.failures)
                conversion.fail({}, failure);
            for (const std::string& file : search.files)
                files.push_back(Text::joinPaths(name, file));
        } else if (listed) {
            conversion.fail(name, name + ": is a folder, which wants --recursive");
        } else {
            throw UsageError(name + ": is a folder, which wants --recursive");
        }
    }
    if (!conversion.run(files)) throw ReportedFailure();
}
