#pragma once

#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <sstream>
#include <string>

namespace TestSupport {

/// Keeps what is written to it, line feeds as they are.
class MemoryOStream : public Velmar::Destroyable<MemoryOStream, Velmar::OStream> {
  public:
    MemoryOStream() = default;
    ~MemoryOStream() = default;

    void writeString(const Velmar::String& piece) override {
        text += piece.view();
        ++calls;
    }
    void writeDouble(double value) override {
        std::ostringstream formatted;
        formatted.imbue(std::locale::classic());
        formatted << value;
        text += formatted.str();
        ++calls;
    }

    std::string text;
    int calls = 0;
};

/// What `write(stream)` puts out.
template <class Write>
std::string textOf(Write write) {
    MemoryOStream stream;
    write(static_cast<Velmar::OStream&>(stream));
    return stream.text;
}

} // namespace TestSupport
