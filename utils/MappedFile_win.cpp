#include "velmarexceptions.h"

#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"
#include "utils/WideText_win.h"

#include <string>
#include <windows.h>

MappedFile::MappedFile(std::string_view path) {
    // The code of the failing call comes first: closing a handle may change the system's last error. The message comes
    // last: there may be no memory for it.
    const auto fail = [this](std::string_view what) {
        const std::uint32_t code = PlatformUtils::getLastErrorCode();
        closeAll();
        throw Velmar::Exception(std::string(what) + PlatformUtils::getErrorText(code));
    };

    const std::wstring system_path = FileUtils::toSystemPath(path);
    HANDLE const file = CreateFileW(system_path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) fail("Failed to open file '" + std::string(path) + "': ");
    file_handle = file;

    LARGE_INTEGER file_size = {};
    if (!GetFileSizeEx(file_handle, &file_size)) fail("GetFileSizeEx failed: ");
    size = static_cast<std::uint64_t>(file_size.QuadPart);
    // An empty file can't be mapped.
    if (size == 0) return;

    mapping_handle = CreateFileMappingW(file_handle, nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (mapping_handle == nullptr) fail("CreateFileMapping failed: ");

    data =
        static_cast<const std::uint8_t*>(MapViewOfFile(mapping_handle, FILE_MAP_READ, 0, 0, static_cast<SIZE_T>(size)));
    if (data == nullptr) fail("MapViewOfFile failed: ");
}

MappedFile::~MappedFile() {
    closeAll();
}

void MappedFile::closeAll() noexcept {
    if (data != nullptr) UnmapViewOfFile(data);
    if (mapping_handle != nullptr) CloseHandle(mapping_handle);
    if (file_handle != nullptr) CloseHandle(file_handle);
}
