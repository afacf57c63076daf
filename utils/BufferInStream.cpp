#include "utils/BufferInStream.h"

#include "velmarexceptions.h"

#include <bit>
#include <cstring>

std::int32_t BufferInStream::readInt32() {
    return std::bit_cast<std::int32_t>(readUInt32());
}

std::uint32_t BufferInStream::readUInt32() {
    std::uint32_t x = 0;
    readData(&x, sizeof x);
    return x;
}

void BufferInStream::readData(void* dest, std::size_t n) {
    if (n == 0) return;
    if (read_index > data.size() || n > data.size() - read_index) throw Velmar::Exception("Read past end of buffer.");
    std::memcpy(dest, data.data() + read_index, n);
    read_index += n;
}
