#pragma once

#include "Sdk.h"
#include "System.h"

/// Gathers text and appends it to the record as one line when it is destroyed.
namespace FakeSdk {

class Text {
  public:
    Text& operator<<(const char* text) {
        while (*text != 0)
            put(*text++);
        return *this;
    }
    Text& operator<<(const String& text) {
        for (uint64_t i = 0; i < text.size; ++i)
            put(text.e[i]);
        return *this;
    }
    Text& operator<<(uint64_t value) {
        char digits[20];
        int count = 0;
        do {
            digits[count++] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        while (count > 0)
            put(digits[--count]);
        return *this;
    }
    Text& operator<<(uint32_t value) { return *this << static_cast<uint64_t>(value); }
    Text& operator<<(int64_t value) {
        if (value >= 0) return *this << static_cast<uint64_t>(value);
        return *this << "-" << (uint64_t{0} - static_cast<uint64_t>(value));
    }
    Text& operator<<(int32_t value) { return *this << static_cast<int64_t>(value); }
    Text& operator<<(bool value) { return *this << (value ? "yes" : "no"); }
    /// In millionths, which is all that the numbers of the tests need.
    Text& operator<<(double value) {
        if (!(value < 1e12 && value > -1e12)) return *this << (value > 0 ? "infinite" : "-infinite");
        if (value < 0) {
            put('-');
            value = -value;
        }
        const uint64_t millionths = static_cast<uint64_t>(value * 1e6 + 0.5);
        *this << millionths / 1000000;
        uint64_t rest = millionths % 1000000;
        if (rest == 0) return *this;
        put('.');
        for (uint64_t digit = 100000; rest != 0; digit /= 10) {
            put(static_cast<char>('0' + rest / digit));
            rest %= digit;
        }
        return *this;
    }

  protected:
    static constexpr uint64_t capacity = 1024;

    void put(char byte) {
        if (size < capacity - 1) bytes[size++] = byte;
    }

    char bytes[capacity];
    uint64_t size = 0;
};

class Record : public Text {
  public:
    Record() = default;
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
    ~Record() {
        bytes[size++] = '\n';
        appendToRecord(bytes, size);
    }
};

} // namespace FakeSdk
