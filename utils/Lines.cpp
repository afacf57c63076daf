#include "utils/Lines.h"

#include <iostream>
#include <string>

namespace Velmar {

namespace {

LineSink line_sink = nullptr;

} // namespace

void printLine(LineStream stream, std::initializer_list<std::string_view> pieces) {
    if (line_sink == nullptr) return printToStream(stream, pieces);
    std::string line;
    for (const std::string_view piece : pieces)
        line += piece;
    line_sink(stream, line);
}

void printToStream(LineStream stream, std::initializer_list<std::string_view> pieces) {
    std::ostream& out = stream == LineStream::error ? std::cerr : std::cout;
    for (const std::string_view piece : pieces)
        out << piece;
    out << std::endl;
}

void setLineSink(LineSink sink) {
    line_sink = sink;
}

} // namespace Velmar
