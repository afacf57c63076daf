#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The whole of a file as one read-only range of bytes, valid as long as the object. Not for use by two threads at
/// once.
class MappedFile {
  public:
    /// Which other programs may have the file open. Systems other than Windows don't ask.
    enum class Sharing { with_readers, with_writers };

    /// Opens and maps the file `path` (UTF-8). An empty file gives null data of size 0.
    /// Throws `Velmar::Exception` with the failing step and the system's text; also for what isn't a regular file.
    explicit MappedFile(std::string_view path, Sharing sharing = Sharing::with_readers);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    const std::uint8_t* getData() const { return data; }
    std::uint64_t getSize() const { return size; }

    std::span<const std::uint8_t> getBytes() const { return {data, static_cast<std::size_t>(size)}; }
    std::string_view getText() const { return {reinterpret_cast<const char*>(data), static_cast<std::size_t>(size)}; }

  private:
    void closeAll() noexcept;

    /// System handles; null where there is none or the mapping doesn't need it.
    [[maybe_unused]] void* file_handle = nullptr;
    [[maybe_unused]] void* mapping_handle = nullptr;
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
};

static_assert(sizeof(MappedFile) == 32);
