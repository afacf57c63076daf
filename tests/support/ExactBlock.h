#pragma once

#include <cstring>
#include <memory>
#include <string_view>

namespace TestSupport {

/// A copy of bytes in a heap block of their exact size, so that a sanitizer sees a read of one byte too many.
class ExactBlock {
  public:
    explicit ExactBlock(std::string_view bytes) : block(new char[bytes.size()]), length(bytes.size()) {
        if (length != 0) std::memcpy(block.get(), bytes.data(), length);
    }

    const char* data() const { return block.get(); }
    std::size_t size() const { return length; }

  private:
    std::unique_ptr<char[]> block;
    std::size_t length;
};

} // namespace TestSupport
