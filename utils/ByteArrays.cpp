#include "utils/ByteArrays.h"

#include "velmarbulkmemory.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Velmar {

namespace {

[[noreturn]] void throwTooLong() {
    throw std::length_error("vector<T> too long");
}

std::size_t grownCapacity(std::size_t capacity, std::size_t needed) {
    if (capacity > ByteVector::max_size - capacity / 2) return needed;
    return std::max(needed, capacity + capacity / 2);
}

} // namespace

ByteVector::~ByteVector() {
    sdkFree(first);
}

void ByteVector::reserve(std::size_t n) {
    if (n > max_size) throwTooLong();
    if (n > capacity()) reallocate(n);
}

void ByteVector::resize(std::size_t n) {
    if (n <= size()) {
        last = first + n;
        return;
    }
    const std::size_t count = n - size();
    std::memset(extendUninitialized(count), 0, count);
}

std::uint8_t* ByteVector::extendUninitialized(std::size_t count) {
    const std::size_t old_size = size();
    if (count > max_size - old_size) throwTooLong();
    if (count > capacity() - old_size) reallocate(grownCapacity(capacity(), old_size + count));
    last += count;
    return first + old_size;
}

void ByteVector::append(const void* src, std::size_t count) {
    if (count != 0) std::memcpy(extendUninitialized(count), src, count);
}

void ByteVector::reallocate(std::size_t new_capacity) {
    auto* const block = static_cast<std::uint8_t*>(bulkMalloc(new_capacity));
    const std::size_t old_size = size();
    if (old_size != 0) std::memcpy(block, first, old_size);
    sdkFree(first);
    first = block;
    last = block + old_size;
    end_of_capacity = block + new_capacity;
}

void AlignedByteArray::resizeUninitialized(std::size_t n) {
    if (n > capacity_) {
        auto* const grown = static_cast<std::uint8_t*>(bulkAlignedMalloc(n, alignment));
        if (size_ != 0) std::memcpy(grown, e, size_);
        sdkAlignedFree(e);
        e = grown;
        capacity_ = n;
    }
    size_ = n;
}

} // namespace Velmar
