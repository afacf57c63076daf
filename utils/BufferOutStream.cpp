#include "utils/BufferOutStream.h"

#include "velmarexceptions.h"

#include <bit>
#include <new>

void BufferOutStream::writeInt32(std::int32_t x) {
    writeUInt32(std::bit_cast<std::uint32_t>(x));
}

void BufferOutStream::writeUInt32(std::uint32_t x) {
    writeData(&x, sizeof x);
}

void BufferOutStream::writeData(const void* src, std::size_t n) {
    try {
        buf.append(src, n);
    } catch (const std::bad_alloc&) {
        throw Velmar::Exception("Memory alloc failure while writing to buffer.");
    }
}
