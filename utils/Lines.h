#pragma once

#include <initializer_list>
#include <string_view>

/// The few lines that the library reports while it works.
namespace Velmar {

enum class LineStream { output, error };

/// Takes a line, without its end.
using LineSink = void (*)(LineStream stream, std::string_view line);

/// Reports a line made of `pieces`: to the sink, if there is one, or by `printToStream`. Without a sink it needs no
/// memory.
void printLine(LineStream stream, std::initializer_list<std::string_view> pieces);

/// Writes the line and a flushing end of line to the standard output or standard error stream.
void printToStream(LineStream stream, std::initializer_list<std::string_view> pieces);

/// From now on `sink` takes all lines; null for none. Not to be changed while another thread reports.
void setLineSink(LineSink sink);

} // namespace Velmar
