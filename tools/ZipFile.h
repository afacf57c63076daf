#pragma once

#include "tools/Console.h"
#include "tools/OutputFile.h"
#include "utils/MappedFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// Zip archives, by minizip, and what may be unpacked of one. Names in them are UTF-8 with `/` between folders.

/// Writes an archive. Times aren't stored: the same files give the same bytes.
class ZipWriter {
  public:
    /// Throws `Failure`.
    explicit ZipWriter(OutputFile& file);
    ~ZipWriter();
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

    /// Throws `Failure`. Files that are compressed already are better stored.
    void add(const std::string& name, std::span<const std::uint8_t> content, bool compress);

    /// Ends the archive. Throws `Failure`.
    void finish();

  private:
    struct Stream;

    [[noreturn]] void fail() const;

    OutputFile& file;
    std::unique_ptr<Stream> stream;
    void* archive = nullptr;
};

/// A file or folder in an archive, as its directory has it: nothing of it is checked.
struct ZipEntry {
    std::string name;
    std::uint64_t size = 0;
    std::uint64_t compressed_size = 0;
    bool is_encrypted = false;
    /// A symbolic link of the system that made the archive.
    bool is_link = false;
    /// Neither stored nor deflated.
    bool is_of_other_method = false;
    std::uint64_t directory_offset = 0;
    std::uint64_t index = 0;
};

/// Reads an archive, which may be damaged or made to do harm.
class ZipReader {
  public:
    /// Reads the directory. Throws `Failure` when there is none or it has more than `max_entries`.
    ZipReader(std::string path, std::uint64_t max_entries);
    ~ZipReader();
    ZipReader(const ZipReader&) = delete;
    ZipReader& operator=(const ZipReader&) = delete;

    const std::vector<ZipEntry>& getEntries() const { return entries; }

    /// Calls `use` with the content of a file, piece by piece: never more than its size. Throws `Failure` when the
    /// content is damaged or has another size.
    void read(const ZipEntry& entry, const std::function<void(std::span<const std::uint8_t>)>& use);

  private:
    struct Stream;

    void readDirectory(std::uint64_t max_entries);
    [[noreturn]] void fail(const std::string& fault) const;

    std::string path;
    std::unique_ptr<Stream> stream;
    void* archive = nullptr;
    std::vector<ZipEntry> entries;
};

// ---- unpacking

/// What is asked of `unpackArchive`.
struct UnpackRequest {
    std::string archive;
    /// Made if need be. Without a separator at its end.
    std::string folder;
    /// Whether existing files are replaced.
    bool force = false;
    /// In bytes, of all files together.
    std::uint64_t max_size = 0;
    std::uint64_t max_files = 0;
};

struct UnpackResult {
    /// As the archive has them.
    std::vector<std::string> names;
    std::uint64_t size = 0;
};

/// Unpacks all files of a zip archive, which may be damaged or made to do harm, or none. Writes nothing outside of the
/// folder: names that lead out of it, absolute ones, drives, devices and links are refused. Throws `Failure`.
UnpackResult unpackArchive(const UnpackRequest& request, Progress& progress);
