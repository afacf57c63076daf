#include "tools/SafeNames.h"

#include "import/ValidText.h"

#include "utils/FileUtils.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::size_t max_part = 255;
constexpr std::size_t max_name = 4096;

bool isRefused(char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7F' ||
           std::string_view("<>:\"|?*/\\").find(character) != std::string_view::npos;
}

/// Windows has devices of these names in every folder, whatever their extension.
bool isDevice(std::string_view part) {
    std::string stem = FileUtils::toLowerCase(part.substr(0, part.find('.')));
    stem.resize(stem.find_last_not_of(' ') + 1);
    for (const std::string_view device : {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"})
        if (stem == device) return true;
    if (!stem.starts_with("com") && !stem.starts_with("lpt")) return false;
    const std::string_view number = std::string_view(stem).substr(3);
    for (const std::string_view superscript : {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"})
        if (number == superscript) return true;
    return number.size() == 1 && number[0] >= '0' && number[0] <= '9';
}

std::string findPartFault(std::string_view part) {
    if (part == "..") return "leads out of the folder";
    if (part.empty() || part == ".") return "has an empty part";
    if (std::any_of(part.begin(), part.end(), isRefused)) return "has a character that not all systems take";
    if (part.ends_with('.') || part.ends_with(' ')) return "has a part that ends in a dot or a blank";
    if (part.size() > max_part) return "is too long";
    if (isDevice(part)) return "is the name of a device";
    return {};
}

} // namespace

std::string findNameFault(std::string_view name) {
    if (name.empty()) return "is empty";
    if (name.size() > max_name) return "is too long";
    if (name.front() == '/' || name.front() == '\\') return "is absolute";
    if (name.size() > 1 && name[1] == ':') return "has a drive";
    if (!Velmar::isValidText(name)) return "isn't UTF-8";
    while (true) {
        const std::size_t end = name.find_first_of("/\\");
        std::string fault = findPartFault(name.substr(0, end));
        if (!fault.empty() || end == std::string_view::npos) return fault;
        name.remove_prefix(end + 1);
    }
}

std::string makeSafeName(std::string_view name) {
    std::string result = Velmar::toValidText(name);
    std::replace_if(result.begin(), result.end(), isRefused, '_');
    // Of a long name the end matters, which has the extension.
    while (result.size() > max_part / 2)
        result.erase(0, result.size() - max_part / 2);
    while (!result.empty() && (static_cast<unsigned char>(result.front()) & 0xC0U) == 0x80U)
        result.erase(0, 1);
    while (result.ends_with('.') || result.ends_with(' '))
        result.back() = '_';
    return result.empty() || isDevice(result) ? "_" + result : result;
}
