#pragma once

#include "utils/Parser.h"

/// Line by line through the text formats. A line end is LF, CR or CR LF.
namespace Velmar::TextLines {

/// Passes spaces and tabs alone, unlike `Parser::skipBlanks`, which continues lines.
inline void skipSpacesAndTabs(Parser& parser) {
    while (!parser.atEnd() && Parser::isBlank(parser.current()))
        ++parser.pos;
}

/// Passes everything up to and including the next line end.
inline void advancePastLineEnd(Parser& parser) {
    while (!parser.atEnd() && !Parser::isLineEnd(parser.current()))
        ++parser.pos;
    if (parser.atEnd()) return;
    const bool carriage_return = parser.current() == '\r';
    ++parser.pos;
    if (carriage_return && !parser.atEnd() && parser.current() == '\n') ++parser.pos;
}

} // namespace Velmar::TextLines
