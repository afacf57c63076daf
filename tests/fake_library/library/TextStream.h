#pragma once

#include "Record.h"
#include "Sdk.h"

namespace FakeSdk {

/// A stream of the library's own that the host's nodes write themselves into.
class TextStream final : public OStream {
  public:
#ifdef _MSC_VER
    ~TextStream() override {}
#else
    void* destroy(unsigned) override {
        return this;
    }
#endif
    void writeText(const String& text) override {
        for (uint64_t i = 0; i < text.size; ++i)
            bytes.append(text.e[i]);
    }
    void writeNumber(double value) override {
        struct : Text {
            String take() {
                String text;
                text.assign(bytes, size);
                return text;
            }
        } number;
        number << value;
        writeText(number.take());
    }

    bool operator==(const TextStream& other) const {
        if (bytes.size != other.bytes.size) return false;
        for (uint64_t i = 0; i < bytes.size; ++i)
            if (bytes[i] != other.bytes[i]) return false;
        return true;
    }

    Vector<char> bytes;
};

} // namespace FakeSdk
