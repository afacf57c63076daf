#pragma once

#include "velmarmemory.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/ByteArrays.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

/// Streams of binary data. Numbers are in the byte order of the machine, which is little-endian.

/// A source of binary data.
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

/// A sink of binary data.
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

/// Reads from bytes in memory that it owns. To fill it: `data.resizeUninitialized(n)`, then write to `data.data()`.
/// A reader of bulk records may read `data` directly and move `read_index` itself.
class BufferInStream : public Velmar::Destroyable<BufferInStream, InStream> {
  public:
    BufferInStream() = default;
    ~BufferInStream() = default;

    /// All reads throw `Velmar::Exception` with "Read past end of buffer." when too little is left, and then leave
    /// `read_index` as it was.
    std::int32_t readInt32() override;
    std::uint32_t readUInt32() override;
    void readData(void* dest, std::size_t n) override;
    bool endOfStream() override { return read_index >= data.size(); }

    Velmar::AlignedByteArray data;
    /// Offset of the next byte to read.
    std::uint64_t read_index = 0;
};

static_assert(sizeof(BufferInStream) == 40);

/// Writes to bytes in memory. Callers may read, reserve and resize `buf` directly.
class BufferOutStream : public Velmar::Destroyable<BufferOutStream, OutStream> {
  public:
    BufferOutStream() = default;
    ~BufferOutStream() = default;

    /// All writes throw `Velmar::Exception` with "Memory alloc failure while writing to buffer." when memory is
    /// exhausted.
    void writeInt32(std::int32_t x) override;
    void writeUInt32(std::uint32_t x) override;
    void writeData(const void* src, std::size_t n) override;

    Velmar::ByteVector buf;
};

static_assert(sizeof(BufferOutStream) == 32);

namespace Velmar {

/// The number whose bytes are those of `value` in the other order. Masks and shifts, which compilers turn into one
/// instruction; an array of the bytes would also cost a check of the stack.
template <class T>
constexpr T reversedBytes(T value) {
    static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    if constexpr (sizeof(T) == 1) {
        return value;
    } else if constexpr (sizeof(T) == 2) {
        const auto bits = std::bit_cast<std::uint16_t>(value);
        return std::bit_cast<T>(static_cast<std::uint16_t>(bits >> 8 | bits << 8));
    } else if constexpr (sizeof(T) == 4) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        return std::bit_cast<T>(bits >> 24 | (bits >> 8 & 0xFF00) | (bits & 0xFF00) << 8 | bits << 24);
    } else {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        const std::uint64_t low = reversedBytes(static_cast<std::uint32_t>(bits));
        return std::bit_cast<T>(low << 32 | reversedBytes(static_cast<std::uint32_t>(bits >> 32)));
    }
}

} // namespace Velmar
