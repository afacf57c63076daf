#pragma once

#include "velmarmemory.h"
#include "velmarstring.h"

#include <string_view>

namespace Velmar {

/// The text sink that nodes write themselves into. Nodes of the renderer library write through it too, by slot number.
/// Not for use by two threads at once.
class OStream : public SdkAllocated {
  public:
    OStream() = default;
    OStream(const OStream&) = delete;
    OStream& operator=(const OStream&) = delete;

    /// Slot 0: runs the destructor and, with bit 0 of `flags` set, frees the memory.
    virtual void* destroy(unsigned flags) = 0;
    /// Slot 1: the bytes of `text` unchanged.
    virtual void writeString(const String& text) = 0;
    /// Slot 2: the standard formatted output of a double, six significant digits.
    virtual void writeDouble(double value) = 0;

    void write(const String& text) { writeString(text); }
    void write(std::string_view text) { writeString(BorrowedString(text)); }
    void write(const char* text) { write(std::string_view(text)); }
    void write(double value) { writeDouble(value); }

  protected:
    ~OStream() = default;
};

} // namespace Velmar
