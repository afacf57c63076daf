#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

/// The readers take paths, so each input becomes a file, always the same one of this process.
class FuzzFile {
  public:
    explicit FuzzFile(const char* extension) {
        std::error_code error;
        // Where it is there, memory instead of a disk.
        const std::filesystem::path memory = "/dev/shm";
        const std::filesystem::path folder =
            std::filesystem::is_directory(memory, error) ? memory : std::filesystem::temp_directory_path();
        std::random_device random;
        full_path = folder / ("velmar-fuzz-" + std::to_string(random()) + "." + extension);
    }
    ~FuzzFile() {
        std::error_code ignored;
        std::filesystem::remove(full_path, ignored);
    }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    /// The path of the file, which then holds the input.
    std::string fill(const std::uint8_t* data, std::size_t size) const {
        std::ofstream file(full_path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        const std::u8string text = full_path.u8string();
        return std::string(text.begin(), text.end());
    }

  private:
    std::filesystem::path full_path;
};
