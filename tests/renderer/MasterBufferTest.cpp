#include "renderer/MasterBuffer.h"

#include "tests/renderer/FakeLibrary.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace MasterBufferTests {

using namespace Velmar;
using FakeLibrary::at;

namespace {

struct DestroyMasterBuffer {
    void operator()(MasterBuffer* buffer) const { buffer->destroy(1); }
};

/// Looks at the buffer as the renderer library does: by offset.
class MasterBuffers : public testing::Test {
  protected:
    void SetUp() override { PlatformUtils::initClock(); }

    MasterBuffer* make(bool gpu) {
        layer_names.resize(1);
        owner.reset(new MasterBuffer(size, layer_names, gpu, request));
        return owner.get();
    }

    static const float* elements(const MasterBuffer* buffer, std::size_t offset) {
        return at<const float*>(buffer, offset);
    }
    static std::uint64_t count(const MasterBuffer* buffer, std::size_t offset) {
        return at<std::uint64_t>(buffer, offset + 8);
    }

    ImageStoreSize size{56, 44, 20, 14, 4, 2};
    Vector<String> layer_names;
    RenderChannelRequest request;
    std::unique_ptr<MasterBuffer, DestroyMasterBuffer> owner;
};

constexpr std::size_t main_buffer = 352;
constexpr std::size_t second_buffer = 384;
constexpr std::size_t third_buffer = 416;

} // namespace

TEST_F(MasterBuffers, WordsThatOnlyTheLibraryKnowsHaveTheirInitialValues) {
    const MasterBuffer* const buffer = make(false);
    EXPECT_EQ(at<std::uint32_t>(buffer, 8), 0u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 12), 1024u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 16), 1u);
    for (const std::size_t offset :
         {24, 40, 56, 64, 72, 88, 112, 120, 128, 136, 144, 200, 216, 224, 1488, 1496, 1544, 1560})
        EXPECT_EQ(at<std::uint64_t>(buffer, offset), 0u) << offset;
    EXPECT_EQ(at<std::uint8_t>(buffer, 48), 0u);
    EXPECT_EQ(at<std::uint8_t>(buffer, 96), 0u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 104), 2u);
    EXPECT_EQ(at<std::uint8_t>(buffer, 208), 1u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1532), 1u);
}

TEST_F(MasterBuffers, HoldsTheSizesInPixels) {
    const MasterBuffer* const buffer = make(false);
    EXPECT_EQ(at<std::uint64_t>(buffer, 312), 56u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 320), 44u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1504), 20u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1508), 14u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1512), 56u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1516), 44u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1520), 4u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1524), 2u);
}

TEST_F(MasterBuffers, MainBufferHoldsZerosForEveryChannelOfEveryPixel) {
    request.alpha = true;
    const MasterBuffer* const buffer = make(false);
    EXPECT_EQ(at<std::uint64_t>(buffer, 328), 4u);
    ASSERT_EQ(count(buffer, main_buffer), 4u * 56 * 44);
    const float* const floats = elements(buffer, main_buffer);
    EXPECT_TRUE(std::all_of(floats, floats + 4 * 56 * 44, [](float value) { return value == 0.0f; }));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(floats) % 16, 0u);
}

TEST_F(MasterBuffers, WithoutGpuTheSecondBufferIsEmpty) {
    request.progressive = true;
    const MasterBuffer* const buffer = make(false);
    EXPECT_EQ(elements(buffer, second_buffer), nullptr);
    EXPECT_EQ(count(buffer, second_buffer), 0u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 336), 0u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 344), 0u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1528), 1u);
}

TEST_F(MasterBuffers, ProgressiveGpuRenderStartsAtAQuarterOfTheResolution) {
    request.progressive = true;
    const MasterBuffer* const buffer = make(true);
    EXPECT_EQ(at<std::uint8_t>(buffer, 1536), 1u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1528), 8u);
    EXPECT_EQ(count(buffer, second_buffer), 4u * 56 * 44);
    EXPECT_EQ(at<std::uint64_t>(buffer, 336), 20u / 4 + 8);
    EXPECT_EQ(at<std::uint64_t>(buffer, 344), 4u + 8) << "14 / 4, rounded up";
}

TEST_F(MasterBuffers, GpuRenderThatIsNotProgressiveStartsAtFullResolution) {
    const MasterBuffer* const buffer = make(true);
    EXPECT_EQ(at<std::uint8_t>(buffer, 1536), 0u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1528), 1u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 336), 56u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 344), 44u);
}

TEST_F(MasterBuffers, SecondBufferHoldsZeros) {
    request.progressive = true;
    const MasterBuffer* const buffer = make(true);
    const float* const floats = elements(buffer, second_buffer);
    EXPECT_TRUE(std::all_of(floats, floats + 4 * 56 * 44, [](float value) { return value == 0.0f; }));
}

TEST_F(MasterBuffers, RegionsBringAThirdBufferAndFullResolution) {
    request.progressive = true;
    request.regions.push_back({1, 2, 3, 4});
    const MasterBuffer* const buffer = make(true);
    EXPECT_EQ(at<std::uint8_t>(buffer, 1440), 1u);
    ASSERT_EQ(count(buffer, third_buffer), count(buffer, main_buffer));
    const float* const floats = elements(buffer, third_buffer);
    EXPECT_TRUE(std::all_of(floats, floats + 4 * 56 * 44, [](float value) { return value == 0.0f; }));
    EXPECT_EQ(at<std::uint32_t>(buffer, 1528), 1u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 336), 56u);
}

TEST_F(MasterBuffers, KeepsACopyOfTheRegions) {
    request.regions.push_back({1, 2, 3, 4});
    const MasterBuffer* const buffer = make(false);
    request.regions.clear();
    ASSERT_EQ(at<std::uint64_t>(buffer, 1576), 1u);
    const auto* const region = at<const std::uint32_t*>(buffer, 1568);
    for (std::uint32_t i = 0; i < 4; ++i)
        EXPECT_EQ(region[i], i + 1);
}

TEST_F(MasterBuffers, WithoutRegionsTheThirdBufferIsEmpty) {
    const MasterBuffer* const buffer = make(false);
    EXPECT_EQ(at<std::uint8_t>(buffer, 1440), 0u);
    EXPECT_EQ(count(buffer, third_buffer), 0u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 1576), 0u);
}

TEST_F(MasterBuffers, AllBuffersShareTheAllocatorAtTheEnd) {
    const MasterBuffer* const buffer = make(false);
    auto* const allocator = at<quorl::Allocator*>(buffer, 1592);
    ASSERT_NE(allocator, nullptr);
    EXPECT_EQ(allocator->getRefCount(), 4);
    for (const std::size_t offset : {main_buffer, second_buffer, third_buffer})
        EXPECT_EQ(at<quorl::Allocator*>(buffer, offset + 24), allocator);
}

TEST_F(MasterBuffers, NumberOfFloatsWrapsAtThirtyTwoBits) {
    size.layer_width = 0x10000;
    size.layer_height = 0x10000;
    request.alpha = true;
    const MasterBuffer* const buffer = make(false);
    EXPECT_EQ(at<std::uint64_t>(buffer, 328), 4u);
    EXPECT_EQ(at<std::uint64_t>(buffer, 312), 0x10000u);
    EXPECT_EQ(count(buffer, main_buffer), 0u);
}

TEST_F(MasterBuffers, SettingsThatWereNeverSetGiveAnEmptyStore) {
    size = {};
    request.progressive = true;
    const MasterBuffer* const buffer = make(true);
    EXPECT_EQ(count(buffer, main_buffer), 0u);
    EXPECT_EQ(at<std::uint32_t>(buffer, 1528), 1u);
}

TEST_F(MasterBuffers, NegativeSuperSampleFactorStartsAtFullResolution) {
    size.super_sample_factor = static_cast<std::uint32_t>(-1);
    request.progressive = true;
    const MasterBuffer* const buffer = make(true);
    EXPECT_EQ(at<std::uint64_t>(buffer, 336), 56u);
}

TEST_F(MasterBuffers, TellsWhenItWasBegunAndWhenItWasReady) {
    const double before = PlatformUtils::getTimeSeconds();
    const MasterBuffer* const buffer = make(false);
    const double after = PlatformUtils::getTimeSeconds();
    EXPECT_GT(before, 0.0);
    EXPECT_LE(before, at<double>(buffer, 80));
    EXPECT_LE(at<double>(buffer, 80), at<double>(buffer, 32));
    EXPECT_LE(at<double>(buffer, 32), after);
}

// That it is freed, and once, is what the sanitizers' builds of this test see.
TEST_F(MasterBuffers, ReleasesTheArrayThatTheLibraryLeftInIt) {
    MasterBuffer* const buffer = make(false);
    void* const array = sdkAlignedMalloc(64, 16);
    std::memcpy(reinterpret_cast<char*>(buffer) + 136, &array, sizeof array);
    EXPECT_EQ(at<void*>(buffer, 136), array);
}

TEST_F(MasterBuffers, SlotZeroEndsTheObject) {
    MasterBuffer* const buffer = make(false);
    auto* const allocator = at<quorl::Allocator*>(buffer, 1592);
    allocator->increment();
    auto* const operations = at<void* (*const*)(MasterBuffer*, unsigned)>(owner.release(), 0);
    EXPECT_EQ(operations[0](buffer, 1), buffer);
    EXPECT_EQ(allocator->getRefCount(), 1);
    allocator->destroy(1);
}

} // namespace MasterBufferTests
