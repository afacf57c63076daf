// Unpacking: whatever an archive is, all of its files are unpacked or none, and nothing is written outside of the
// folder. An input is an archive, or what one is made of.

#include "tests/fuzz/support/FuzzFile.h"
#include "tools/ZipFile.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// A folder in which archives are unpacked, in one of its own that is made anew for each.
class UnpackFolder {
  public:
    UnpackFolder() {
        std::error_code error;
        const fs::path memory = "/dev/shm";
        std::random_device random;
        folder = (fs::is_directory(memory, error) ? memory : fs::temp_directory_path()) /
                 ("velmar-unpack-" + std::to_string(random()));
        fs::create_directories(folder / "in");
    }
    ~UnpackFolder() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    UnpackFolder(const UnpackFolder&) = delete;
    UnpackFolder& operator=(const UnpackFolder&) = delete;

    std::string getTarget() const { return toText(folder / "in" / "out"); }

    /// Ends the program if something but the target was written.
    void check() const {
        for (const auto& [parent, child] : {std::pair(folder, "in"), std::pair(folder / "in", "out")})
            for (const fs::directory_entry& entry : fs::directory_iterator(parent))
                if (entry.path().filename() != child) fail("outside of the folder: " + toText(entry.path()));
    }
    void checkFiles(std::size_t number, std::uint64_t size) const {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder / "in" / "out")) {
            if (entry.is_symlink()) fail("a link");
            if (!entry.is_regular_file()) continue;
            --number;
            size -= entry.file_size();
        }
        if (number != 0 || size != 0) fail("other files than those that are reported");
    }
    void checkNothingIsThere() const {
        if (fs::exists(folder / "in" / "out")) fail("some files of a refused archive");
    }
    void clear() const { fs::remove_all(folder / "in" / "out"); }

  private:
    static std::string toText(const fs::path& path) {
        const std::u8string text = path.u8string();
        return std::string(text.begin(), text.end());
    }
    [[noreturn]] static void fail(const std::string& what) {
        std::fprintf(stderr, "%s\n", what.c_str());
        std::abort();
    }

    fs::path folder;
};

/// Makes an archive of stored files: names of parts that may lead out, and in some places numbers that are wrong.
class ArchiveMaker {
  public:
    explicit ArchiveMaker(std::string_view input_) : input(input_) {}

    std::string make() {
        const unsigned count = 1 + take() % 4;
        std::string entries;
        for (unsigned i = 0; i < count; ++i)
            entries += addFile();
        const std::size_t start = archive.size();
        archive += entries;
        archive += "PK\x05\x06";
        number(4, 0);
        number(2, count);
        number(2, count);
        number(4, entries.size());
        number(4, start);
        number(2, 0);
        return std::move(archive);
    }

  private:
    unsigned take() {
        if (input.empty()) return 0;
        const auto byte = static_cast<unsigned char>(input.front());
        input.remove_prefix(1);
        return byte;
    }

    void number(int bytes, std::uint64_t value) { append(archive, bytes, value); }

    /// Now and then another number than the right one.
    void append(std::string& text, int bytes, std::uint64_t value) {
        if (take() % 64 == 63) value = (value & 0xFF00U) + take();
        for (int i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> (8 * i) & 0xFFU);
    }

    std::string makeName() {
        static const std::vector<std::string> parts = {"a",         "B",
                                                       "scene.xml", "..",
                                                       ".",         "C:",
                                                       "con",       "nul.txt",
                                                       "a.",        "a ",
                                                       "\xC3\xA4",  "\xFF",
                                                       "",          "b",
                                                       "c",         "d",
                                                       "e",         "/x",
                                                       "~",         "$HOME",
                                                       "a:stream",  "*",
                                                       "\n",        "~a.tmp",
                                                       "lpt1",      std::string(300, 'x')};
        std::string name;
        do
            name += parts[take() % parts.size()] + (take() % 2 == 0 ? "" : take() % 4 == 0 ? "\\" : "/");
        while (take() % 3 != 0 && name.size() < 1000);
        return name;
    }

    /// Appends the file and returns its entry of the directory.
    std::string addFile() {
        const std::string name = makeName();
        const std::size_t start = archive.size();
        // Empty, so that the checksum is right.
        std::string common;
        append(common, 2, 20);
        append(common, 2, 0);
        append(common, 2, 0);
        append(common, 4, 0);
        append(common, 4, 0);
        append(common, 4, 0);
        append(common, 4, 0);
        append(common, 2, name.size());
        append(common, 2, 0);
        archive += "PK\x03\x04" + common + name;

        constexpr std::uint64_t unix_kinds[] = {0100644, 0120777, 0040755, 0};
        std::string entry = "PK\x01\x02";
        append(entry, 2, 3U << 8U);
        entry += common;
        append(entry, 2, 0);
        append(entry, 2, 0);
        append(entry, 2, 0);
        append(entry, 4, unix_kinds[take() % 8 == 0 ? take() % 4 : 0] << 16U);
        append(entry, 4, start);
        return entry + name;
    }

    std::string_view input;
    std::string archive;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFile file("zip");
    static const UnpackFolder folder;
    std::string bytes(reinterpret_cast<const char*>(data), size);
    if (!bytes.starts_with("PK")) bytes = ArchiveMaker(bytes).make();
    UnpackRequest request;
    request.archive = file.fill(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    request.folder = folder.getTarget();
    request.max_size = 1'000'000;
    request.max_files = 1000;
    Progress progress(true);
    try {
        const UnpackResult result = unpackArchive(request, progress);
        folder.checkFiles(result.names.size(), result.size);
    } catch (const Failure&) {
        folder.checkNothingIsThere();
    }
    folder.check();
    folder.clear();
    return 0;
}
