#include "bench/support/PeakMemory.h"

#include <fstream>
#include <malloc.h>
#include <stdexcept>
#include <string>

namespace BenchSupport {

namespace {

/// A line of /proc/self/status, in bytes.
std::size_t readStatus(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kib = 0;
        if (word == field + ":" && status >> kib) return kib * 1024;
    }
    throw std::runtime_error("no " + field + " in /proc/self/status");
}

} // namespace

PeakMemory::PeakMemory() {
    malloc_trim(0);
    // This resets the peak to the current use.
    std::ofstream("/proc/self/clear_refs") << "5";
    before = readStatus("VmRSS");
}

std::size_t PeakMemory::rise() const {
    const std::size_t peak = readStatus("VmHWM");
    return peak > before ? peak - before : 0;
}

std::size_t PeakMemory::present() const {
    const std::size_t now = readStatus("VmRSS");
    return now > before ? now - before : 0;
}

} // namespace BenchSupport
