#include "utils/BinaryStreams.h"

#include "velmarexceptions.h"

#include <bit>
#include <cstring>
#include <new>

void OutStream::writeString(const std::string& s) {
    writeUInt32(static_cast<std::uint32_t>(s.size()));
    if (!s.empty()) writeData(s.data(), s.size());
}

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
