#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/MeshStore.h"
#include "tools/System.h"
#include "utils/FileUtils.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

struct StoreOptions {
    std::string folder;
    bool json = false;
    bool missing_sources = false;
    bool dry_run = false;
    double older_than = 24;
};

MeshStore open(const StoreOptions& options) {
    MeshStore store(options.folder);
    store.load();
    return store;
}

// ---- list --------------------------------------------------------------------------------------------------------

void list(const StoreOptions& options) {
    const MeshStore store = open(options);
    for (const auto& [key, entry] : store.getEntries())
        printResult(options.json
                        ? toJson(entry)
                        : store.getMeshPath(entry.checksum) + "  " +
                              Text::faceCounts(entry.vertices, entry.triangles, entry.quads) + "  " + entry.source);
}

// ---- verify ------------------------------------------------------------------------------------------------------

void verify(const StoreOptions& options) {
    const MeshStore store = open(options);
    Progress progress(false);
    std::uint64_t faults = 0;
    const auto report = [&](const std::string& fault) {
        progress.clear();
        printError(fault);
        ++faults;
    };
    for (const std::string& place : store.getFaults())
        report(place + ": this line of the manifest can't be read");
    const MeshStore::Files files = store.findFiles();
    std::set<std::string> present;
    for (const std::string& path : files.meshes) {
        progress.show("[" + std::to_string(present.size() + 1) + "/" + std::to_string(files.meshes.size()) + "] " +
                          Text::fileName(path),
                      static_cast<double>(present.size()) / static_cast<double>(files.meshes.size()));
        present.insert(path);
        if (!isWholeMesh(path)) report(path + ": is damaged; remove it and convert its sources again");
    }
    for (const auto& [key, entry] : store.getEntries()) {
        const std::string path = store.getMeshPath(entry.checksum);
        if (!present.contains(path)) report(path + ": is missing; it is the mesh of " + entry.source);
    }
    progress.clear();
    printResult(Text::count(files.meshes.size(), "mesh", "meshes") + ", " +
                Text::count(store.getEntries().size(), "source", "sources") + ", " +
                Text::count(faults, "fault", "faults"));
    if (faults != 0) throw ReportedFailure();
}

// ---- prune -------------------------------------------------------------------------------------------------------

void prune(const StoreOptions& options) {
    using namespace std::chrono;
    MeshStore store = open(options);
    std::vector<const StoreEntry*> kept;
    std::set<std::string> wanted;
    for (const auto& [key, entry] : store.getEntries()) {
        if (options.missing_sources && !FileUtils::fileExists(entry.source)) continue;
        kept.push_back(&entry);
        wanted.insert(store.getMeshPath(entry.checksum));
    }
    const std::int64_t now = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
    const auto newest = now - static_cast<std::int64_t>(options.older_than * 3600e9);
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
    const auto remove = [&](const std::string& path) {
        const auto stamp = System::getStamp(path);
        if (!stamp || stamp->time > newest) return;
        printResult(path);
        ++count;
        bytes += stamp->size;
        if (!options.dry_run) System::removeFile(path);
    };
    const MeshStore::Files files = store.findFiles();
    // First the manifest: it never names a mesh that was removed.
    if (!options.dry_run) store.rewrite(kept);
    for (const std::string& path : files.meshes)
        if (!wanted.contains(path)) remove(path);
    for (const std::string& path : files.unfinished)
        remove(path);
    printResult(Text::count(count, "file", "files") + (options.dry_run ? " would be removed; " : " removed; ") +
                Text::size(bytes));
}

} // namespace

Command addStoreCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("store", "Lists, checks and cleans a store of meshes.");
    app->require_subcommand(1);
    const auto options = std::make_shared<StoreOptions>();
    const auto add = [&](const char* name, const char* description) {
        CLI::App* const part = app->add_subcommand(name, description);
        part->add_option("DIR", options->folder, "The folder of the store.")->required();
        return part;
    };
    CLI::App* const list_part = add("list", "Prints each mesh file with the file that it was converted from.");
    list_part->add_flag("--json", options->json, "Print the entries of the manifest, an object of JSON on each line");
    CLI::App* const verify_part = add(
        "verify", "Reads every mesh, compares its content with its name, and looks for the meshes of the manifest.");
    CLI::App* const prune_part = add("prune", "Removes the meshes that no source is converted to any more.");
    prune_part->add_flag("--missing-sources", options->missing_sources,
                         "Also forget sources that aren't there, as seen from this machine");
    CommandOptions::addValue(*prune_part, "--older-than", options->older_than, "HOURS",
                             "Leave what was written more recently: another process may be about to name it.")
        ->check(CommandOptions::inRange(0, 1e6));
    prune_part->add_flag("-n,--dry-run", options->dry_run, "Print what would be removed, but remove nothing");
    app->footer("'velmar convert --store DIR' fills a store. Don't prune while something is converted into it. Exit "
                "codes: 0 done, 1 failed or faults found, 2 wrong usage.");
    return {app, [=] {
                if (list_part->parsed()) list(*options);
                if (verify_part->parsed()) verify(*options);
                if (prune_part->parsed()) prune(*options);
            }};
}
