#include "tools/ZipFile.h"

#include "tools/Console.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <limits>
#include <minizip/unzip.h>
#include <minizip/zip.h>
#include <utility>
#include <zlib.h>

namespace {

constexpr std::uint64_t max_size_of_old_format = 0xFFFFFFFF;

/// From where a seek counts, as an offset.
std::uint64_t startOf(int origin, std::uint64_t position, std::uint64_t size) {
    return origin == ZLIB_FILEFUNC_SEEK_CUR ? position : origin == ZLIB_FILEFUNC_SEEK_END ? size : 0;
}

} // namespace

// ---- writing

/// The archive's file, which minizip writes through functions.
struct ZipWriter::Stream {
    std::ofstream file;

    static Stream& of(void* stream) { return *static_cast<Stream*>(stream); }

    static void* open(void* opaque, const void*, int) { return opaque; }
    static uLong write(void*, void* stream, const void* bytes, uLong size) {
        of(stream).file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
        return of(stream).file.good() ? size : 0;
    }
    /// Nothing is read while an archive is made.
    static uLong read(void*, void*, void*, uLong) { return 0; }
    static ZPOS64_T tell(void*, void* stream) { return static_cast<ZPOS64_T>(of(stream).file.tellp()); }
    static long seek(void*, void* stream, ZPOS64_T offset, int origin) {
        constexpr std::ios_base::seekdir directions[] = {std::ios_base::beg, std::ios_base::cur, std::ios_base::end};
        of(stream).file.seekp(static_cast<std::streamoff>(offset), directions[origin]);
        return of(stream).file.good() ? 0 : -1;
    }
    static int close(void*, void* stream) {
        of(stream).file.close();
        return of(stream).file.good() ? 0 : -1;
    }
    static int getError(void*, void* stream) { return of(stream).file.good() ? 0 : -1; }
};

ZipWriter::ZipWriter(OutputFile& file_) : file(file_), stream(std::make_unique<Stream>()) {
    if (!FileUtils::openOutputFile(stream->file, file.getPartialPath(), false)) fail();
    zlib_filefunc64_def functions = {&Stream::open, &Stream::read,  &Stream::write,    &Stream::tell,
                                     &Stream::seek, &Stream::close, &Stream::getError, stream.get()};
    archive = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
    if (archive == nullptr) fail();
}

ZipWriter::~ZipWriter() {
    if (archive != nullptr) zipClose(archive, nullptr);
}

void ZipWriter::fail() const {
    try {
        throw Failure("can't be written: " + PlatformUtils::getLastErrorText());
    } catch (...) {
        throw file.makeFailure();
    }
}

void ZipWriter::add(const std::string& name, std::span<const std::uint8_t> content, bool compress) {
    zip_fileinfo info = {};
    // The first day of the format.
    info.tmz_date.tm_year = 1980;
    info.tmz_date.tm_mday = 1;
    constexpr uLong made_by_unix = 3U << 8U;
    constexpr uLong regular_file = 0100644;
    info.external_fa = regular_file << 16U;
    constexpr uLong version = 20;
    constexpr uLong names_are_utf8 = 1U << 11U;
    // Compressed bytes may be some more.
    const bool is_large = content.size() > max_size_of_old_format / 2;
    if (zipOpenNewFileInZip4_64(archive, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                                compress ? Z_DEFLATED : 0, Z_DEFAULT_COMPRESSION, 0, -MAX_WBITS, DEF_MEM_LEVEL,
                                Z_DEFAULT_STRATEGY, nullptr, 0, made_by_unix | version, names_are_utf8,
                                is_large ? 1 : 0) != ZIP_OK)
        fail();
    while (!content.empty()) {
        const std::size_t size = std::min<std::size_t>(content.size(), std::size_t{1} << 20U);
        if (zipWriteInFileInZip(archive, content.data(), static_cast<unsigned>(size)) != ZIP_OK) fail();
        content = content.subspan(size);
    }
    if (zipCloseFileInZip(archive) != ZIP_OK) fail();
}

void ZipWriter::finish() {
    const int result = zipClose(archive, nullptr);
    archive = nullptr;
    if (result != ZIP_OK || stream->file.fail()) fail();
}

// ---- reading

/// The archive in memory, which minizip reads through functions.
struct ZipReader::Stream {
    explicit Stream(const std::string& path) : file(path) {}

    MappedFile file;
    std::uint64_t position = 0;
    /// Whether more was asked for than there is, which minizip takes for zeros unless it is an error.
    bool is_short = false;

    static Stream& of(void* stream) { return *static_cast<Stream*>(stream); }

    static void* open(void* opaque, const void*, int) { return opaque; }
    static uLong read(void*, void* stream, void* bytes, uLong size) {
        Stream& self = of(stream);
        const auto count = static_cast<uLong>(std::min<std::uint64_t>(size, self.file.getSize() - self.position));
        if (count != 0) std::memcpy(bytes, self.file.getData() + self.position, count);
        self.position += count;
        self.is_short = self.is_short || count != size;
        return count;
    }
    static uLong write(void*, void*, const void*, uLong) { return 0; }
    static ZPOS64_T tell(void*, void* stream) { return of(stream).position; }
    static long seek(void*, void* stream, ZPOS64_T offset, int origin) {
        Stream& self = of(stream);
        const std::uint64_t start = startOf(origin, self.position, self.file.getSize());
        if (offset > self.file.getSize() - start) return -1;
        self.position = start + offset;
        return 0;
    }
    static int close(void*, void*) { return 0; }
    static int getError(void*, void* stream) { return of(stream).is_short ? -1 : 0; }
};

ZipReader::ZipReader(std::string path_, std::uint64_t max_entries) : path(std::move(path_)) {
    try {
        stream = std::make_unique<Stream>(path);
    } catch (...) {
        throw makeFailureOf(path);
    }
    zlib_filefunc64_def functions = {&Stream::open, &Stream::read,  &Stream::write,    &Stream::tell,
                                     &Stream::seek, &Stream::close, &Stream::getError, stream.get()};
    archive = unzOpen2_64("", &functions);
    if (archive == nullptr) fail("is no zip archive, or isn't whole");
    try {
        readDirectory(max_entries);
    } catch (...) {
        unzClose(archive);
        throw;
    }
}

ZipReader::~ZipReader() {
    unzClose(archive);
}

void ZipReader::fail(const std::string& fault) const {
    throw Failure(path + ": " + fault);
}

void ZipReader::readDirectory(std::uint64_t max_entries) {
    unz_global_info64 global = {};
    if (unzGetGlobalInfo64(archive, &global) != UNZ_OK) fail("has no directory");
    if (global.number_entry == 0) fail("holds no files");
    if (global.number_entry > max_entries)
        fail("holds " + std::to_string(global.number_entry) + " files, and the limit is " +
             std::to_string(max_entries));
    constexpr std::size_t max_name = 65535;
    std::vector<char> name(max_name);
    int result = unzGoToFirstFile(archive);
    for (; result == UNZ_OK; result = unzGoToNextFile(archive)) {
        if (entries.size() == max_entries) fail("holds more files than its directory says");
        unz_file_info64 info = {};
        result = unzGetCurrentFileInfo64(archive, &info, name.data(), static_cast<uLong>(name.size()), nullptr, 0,
                                         nullptr, 0);
        if (result != UNZ_OK) break;
        constexpr uLong encrypted = 1U;
        constexpr uLong unix_link = 0xA000;
        constexpr uLong unix_kind = 0xF000;
        ZipEntry entry;
        entry.name.assign(name.data(), std::min<std::size_t>(info.size_filename, name.size()));
        entry.size = info.uncompressed_size;
        entry.compressed_size = info.compressed_size;
        entry.is_encrypted = (info.flag & encrypted) != 0;
        entry.is_link = ((info.external_fa >> 16U) & unix_kind) == unix_link;
        entry.is_of_other_method = info.compression_method != 0 && info.compression_method != Z_DEFLATED;
        unz64_file_pos place = {};
        result = unzGetFilePos64(archive, &place);
        if (result != UNZ_OK) break;
        entry.directory_offset = place.pos_in_zip_directory;
        entry.index = place.num_of_file;
        entries.push_back(std::move(entry));
    }
    if (result != UNZ_END_OF_LIST_OF_FILE) fail("its directory is damaged");
}

void ZipReader::read(const ZipEntry& entry, const std::function<void(std::span<const std::uint8_t>)>& use) {
    const unz64_file_pos place = {entry.directory_offset, entry.index};
    const auto failHere = [&] { fail("'" + entry.name + "' is damaged"); };
    if (unzGoToFilePos64(archive, &place) != UNZ_OK || unzOpenCurrentFile(archive) != UNZ_OK) failHere();
    std::vector<std::uint8_t> buffer(std::size_t{1} << 18U);
    std::uint64_t total = 0;
    int count = 0;
    while ((count = unzReadCurrentFile(archive, buffer.data(), static_cast<unsigned>(buffer.size()))) > 0) {
        total += static_cast<std::uint64_t>(count);
        if (total > entry.size) failHere();
        use(std::span(buffer).first(static_cast<std::size_t>(count)));
    }
    // Closing compares the checksum.
    if (unzCloseCurrentFile(archive) != UNZ_OK || count < 0 || total != entry.size) failHere();
}
