#include "utils/AlignedByteArray.h"

#include <cstring>

namespace Velmar {

void AlignedByteArray::resizeUninitialized(std::size_t n) {
    if (n > capacity_) {
        auto* const grown = static_cast<std::uint8_t*>(sdkAlignedMalloc(n, alignment));
        if (size_ != 0) std::memcpy(grown, e, size_);
        sdkAlignedFree(e);
        e = grown;
        capacity_ = n;
    }
    size_ = n;
}

} // namespace Velmar
