#pragma once

#include "velmarmemory.h"

#include <cstddef>
#include <cstdint>

/// A source of binary data. Numbers stand in the byte order of the machine, which is little-endian.
class InStream : public Velmar::SdkAllocated {
  public:
    InStream() = default;
    InStream(const InStream&) = delete;
    InStream& operator=(const InStream&) = delete;

    /// Slot 0: runs the destructor and, with bit 0 of `flags` set, frees the memory.
    virtual void* destroy(unsigned flags) = 0;
    /// Slot 1: the next four bytes. Throws `Velmar::Exception` when fewer are left.
    virtual std::int32_t readInt32() = 0;
    /// Slot 2: the next four bytes. Throws `Velmar::Exception` when fewer are left.
    virtual std::uint32_t readUInt32() = 0;
    /// Slot 3: copies the next `n` bytes to `dest`; 0 bytes touch nothing. Throws `Velmar::Exception` when fewer are
    /// left.
    virtual void readData(void* dest, std::size_t n) = 0;
    /// Slot 4: whether nothing is left to read.
    virtual bool endOfStream() = 0;

  protected:
    ~InStream() = default;
};
