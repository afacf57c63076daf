#pragma once

#include "velmarcompiler.h"
#include "velmarmemory.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Velmar {

/// A byte string with room for 16 bytes inside and exact-fit heap storage beyond. It carries no terminating zero:
/// always pair `data` with `size`. Its layout is shared with the renderer library.
class String {
  public:
    static constexpr std::size_t BUFSIZE = 16;

    String() = default;
    /// Copies the zero-terminated `text`.
    String(const char* text) : String(std::string_view(text)) {}
    /// Copies the bytes of `text`, zero bytes included.
    explicit String(std::string_view text) {
        allocate(text.size());
        copyIn(text);
    }
    /// `count` times the byte `fill`.
    String(std::size_t count, char fill) {
        allocate(count);
        std::memset(data_, fill, count);
        size_ = count;
    }
    String(const String& other) : String(other.view()) {}
    ~String() { freeHeapBlock(); }

    /// Keeps the present storage when the new text fits in it; never shrinks.
    String& operator=(const String& other) {
        if (this == &other) return *this;
        if (other.size_ > capacity_) {
            assertThat(other.size_ > BUFSIZE, "other.size_ > BUFSIZE");
            // Allocated before the old block is freed, so that the old text is kept if out of memory.
            char* const block = static_cast<char*>(sdkMalloc(other.size_));
            freeHeapBlock();
            data_ = block;
            capacity_ = other.size_;
        }
        copyIn(other.view());
        return *this;
    }

    const char* data() const { return data_; }
    std::size_t size() const { return size_; }
    std::size_t capacity() const { return capacity_; }
    bool empty() const { return size_ == 0; }
    std::string_view view() const { return {data_, size_}; }

    bool operator==(const String& other) const {
        return size_ == other.size_ && (size_ == 0 || std::memcmp(data_, other.data_, size_) == 0);
    }

    friend String operator+(const String& first, const String& second) {
        String sum;
        sum.allocate(first.size_ + second.size_);
        sum.copyIn(first.view());
        sum.append(second.view());
        return sum;
    }

  private:
    friend class BorrowedString;

    /// Only for a fresh object, whose storage is the inline buffer.
    void allocate(std::size_t needed) {
        if (needed <= BUFSIZE) return;
        data_ = static_cast<char*>(sdkMalloc(needed));
        capacity_ = needed;
    }

    void copyIn(std::string_view text) {
        if (!text.empty()) std::memcpy(data_, text.data(), text.size());
        size_ = text.size();
    }

    void append(std::string_view text) {
        if (!text.empty()) std::memcpy(data_ + size_, text.data(), text.size());
        size_ += text.size();
    }

    void freeHeapBlock() {
        if (capacity_ > BUFSIZE) sdkFree(data_);
    }

    char* data_ = inline_buffer_;
    char inline_buffer_[BUFSIZE];
    std::uint64_t size_ = 0;
    std::uint64_t capacity_ = BUFSIZE;
};

static_assert(sizeof(String) == 40);

/// Lends bytes as a `const String&` for the length of one call, without a copy on the heap.
class BorrowedString {
  public:
    explicit BorrowedString(std::string_view text) : text_() {
        if (text.size() > String::BUFSIZE) {
            text_.data_ = const_cast<char*>(text.data());
            text_.capacity_ = text.size();
            text_.size_ = text.size();
        } else {
            text_.copyIn(text);
        }
    }
    // Leaves the String undestroyed: the bytes belong to the lender.
    ~BorrowedString() {} // NOLINT(modernize-use-equals-default)
    BorrowedString(const BorrowedString&) = delete;
    BorrowedString& operator=(const BorrowedString&) = delete;

    operator const String&() const { return text_; }

  private:
    union {
        String text_;
    };
};

inline std::string toStdString(const String& text) {
    return std::string(text.data(), text.size());
}

inline String toVelmarString(const std::string& text) {
    return String(std::string_view(text));
}

} // namespace Velmar
