#include "utils/FileUtils.h"

#include "utils/PlatformUtils.h"
#include "utils/System.h"

#include <algorithm>
#include <system_error>

namespace FileUtils {

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

} // namespace

std::string getDirectory(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? std::string() : std::string(path.substr(0, separator));
}

std::string getExtension(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? std::string() : std::string(path.substr(dot + 1));
}

std::string removeExtension(std::string_view path) {
    std::string_view rest = path.substr(0, path.size() - getExtension(path).size());
    if (rest.ends_with('.')) rest.remove_suffix(1);
    return std::string(rest);
}

std::string removeSuffix(std::string_view text, std::string_view suffix) {
    if (text.ends_with(suffix)) text.remove_suffix(suffix.size());
    return std::string(text);
}

std::string join(std::string_view dir, std::string_view path) {
    const bool has_drive = path.size() >= 2 && path[1] == ':';
    const bool begins_at_root = !path.empty() && isSeparator(path.front());
    if (dir.empty() || has_drive || begins_at_root) return std::string(path);

    std::string joined;
    joined.reserve(dir.size() + 1 + path.size());
    joined.append(dir).append(1, '\\').append(path);
    return joined;
}

std::string toBackslashes(std::string_view path) {
    std::string result(path);
    replaceChar(result, '/', '\\');
    return result;
}

void replaceChar(std::string& text, char from, char to) {
    std::replace(text.begin(), text.end(), from, to);
}

std::string trimTrailingWhitespace(std::string_view text) {
    return std::string(text.substr(0, text.find_last_not_of(" \t\n\r") + 1));
}

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.substr(text.starts_with(mark) ? mark.size() : 0);
}

std::string toLowerCase(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

bool openOutputFile(std::ofstream& file, std::string_view path, bool text_mode) {
    const std::ios_base::openmode mode = std::ios_base::out | std::ios_base::trunc;
    file.open(toSystemPath(path), text_mode ? mode : mode | std::ios_base::binary);
    return file.is_open();
}

TemporaryFile::TemporaryFile(std::string_view final_path)
    : temporary_path(std::string(final_path) + '.' + PlatformUtils::makeUniqueSuffix() + ".tmp"),
      native_path(toSystemPath(temporary_path)), native_final_path(toSystemPath(final_path)) {}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(native_path, ignored);
}

bool TemporaryFile::moveToFinalPath() noexcept {
    std::error_code error;
    std::filesystem::rename(native_path, native_final_path, error);
    return !error;
}

} // namespace FileUtils
