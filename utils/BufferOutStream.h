#pragma once

#include "velmarthreadsaferefcounted.h"

#include "utils/ByteVector.h"
#include "utils/OutStream.h"

#include <cstddef>
#include <cstdint>

/// Writes to bytes in memory. Callers may read, reserve and resize `buf` directly.
class BufferOutStream final : public Velmar::Destroyable<BufferOutStream, OutStream> {
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
