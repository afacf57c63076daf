#include "utils/BinaryStreams.h"

#include "velmarexceptions.h"

#include "tests/support/Slots.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace BinaryStreamsTests {

using TestSupport::callSlot;

namespace {

void fill(BufferInStream& stream, std::string_view bytes) {
    stream.data.resizeUninitialized(bytes.size());
    if (!bytes.empty()) std::memcpy(stream.data.data(), bytes.data(), bytes.size());
}

template <class Operation>
void expectPastEnd(Operation operation) {
    try {
        operation();
        FAIL() << "nothing was thrown";
    } catch (const Velmar::Exception& failure) {
        EXPECT_EQ("Read past end of buffer.", failure.getMessage());
    }
}

} // namespace

TEST(BufferInStream, BeginsEmpty) {
    BufferInStream stream;
    EXPECT_EQ(nullptr, stream.data.data());
    EXPECT_EQ(0U, stream.data.size());
    EXPECT_EQ(0U, stream.data.capacity());
    EXPECT_EQ(0U, stream.read_index);
    EXPECT_TRUE(stream.endOfStream());
}

TEST(BufferInStream, FourBytesGiveOneNumber) {
    BufferInStream stream;
    fill(stream, "\x01\x02\x03\x84");
    EXPECT_FALSE(stream.endOfStream());
    EXPECT_EQ(0x84030201U, stream.readUInt32());
    EXPECT_TRUE(stream.endOfStream());
    expectPastEnd([&] { stream.readUInt32(); });
    EXPECT_EQ(4U, stream.read_index);
}

TEST(BufferInStream, SignedAndUnsignedReadTheSameBytes) {
    BufferInStream stream;
    fill(stream, "\xFE\xFF\xFF\xFF\xFE\xFF\xFF\xFF");
    EXPECT_EQ(-2, stream.readInt32());
    EXPECT_EQ(0xFFFFFFFEU, stream.readUInt32());
}

TEST(BufferInStream, ReadDataCopiesAndAdvances) {
    BufferInStream stream;
    fill(stream, "abcdef");
    char dest[4] = {};
    stream.readData(dest, 3);
    EXPECT_STREQ("abc", dest);
    EXPECT_EQ(3U, stream.read_index);
}

TEST(BufferInStream, AFailedReadLeavesTheIndexAndTheDestination) {
    BufferInStream stream;
    fill(stream, "abcdef");
    stream.read_index = 3;
    char dest[5] = "....";
    expectPastEnd([&] { stream.readData(dest, 4); });
    expectPastEnd([&] { stream.readInt32(); });
    EXPECT_EQ(3U, stream.read_index);
    EXPECT_STREQ("....", dest);
}

TEST(BufferInStream, ReadingNothingAtTheEndIsFine) {
    BufferInStream stream;
    stream.readData(nullptr, 0);
    fill(stream, "a");
    stream.read_index = 5;
    stream.readData(nullptr, 0);
    EXPECT_EQ(5U, stream.read_index);
}

TEST(BufferInStream, LengthsThatWouldWrapAreRefused) {
    BufferInStream stream;
    fill(stream, "abcd");
    stream.read_index = 2;
    char dest[4] = {};
    expectPastEnd([&] { stream.readData(dest, std::numeric_limits<std::size_t>::max()); });
    expectPastEnd([&] { stream.readData(dest, std::numeric_limits<std::size_t>::max() - 1); });
    stream.read_index = std::numeric_limits<std::uint64_t>::max();
    expectPastEnd([&] { stream.readData(dest, 1); });
    EXPECT_TRUE(stream.endOfStream());
}

TEST(BufferInStream, FieldsAreInTheirOrder) {
    BufferInStream stream;
    const auto* const start = reinterpret_cast<const char*>(&stream);
    EXPECT_EQ(start + 8, reinterpret_cast<const char*>(&stream.data));
    EXPECT_EQ(start + 32, reinterpret_cast<const char*>(&stream.read_index));
}

TEST(BufferInStream, OperationsAreInTheOrderOfTheirSlots) {
    auto* const stream = new BufferInStream;
    fill(*stream, std::string_view("\x05\0\0\0\x06\0\0\0xyz", 11));
    EXPECT_EQ(5, callSlot<std::int32_t>(stream, 1));
    EXPECT_EQ(6U, callSlot<std::uint32_t>(stream, 2));
    char dest[4] = {};
    callSlot<void>(stream, 3, static_cast<void*>(dest), std::size_t{3});
    EXPECT_STREQ("xyz", dest);
    EXPECT_TRUE(callSlot<bool>(stream, 4));
    EXPECT_EQ(stream, callSlot<void*>(stream, 0, 1U));
}

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

TEST(BufferOutStream, OperationsAreInTheOrderOfTheirSlots) {
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

} // namespace BinaryStreamsTests
