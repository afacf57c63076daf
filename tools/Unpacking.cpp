#include "import/ValidText.h"

#include "tools/OutputFile.h"
#include "tools/SafeNames.h"
#include "tools/System.h"
#include "tools/ZipFile.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <fstream>
#include <memory>
#include <set>
#include <span>

namespace {

std::string inLowerCase(std::string name) {
    FileUtils::replaceChar(name, '\\', '/');
    return FileUtils::toLowerCase(name);
}

/// The files of an archive that may be unpacked: each has a name of its own in the folder, and all are within the
/// limits.
class CheckedEntries {
  public:
    /// Throws `Failure` for the first that mayn't.
    CheckedEntries(const std::vector<ZipEntry>& entries, const UnpackRequest& request_) : request(request_) {
        for (const ZipEntry& entry : entries)
            check(entry);
        for (const std::string& name : names) {
            const std::string folder = name + '/';
            const auto next = names.lower_bound(folder);
            if (next != names.end() && next->starts_with(folder)) fail(name, "is a file and a folder");
        }
        if (files.empty()) throw Failure(request.archive + ": holds no files");
    }

    const std::vector<const ZipEntry*>& get() const { return files; }
    std::uint64_t getSize() const { return size; }

  private:
    [[noreturn]] void fail(const std::string& name, const std::string& fault) const {
        throw Failure(request.archive + ": '" + Velmar::toValidText(name) + "' " + fault + ", so nothing is unpacked");
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
        if (entry.size > request.max_size - size)
            throw Failure(request.archive + ": its files have more than " + Text::size(request.max_size) +
                          ", so nothing is unpacked; --max-size allows more");
        size += entry.size;
        files.push_back(&entry);
    }

    const UnpackRequest& request;
    std::vector<const ZipEntry*> files;
    std::set<std::string> names;
    std::uint64_t size = 0;
};

/// Files that get their names when all are whole.
class UnpackedFiles {
  public:
    explicit UnpackedFiles(const UnpackRequest& request_) : request(request_) { addFolder(request.folder); }
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
            addFolder(Text::joinPaths(request.folder, name.substr(0, slash)));
        const std::string path = Text::joinPaths(request.folder, name);
        refuseLink(path);
        const bool exists = FileUtils::fileExists(path);
        if (exists && !request.force) throw Failure(path + ": exists already; --force replaces it");
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
        if (path != request.folder) refuseLink(path);
        if (System::isDirectory(path)) return;
        if (FileUtils::fileExists(path)) throw Failure(path + ": isn't a folder");
        folders.push_back(std::make_unique<OutputFolder>(path));
    }

    const UnpackRequest& request;
    std::vector<std::unique_ptr<OutputFolder>> folders;
    std::vector<Output> outputs;
    std::vector<std::string> renamed;
    bool finished = false;
};

} // namespace

UnpackResult unpackArchive(const UnpackRequest& request, Progress& progress) {
    progress.show("reading " + Text::fileName(request.archive));
    ZipReader archive(request.archive, request.max_files);
    const CheckedEntries entries(archive.getEntries(), request);
    UnpackedFiles files(request);
    UnpackResult result;
    for (const ZipEntry* const entry : entries.get()) {
        progress.show("unpacking " + Text::fileName(entry->name),
                      static_cast<double>(result.size) / static_cast<double>(entries.getSize() + 1));
        files.add(archive, *entry);
        result.names.push_back(entry->name);
        result.size += entry->size;
    }
    files.commit();
    return result;
}
