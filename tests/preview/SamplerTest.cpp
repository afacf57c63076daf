#include "preview/Sampler.h"

#include <cmath>
#include <gtest/gtest.h>
#include <set>

using namespace Preview;

TEST(PreviewSampler, EachPowerOfTwoOfSamplesFillsEveryStratumOnce) {
    // 64 samples: one in each box of 64 x 1, 32 x 2, ... 1 x 64, whatever the pair of dimensions.
    for (int pair = 0; pair < 5; ++pair) {
        for (int columns = 1; columns <= 64; columns *= 2) {
            const int rows = 64 / columns;
            std::set<int> boxes;
            for (std::uint32_t sample = 0; sample < 64; ++sample) {
                Sampler sampler(3, 1234, sample);
                Vec2 point;
                for (int i = 0; i <= pair; ++i)
                    point = sampler.next2();
                boxes.insert(static_cast<int>(point.x * static_cast<float>(columns)) * rows +
                             static_cast<int>(point.y * static_cast<float>(rows)));
            }
            EXPECT_EQ(boxes.size(), 64u) << "pair " << pair << ", columns " << columns;
        }
    }
}

TEST(PreviewSampler, ARowGivesTheNumbersOfItsPixels) {
    constexpr std::uint64_t seed = 0x123456789ABCDEF0;
    for (const std::uint32_t count : {1u, 7u, SamplerRow::capacity}) {
        SamplerRow row(seed, 1000, count, 5);
        for (std::uint32_t i = 0; i < count; ++i) {
            Sampler single(seed, 1000 + i, 5);
            const Vec2 first = single.next2();
            EXPECT_EQ(row.x[i], first.x);
            EXPECT_EQ(row.y[i], first.y);
            Sampler other = row[i];
            EXPECT_EQ(other.next1(), single.next1());
            row.set(i, other);
            EXPECT_EQ(row[i].next1(), single.next1());
        }
    }
}

TEST(PreviewSampler, PixelsPairsAndSeedsAreIndependent) {
    double correlation_of_pixels = 0;
    double correlation_of_pairs = 0;
    double correlation_of_seeds = 0;
    constexpr int count = 20000;
    for (std::uint32_t pixel = 0; pixel < count; ++pixel) {
        Sampler sampler(0, pixel, 0);
        Sampler next(0, pixel + 1, 0);
        Sampler other(1, pixel, 0);
        const double here = double{sampler.next1()} - 0.5;
        correlation_of_pixels += here * (double{next.next1()} - 0.5) * 12;
        correlation_of_pairs += here * (double{sampler.next1()} - 0.5) * 12;
        correlation_of_seeds += here * (double{other.next1()} - 0.5) * 12;
    }
    EXPECT_NEAR(correlation_of_pixels / count, 0, 0.03);
    EXPECT_NEAR(correlation_of_pairs / count, 0, 0.03);
    EXPECT_NEAR(correlation_of_seeds / count, 0, 0.03);
}

TEST(PreviewSampler, SineAndCosineOfATurn) {
    constexpr double pi = 3.14159265358979323846;
    for (int i = 0; i < 10000; ++i) {
        const float x = static_cast<float>(i) / 10000;
        float sine = 0;
        float cosine = 0;
        sinCosOfTurn(x, sine, cosine);
        EXPECT_NEAR(double{sine}, std::sin(2 * pi * double{x}), 1e-7);
        EXPECT_NEAR(double{cosine}, std::cos(2 * pi * double{x}), 1e-7);
    }
}

TEST(PreviewSampler, DirectionsAroundANormalFollowTheCosine) {
    const Vec3 normal = normalised({0.3f, -0.5f, -0.8f});
    double mean = 0;
    Vec3 sum;
    constexpr int count = 4096;
    for (std::uint32_t sample = 0; sample < count; ++sample) {
        Sampler sampler(0, 0, sample);
        const Vec3 direction = sampleCosine(normal, sampler.next2());
        EXPECT_NEAR(length(direction), 1, 1e-5);
        mean += double{dot(direction, normal)};
        sum += direction * (1.0f / count);
    }
    EXPECT_NEAR(mean / count, 2.0 / 3, 0.002);
    EXPECT_NEAR(length(sum - normal * (2.0f / 3)), 0, 0.002);
}
