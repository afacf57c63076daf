#pragma once

#include "velmarthreadsaferefcounted.h"

#include "utils/AlignedByteArray.h"
#include "utils/InStream.h"

#include <cstddef>
#include <cstdint>

/// Reads from bytes in memory that it owns. To fill it: `data.resizeUninitialized(n)`, then write to `data.data()`.
/// A reader of bulk records may look at `data` directly and move `read_index` itself.
class BufferInStream final : public Velmar::Destroyable<BufferInStream, InStream> {
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
