#include "tools/Progress.h"

#include "tools/System.h"
#include "tools/Text.h"

#include <algorithm>
#include <cstdio>

namespace {

// A longer line would wrap, and a wrapped line can't be taken back by a carriage return.
constexpr std::size_t max_text_width = 66;

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

void Progress::show(std::string_view step) {
    if (!shown) return;
    const std::lock_guard lock(mutex);
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

void Progress::erase() {
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(drawn_width), "");
    std::fflush(stderr);
    drawn_width = 0;
}

void Progress::draw() {
    if (text.empty()) return;
    const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count() / 100;
    std::string line = text + "  " + std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " s";
    const std::size_t width = getWidth(line);
    // What the line before leaves over is blanked.
    if (width < drawn_width) line.append(drawn_width - width, ' ');
    drawn_width = width;
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
}

void Progress::run() {
    std::unique_lock lock(mutex);
    while (!wake.wait_for(lock, std::chrono::milliseconds(100), [this] { return ended; }))
        draw();
}
