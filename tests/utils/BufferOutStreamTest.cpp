#include "utils/BufferOutStream.h"

#include "velmarexceptions.h"

#include "tests/support/Slots.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

using TestSupport::callSlot;

namespace {

std::string bytesOf(const BufferOutStream& stream) {
    return std::string(stream.buf.data(), stream.buf.data() + stream.buf.size());
}

} // namespace

TEST(BufferOutStream, NumbersAreLittleEndian) {
    BufferOutStream stream;
    stream.writeUInt32(0x84030201U);
    stream.writeInt32(-2);
    EXPECT_EQ("\x01\x02\x03\x84\xFE\xFF\xFF\xFF", bytesOf(stream));
}

TEST(BufferOutStream, DataGoesBehindWhatIsThere) {
    BufferOutStream stream;
    stream.writeData("abc", 3);
    stream.writeData("de", 2);
    EXPECT_EQ("abcde", bytesOf(stream));
}

TEST(BufferOutStream, WritingNothingTouchesNothing) {
    BufferOutStream stream;
    stream.writeData(nullptr, 0);
    EXPECT_EQ(nullptr, stream.buf.data());
}

TEST(BufferOutStream, AnEmptyStringIsFourZeroBytes) {
    BufferOutStream stream;
    stream.writeString("");
    EXPECT_EQ(std::string(4, '\0'), bytesOf(stream));
}

TEST(BufferOutStream, AStringIsItsLengthAndItsBytes) {
    BufferOutStream stream;
    stream.writeString(std::string("a\0b", 3));
    EXPECT_EQ(std::string("\x03\0\0\0a\0b", 7), bytesOf(stream));
}

TEST(BufferOutStream, StaysInPlaceWhileThereIsRoom) {
    BufferOutStream stream;
    stream.buf.reserve(8);
    const std::uint8_t* const before = stream.buf.data();
    stream.writeData("12345", 5);
    EXPECT_EQ(before, stream.buf.data());
    EXPECT_EQ(8U, stream.buf.capacity());
}

TEST(BufferOutStream, ExhaustedMemoryIsReportedAsAFailedWrite) {
    BufferOutStream stream;
    stream.writeData("ab", 2);
    try {
        stream.writeData("", Velmar::ByteVector::max_size - 2);
        FAIL() << "nothing was thrown";
    } catch (const Velmar::Exception& failure) {
        EXPECT_EQ("Memory alloc failure while writing to buffer.", failure.getMessage());
    }
    EXPECT_EQ("ab", bytesOf(stream));
}

TEST(BufferOutStream, AnImpossibleLengthIsTheStandardLengthError) {
    BufferOutStream stream;
    EXPECT_THROW(stream.writeData("", Velmar::ByteVector::max_size + 1), std::length_error);
}

TEST(BufferOutStream, OperationsStandInTheOrderOfTheirSlots) {
    auto* const stream = new BufferOutStream;
    callSlot<void>(stream, 1, std::int32_t{1});
    callSlot<void>(stream, 2, std::uint32_t{2});
    callSlot<void>(stream, 3, static_cast<const void*>("x"), std::size_t{1});
    const std::string text = "y";
    callSlot<void>(stream, 4, &text);
    EXPECT_EQ(std::string("\x01\0\0\0\x02\0\0\0x\x01\0\0\0y", 14), bytesOf(*stream));
    EXPECT_EQ(stream, callSlot<void*>(stream, 0, 1U));
}

TEST(BufferOutStream, DestroyWithoutTheFlagKeepsTheMemory) {
    alignas(BufferOutStream) unsigned char memory[sizeof(BufferOutStream)];
    auto* const stream = new (static_cast<void*>(memory)) BufferOutStream;
    stream->writeData("abc", 3);
    EXPECT_EQ(memory, callSlot<void*>(stream, 0, 0U));
}
