#include "utils/Parser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

} // namespace

/// The first bytes choose the operations and the rest is the text. No operation leaves the buffer, and none that fails
/// moves the cursor.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t operations = data[0] < size ? data[0] : size - 1;
    const std::uint8_t* const text = data + 1 + operations;
    const std::size_t text_size = size - 1 - operations;

    Parser parser(reinterpret_cast<const char*>(text), static_cast<std::uint32_t>(text_size));
    for (std::size_t i = 0; i < operations && !parser.atEnd(); ++i) {
        const std::uint32_t before = parser.pos;
        Parser::Token token;
        float number = 0;
        std::int32_t integer = 0;
        bool read = false;
        switch (data[1 + i] % 8) {
        case 0:
            read = parser.parseAlpha(token);
            require(token.data == parser.text + before && token.size == parser.pos - before);
            break;
        case 1:
            read = parser.parseIdentifier(token);
            require(token.size == parser.pos - before);
            break;
        case 2:
            read = parser.parseNonBlankToken(token);
            require(token.size == parser.pos - before);
            break;
        case 3:
            read = parser.parseString("facet");
            break;
        case 4:
            read = parser.parseInt(integer);
            break;
        case 5:
            read = parser.parseFloat(number);
            break;
        case 6:
            parser.skipBlanks();
            read = parser.pos != before;
            break;
        default:
            ++parser.pos;
            read = true;
            break;
        }
        require(parser.pos <= parser.size);
        require(read == (parser.pos != before));
    }
    return 0;
}
