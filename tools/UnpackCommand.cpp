#include "import/ValidText.h"

#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/OutputFile.h"
#include "tools/SafeNames.h"
#include "tools/System.h"
#include "tools/ZipFile.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr double bytes_per_gigabyte = 1e9;

struct UnpackOptions {
    std::string input;
    std::string folder;
    bool force = false;
    bool quiet = false;
    double max_size = 16;
    std::uint64_t max_files = 100000;
};

std::string inLowerCase(std::string name) {
    FileUtils::replaceChar(name, '\\', '/');
    return FileUtils::toLowerCase(name);
}

/// The files of an archive that may be unpacked: each has a name of its own in the folder, and all are within the
/// limits.
class CheckedEntries {
  public:
    /// Throws `Failure` for the first that mayn't.
    CheckedEntries(const std::vector<ZipEntry>& entries, const UnpackOptions& options_) : options(options_) {
        for (const ZipEntry& entry : entries)
            check(entry);
        for (const std::string& name : names)
            for (std::size_t slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1))
                if (names.contains(name.substr(0, slash))) fail(name.substr(0, slash), "is a file and a folder");
        if (files.empty()) throw Failure(options.input + ": holds no files");
    }

    const std::vector<const ZipEntry*>& get() const { return files; }
    std::uint64_t getSize() const { return size; }

  private:
    [[noreturn]] void fail(const std::string& name, const std::string& fault) const {
        throw Failure(options.input + ": '" + Velmar::toValidText(name) + "' " + fault + ", so nothing is unpacked");
    }

    void check(const ZipEntry& entry) {
        std::string name = entry.name;
        // A folder. Those of files are made with these.
        const bool is_folder = name.ends_with('/') || name.ends_with('\\');
        if (is_folder) name.pop_back();
        const std::string fault = findNameFault(name);
        if (!fault.empty()) fail(entry.name, fault);
        if (entry.is_link) fail(entry.name, "is a link");
        if (is_folder) return;
        if (entry.is_encrypted) fail(entry.name, "is encrypted");
        if (entry.is_of_other_method) fail(entry.name, "is compressed by a method other than deflate");
        if (!names.insert(inLowerCase(name)).second) fail(entry.name, "is in it twice");
        const auto max_size = static_cast<std::uint64_t>(options.max_size * bytes_per_gigabyte);
        if (entry.size > max_size - size)
            throw Failure(options.input + ": its files have more than " + Text::size(max_size) +
                          ", so nothing is unpacked; --max-size allows more");
        size += entry.size;
        files.push_back(&entry);
    }

    const UnpackOptions& options;
    std::vector<const ZipEntry*> files;
    std::set<std::string> names;
    std::uint64_t size = 0;
};

/// Files that get their names when all are whole.
class UnpackedFiles {
  public:
    explicit UnpackedFiles(const UnpackOptions& options_) : options(options_) { addFolder(options.folder); }
    /// What was renamed is removed again, unless all was.
    ~UnpackedFiles() {
        if (!finished)
            for (const std::string& path : renamed)
                System::removeFile(path);
        outputs.clear();
        // Those in others first.
        while (!folders.empty())
            folders.pop_back();
    }
    UnpackedFiles(const UnpackedFiles&) = delete;
    UnpackedFiles& operator=(const UnpackedFiles&) = delete;

    void add(ZipReader& archive, const ZipEntry& entry) {
        std::string name = entry.name;
        FileUtils::replaceChar(name, '\\', '/');
        for (std::size_t slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1))
            addFolder(Text::joinPaths(options.folder, name.substr(0, slash)));
        const std::string path = Text::joinPaths(options.folder, name);
        refuseLink(path);
        const bool exists = FileUtils::fileExists(path);
        if (exists && !options.force) throw Failure(path + ": exists already; --force replaces it");
        outputs.push_back({std::make_unique<OutputFile>(path), path, exists});
        const OutputFile& output = *outputs.back().file;
        std::ofstream file;
        const auto failHere = [&] {
            throw Failure(path + ": wasn't written whole: " + PlatformUtils::getLastErrorText());
        };
        if (!FileUtils::openOutputFile(file, output.getPartialPath(), false)) failHere();
        archive.read(entry, [&](std::span<const std::uint8_t> bytes) {
            file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
            if (file.fail()) failHere();
        });
        file.close();
        if (file.fail()) failHere();
    }

    void commit() {
        for (const Output& output : outputs)
            output.file->flush();
        const Interrupts::Deferral deferral;
        for (const Output& output : outputs) {
            output.file->commit();
            if (!output.existed) renamed.push_back(output.path);
        }
        finished = true;
    }

  private:
    struct Output {
        std::unique_ptr<OutputFile> file;
        std::string path;
        bool existed;
    };

    /// A link in the folder may lead out of it.
    static void refuseLink(const std::string& path) {
        if (System::followLinks(path) != path) throw Failure(path + ": is a link, through which nothing is unpacked");
    }

    void addFolder(const std::string& path) {
        // The user's own folder may be one.
        if (path != options.folder) refuseLink(path);
        if (System::isDirectory(path)) return;
        if (FileUtils::fileExists(path)) throw Failure(path + ": isn't a folder");
        folders.push_back(std::make_unique<OutputFolder>(path));
    }

    const UnpackOptions& options;
    std::vector<std::unique_ptr<OutputFolder>> folders;
    std::vector<Output> outputs;
    std::vector<std::string> renamed;
    bool finished = false;
};

void unpack(UnpackOptions options) {
    if (options.folder.empty()) options.folder = Text::fileStem(options.input);
    while (options.folder.size() > 1 && (options.folder.ends_with('/') || options.folder.ends_with('\\')))
        options.folder.pop_back();
    Progress progress(options.quiet);
    progress.show("reading " + Text::fileName(options.input));
    ZipReader archive(options.input, options.max_files);
    const CheckedEntries entries(archive.getEntries(), options);
    UnpackedFiles files(options);
    std::uint64_t done = 0;
    for (const ZipEntry* const entry : entries.get()) {
        progress.show("unpacking " + Text::fileName(entry->name),
                      static_cast<double>(done) / static_cast<double>(entries.getSize() + 1));
        files.add(archive, *entry);
        done += entry->size;
    }
    files.commit();
    progress.clear();
    if (options.quiet) return;
    for (const ZipEntry* const entry : entries.get())
        if (entry->name.find_first_of("/\\") == std::string::npos && inLowerCase(entry->name).ends_with(".xml"))
            std::printf("%s\n", Text::printable(Text::joinPaths(options.folder, entry->name)).c_str());
    std::printf("%s: %s (%s)\n", Text::printable(options.folder).c_str(),
                Text::count(entries.get().size(), "file", "files").c_str(), Text::size(entries.getSize()).c_str());
}

} // namespace

Command addUnpackCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("unpack", "Unpacks what 'velmar pack' packed.");
    const auto options = std::make_shared<UnpackOptions>();
    app->add_option("ARCHIVE", options->input, "The zip archive.")->required();
    app->add_option("FOLDER", options->folder,
                    "Where to unpack; it is made if need be. Without it the name of the archive without its extension, "
                    "in the working directory.");
    app->add_flag("--force", options->force, "Replace existing files");
    CommandOptions::addValue(*app, "--max-size", options->max_size, "GB", "Refuse archives whose files are larger.")
        ->check(CommandOptions::inRange(0, 1e9));
    CommandOptions::addValue(*app, "--max-files", options->max_files, "N", "Refuse archives with more files.");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary or progress");
    app->footer("Nothing is written outside of FOLDER: names that lead out of it, absolute ones, drives, devices and "
                "links are refused. All files are unpacked or none. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { unpack(*options); }};
}
