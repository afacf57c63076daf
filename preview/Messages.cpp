#include "preview/Messages.h"

#include <cstdio>
#include <mutex>
#include <set>

namespace Preview {

void report(const std::string& text) noexcept {
    try {
        static std::mutex mutex;
        static std::set<std::string> reported;
        const std::lock_guard<std::mutex> lock(mutex);
        // A scene may name any number of objects, each with a text of its own.
        constexpr std::size_t max_reports = 200;
        if (reported.size() >= max_reports || !reported.insert(text).second) return;
        std::fprintf(stderr, "velmar preview: %s\n", text.c_str());
    } catch (...) {
        std::fputs("velmar preview: out of memory\n", stderr);
    }
}

} // namespace Preview
