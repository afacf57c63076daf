#include "utils/BufferInStream.h"

#include "velmarexceptions.h"

#include "tests/support/Slots.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>

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

TEST(BufferInStream, FieldsStandInTheirOrder) {
    BufferInStream stream;
    const auto* const start = reinterpret_cast<const char*>(&stream);
    EXPECT_EQ(start + 8, reinterpret_cast<const char*>(&stream.data));
    EXPECT_EQ(start + 32, reinterpret_cast<const char*>(&stream.read_index));
}

TEST(BufferInStream, OperationsStandInTheOrderOfTheirSlots) {
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
