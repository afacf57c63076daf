#pragma once

#include "velmarmemory.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// A sink of binary data. Numbers go out in the byte order of the machine, which is little-endian.
class OutStream : public Velmar::SdkAllocated {
  public:
    OutStream() = default;
    OutStream(const OutStream&) = delete;
    OutStream& operator=(const OutStream&) = delete;

    /// Slot 0: runs the destructor and, with bit 0 of `flags` set, frees the memory.
    virtual void* destroy(unsigned flags) = 0;
    /// Slot 1: four bytes.
    virtual void writeInt32(std::int32_t x) = 0;
    /// Slot 2: four bytes.
    virtual void writeUInt32(std::uint32_t x) = 0;
    /// Slot 3: `n` bytes from `src`; 0 bytes do nothing.
    virtual void writeData(const void* src, std::size_t n) = 0;
    /// Slot 4: the low 32 bits of the length in bytes, then the bytes without a terminator.
    virtual void writeString(const std::string& s);

  protected:
    ~OutStream() = default;
};
