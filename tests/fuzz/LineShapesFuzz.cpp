#include "tests/support/ExactBlock.h"
#include "utils/numbers/LineShapes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using TestSupport::ExactBlock;

/// The lines of an input, each with no more bytes after it than may be read.
std::vector<ExactBlock> linesOf(std::string_view text) {
    constexpr std::size_t max_lines = 64;
    std::vector<ExactBlock> lines;
    while (!text.empty() && lines.size() < max_lines) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        std::string line(text.substr(0, size));
        // What comes after it is the text that follows.
        if (line.size() < PlainFloats::reach) line = text.substr(0, PlainFloats::reach);
        line.resize(std::max(line.size(), PlainFloats::reach), '\n');
        lines.emplace_back(line);
        text.remove_prefix(size);
    }
    return lines;
}

void requireAgreement(PlainFloats::LineShapes& shapes, const ExactBlock& line) {
    float expected[3] = {};
    float numbers[3] = {};
    const char* end = PlainFloats::scan(line.data(), expected);
    if (end == nullptr) end = PlainFloats::scanWithExponents(line.data(), expected);
    if (shapes.scan(line.data(), numbers) != end) std::abort();
    for (std::size_t i = 0; end != nullptr && i < 3; ++i)
        if (std::bit_cast<std::uint32_t>(numbers[i]) != std::bit_cast<std::uint32_t>(expected[i])) std::abort();
    if (shapes.pass(line.data()) != PlainFloats::pass(line.data())) std::abort();
}

} // namespace

/// Lines of remembered shapes are read as others are.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // So many that shapes are remembered.
    constexpr int warm_up = 300;
    const std::vector<ExactBlock> lines = linesOf({reinterpret_cast<const char*>(data), size});
    if (lines.empty()) return 0;
    PlainFloats::LineShapes shapes;
    for (int i = 0; i < warm_up; ++i)
        requireAgreement(shapes, lines.front());
    for (int round = 0; round < 2; ++round)
        for (const ExactBlock& line : lines)
            requireAgreement(shapes, line);
    return 0;
}
