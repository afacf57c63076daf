#include "renderer/ImageBuffers.h"

#include "reference.h"

#include "tests/renderer/FakeLibrary.h"

#include <gtest/gtest.h>

using namespace Velmar;
using FakeLibrary::at;

// That arrays are freed, and once, is what the sanitizers' builds of these tests see.

namespace {

void put(void* object, std::size_t offset, const void* pointer) {
    std::memcpy(static_cast<char*>(object) + offset, &pointer, sizeof pointer);
}

} // namespace

TEST(FloatBuffer, HasALockAndAnEmptyDescription) {
    const Reference<FloatBuffer> buffer(new FloatBuffer);
    EXPECT_NE(at<const void*>(buffer.getPointer(), 16), nullptr);
    for (const std::size_t offset : {24, 32, 40, 48, 56})
        EXPECT_EQ(at<std::uint64_t>(buffer.getPointer(), offset), 0u) << offset;
}

TEST(FloatBuffer, FreesTheArrayThatTheLibraryLeftInIt) {
    const Reference<FloatBuffer> buffer(new FloatBuffer);
    put(buffer.getPointer(), 40, sdkMalloc(100));
    EXPECT_EQ(buffer->getRefCount(), 1);
}

TEST(UInt8Buffer, HasAnEmptyDescriptionOfThreeComponentsAndALock) {
    const Reference<UInt8Buffer> buffer(new UInt8Buffer);
    const void* const description = at<const void*>(buffer.getPointer(), 16);
    for (const std::size_t offset : {0, 8, 16, 24, 32})
        EXPECT_EQ(at<std::uint64_t>(description, offset), 0u) << offset;
    EXPECT_EQ(at<std::uint64_t>(description, 40), 3u);
    EXPECT_NE(at<const void*>(buffer.getPointer(), 24), nullptr);
}

TEST(UInt8Buffer, FreesTheArrayThatTheLibraryLeftInIt) {
    const Reference<UInt8Buffer> buffer(new UInt8Buffer);
    put(at<void*>(buffer.getPointer(), 16), 0, sdkAlignedMalloc(100, 16));
    EXPECT_EQ(buffer->getRefCount(), 1);
}
