#include "tests/support/ReferenceFloat.h"
#include "utils/Parser.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void requireAgreement(std::string_view text) {
    const TestSupport::ReferenceFloat expected = TestSupport::readReferenceFloat(text);
    Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    float value = 0;
    const bool parsed = parser.parseFloat(value);
    const bool same_value = std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(expected.value);
    if (parsed != expected.parsed || parser.pos != expected.consumed || !same_value) std::abort();
}

} // namespace

/// `parseFloat` gives the value and the cursor of the reference, at the end of a buffer and with more text after it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    requireAgreement(text);
    requireAgreement(std::string(text) + std::string(FloatScanner::reach, ' '));
    return 0;
}
