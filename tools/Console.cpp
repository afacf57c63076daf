#include "tools/Console.h"

#include "velmarexceptions.h"

#include "tools/System.h"
#include "utils/FileUtils.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <new>

// ---- errors ------------------------------------------------------------------------------------------------------

void printError(const std::string& message) {
    // Names come from files and disks, and a terminal obeys some characters.
    std::fprintf(stderr, "velmar: %s\n", Text::printable(message).c_str());
}

void printResult(const std::string& line) {
    std::printf("%s\n", Text::printable(line).c_str());
}

void printNote(const std::string& message) {
    std::fprintf(stderr, "velmar: note: %s\n", Text::printable(message).c_str());
}

// The library's exceptions have no common base.
std::string getCurrentMessage() {
    try {
        throw;
    } catch (const Velmar::VelmarException& e) {
        return std::string(e.getMessage().view());
    } catch (const Velmar::Exception& e) {
        return e.getMessage();
    } catch (const Velmar::SceneParserExcep& e) {
        return std::string(e.getMessage().view());
    } catch (const Velmar::SceneLoaderExcep& e) {
        return e.getMessage();
    } catch (const FileUtils::FileUtilsExcep& e) {
        return e.getMessage();
    } catch (const PlatformUtils::PlatformUtilsExcep& e) {
        return e.getMessage();
    } catch (const TransformPathExcep& e) {
        return e.getMessage();
    } catch (const NameMapExcep& e) {
        return e.getMessage();
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "an unknown error";
    }
}

Failure makeFailureOf(const std::string& path) {
    std::string message = getCurrentMessage();
    // The library writes `\\` in paths.
    const std::string inner_path = FileUtils::toBackslashes(path);
    if (const std::size_t at = message.find(inner_path); at != std::string::npos)
        message.replace(at, inner_path.size(), path);
    // The mesh readers leave this quotation open.
    const std::string opening = "Error while reading mesh '" + path + ": ";
    if (message.starts_with(opening)) message.erase(0, opening.size());
    const bool named = message.find(path) != std::string::npos;
    return Failure(named ? message : path + ": " + message);
}

// ---- progress ----------------------------------------------------------------------------------------------------

namespace {

// A longer line would wrap, and a wrapped line can't be taken back by a carriage return.
constexpr std::size_t max_text_width = 48;

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Characters, not bytes.
std::size_t getWidth(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

std::string shorten(std::string_view text) {
    std::string result(text);
    while (getWidth(result) > max_text_width) {
        while (isContinuation(result.back()))
            result.pop_back();
        result.pop_back();
    }
    return result;
}

} // namespace

Progress::Progress(bool quiet) : shown(!quiet && System::isTerminal(stderr)) {
    if (shown) ticker = std::thread(&Progress::run, this);
}

Progress::~Progress() {
    if (!shown) return;
    {
        const std::lock_guard lock(mutex);
        ended = true;
    }
    wake.notify_one();
    ticker.join();
    erase();
}

void Progress::show(std::string_view step, double done) {
    if (!shown) return;
    const std::lock_guard lock(mutex);
    fraction = done;
    text = shorten(Text::printable(step));
    start = Clock::now();
    draw();
}

void Progress::clear() {
    if (!shown) return;
    const std::lock_guard lock(mutex);
    text.clear();
    erase();
}

void Progress::interrupt(const std::function<void()>& print) {
    const std::lock_guard lock(mutex);
    if (shown) erase();
    print();
}

void Progress::erase() {
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(drawn_width), "");
    std::fflush(stderr);
    drawn_width = 0;
}

void Progress::draw() {
    if (text.empty()) return;
    const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count() / 100;
    std::string line = text + "  " + std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " s";
    line += describeRest();
    const std::size_t width = getWidth(line);
    // What the line before leaves over is blanked.
    if (width < drawn_width) line.append(drawn_width - width, ' ');
    drawn_width = width;
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
}

/// Only of long work: at first the estimate is a guess.
std::string Progress::describeRest() const {
    const double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    constexpr double long_work = 2;
    if (elapsed < long_work || fraction <= 0) return {};
    const auto percent = static_cast<int>(fraction * 100);
    const auto rest = static_cast<long>(std::ceil(elapsed * (1 - fraction) / fraction));
    return "  " + std::to_string(percent) + " %, about " + std::to_string(rest) + " s left";
}

void Progress::run() {
    std::unique_lock lock(mutex);
    while (!wake.wait_for(lock, std::chrono::milliseconds(100), [this] { return ended; }))
        draw();
}

// ---- text --------------------------------------------------------------------------------------------------------

namespace Text {

std::string count(std::uint64_t number, std::string_view one, std::string_view many) {
    return std::to_string(number) + ' ' + std::string(number == 1 ? one : many);
}

std::string faceCounts(std::uint64_t vertices, std::uint64_t triangles, std::uint64_t quads) {
    return count(vertices, "vertex", "vertices") + ", " + count(triangles, "triangle", "triangles") + ", " +
           count(quads, "quad", "quads");
}

namespace {

template <class Number>
std::string shortest(Number value) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, end.ptr};
}

} // namespace

std::string number(float value) {
    return shortest(value);
}

std::string number(double value) {
    return shortest(value);
}

std::string point(const Velmar::Vec3f& p) {
    return '(' + number(p.x) + ", " + number(p.y) + ", " + number(p.z) + ')';
}

std::string row(std::string_view name, std::string_view value) {
    constexpr std::size_t name_width = 11;
    std::string line(name);
    line.resize(std::max(name.size() + 1, name_width), ' ');
    return line.append(value);
}

std::string size(std::uint64_t bytes) {
    if (bytes < 1000) return count(bytes, "byte", "bytes");
    constexpr const char* units[] = {"KB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    // What would be written as 1000.0 is written in the next unit.
    while (value >= 999.95 && unit + 1 < std::size(units)) {
        value /= 1000;
        ++unit;
    }
    const auto tenths = static_cast<std::uint64_t>(std::lround(value * 10));
    return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + ' ' + units[unit];
}

std::string printable(std::string_view text) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F)
            result += c;
        else
            result.append("\\x").append({hex[byte >> 4U], hex[byte & 15U]});
    }
    return result;
}

std::string fileName(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string folderOf(std::string_view path) {
    return std::string(path.substr(0, path.size() - fileName(path).size()));
}

std::string joinPaths(std::string_view folder, std::string_view path) {
    const bool separated = folder.ends_with('/') || folder.ends_with('\\');
    return std::string(folder).append(separated ? "" : "/").append(path);
}

std::string fileStem(std::string_view path) {
    const std::string name = fileName(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

} // namespace Text
