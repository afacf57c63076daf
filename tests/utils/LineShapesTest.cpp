#include "utils/numbers/LineShapes.h"

#include "tests/support/ExactBlock.h"
#include "tests/utils/Format.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace LineShapesTests {

using namespace TestSupport;
using PlainFloats::LineShapes;

namespace {

/// The line with no more bytes after it than may be read.
ExactBlock blockOf(const std::string& line) {
    std::string padded = line;
    padded.resize(std::max(padded.size(), PlainFloats::reach), '7');
    return ExactBlock(padded);
}

/// `shapes` reads a line as `PlainFloats` does.
testing::AssertionResult agrees(LineShapes& shapes, const std::string& line) {
    const ExactBlock block = blockOf(line);
    float expected[3] = {};
    float numbers[3] = {};
    const char* expected_end = PlainFloats::scan(block.data(), expected);
    if (expected_end == nullptr) expected_end = PlainFloats::scanWithExponents(block.data(), expected);
    const char* const end = shapes.scan(block.data(), numbers);
    if (end != expected_end) return testing::AssertionFailure() << "'" << line << "' has another end";
    if (end == nullptr) return testing::AssertionSuccess();
    for (std::size_t i = 0; i < 3; ++i)
        if (std::bit_cast<std::uint32_t>(numbers[i]) != std::bit_cast<std::uint32_t>(expected[i]))
            return testing::AssertionFailure() << "'" << line << "': " << numbers[i] << ", expected " << expected[i];
    return testing::AssertionSuccess();
}

/// Makes shapes that know that of `line`.
void learn(LineShapes& shapes, const std::string& line) {
    for (int i = 0; i < 300; ++i)
        ASSERT_TRUE(agrees(shapes, line));
}

} // namespace

TEST(LineShapes, ReadLinesOfAllShapesAsPlainFloats) {
    for (const int forms : {1, 2, 6}) {
        LineShapes shapes;
        std::mt19937_64 random(30);
        std::uniform_real_distribution<double> unit(-1, 1);
        const auto number = [&] {
            static const std::array<const char*, 6> formats = {"%.6f", "%.0f", "%.8f", "%.3f", "%.1f", "%.7f"};
            const double magnitude = std::pow(10.0, static_cast<double>(random() % static_cast<unsigned>(forms)));
            return format(formats[random() % static_cast<unsigned>(forms)], unit(random) * magnitude);
        };
        for (int i = 0; i < 20000; ++i) {
            const char* const end = random() % 8 == 0 ? "\r\n" : "\n";
            ASSERT_TRUE(agrees(shapes, number() + " " + number() + " " + number() + end));
        }
    }
}

TEST(LineShapes, ReadExponentsAsPlainFloats) {
    LineShapes shapes;
    std::mt19937_64 random(32);
    std::uniform_real_distribution<double> unit(-1, 1);
    const auto number = [&] {
        static const std::array<const char*, 5> formats = {"%.6e", "%.6e", "%.7E", "%.0e", "%.3f"};
        const double magnitude = std::pow(10.0, static_cast<double>(random() % 60) - 30);
        return format(formats[random() % formats.size()], unit(random) * (random() % 8 == 0 ? magnitude : 1.0));
    };
    for (int i = 0; i < 60000; ++i)
        ASSERT_TRUE(agrees(shapes, number() + " " + number() + " " + number() + "\n"));
}

TEST(LineShapes, RefuseExponentsWhoseResultsAreNotExact) {
    LineShapes shapes;
    learn(shapes, "1.0000000e+00 1.0e-01 0\n");
    for (const char* beyond : {"1.0000000e+30 1.0e-01 0\n", "1.0000000e+00 1.0e-22 0\n",
                               // In the middle of two floats.
                               "1.6777217e+07 1.0e-01 0\n"}) {
        const ExactBlock block = blockOf(beyond);
        float numbers[3];
        EXPECT_EQ(shapes.scan(block.data(), numbers), nullptr) << beyond;
    }
}

TEST(LineShapes, ALineWithOtherBytesInThePlacesOfAShapeIsAnother) {
    for (const std::string line : {"-0.125000 12.500000 -3.000000\n", "-1.250000e-01 1.25E+01 -3\n"}) {
        LineShapes shapes;
        learn(shapes, line);
        for (std::size_t i = 0; i < line.size(); ++i)
            for (int byte = 0; byte < 256; ++byte) {
                std::string other = line;
                other[i] = static_cast<char>(byte);
                ASSERT_TRUE(agrees(shapes, other)) << i << " " << byte;
            }
    }
}

TEST(LineShapes, WhatIsAfterTheLineDoesNotMatter) {
    LineShapes shapes;
    const std::string line = "0.125000 12.500000 -3.000000\n";
    learn(shapes, line);
    for (const char* rest : {"v -1.0 2.0 3.0\n", "\n\n\n", "  vertex -9 9 9", "-----------"})
        EXPECT_TRUE(agrees(shapes, line + rest)) << rest;
}

TEST(LineShapes, TooManyShapesAreReadAsWell) {
    LineShapes shapes;
    std::mt19937_64 random(31);
    const auto digits = [&](std::size_t count) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += static_cast<char>('0' + random() % 10);
        return text;
    };
    for (int i = 0; i < 60000; ++i) {
        std::string line;
        for (const char* separator : {" ", " ", "\n"})
            line +=
                (random() % 2 == 0 ? "-" : "") + digits(1 + random() % 7) + "." + digits(1 + random() % 8) + separator;
        ASSERT_TRUE(agrees(shapes, line));
    }
}

TEST(LineShapes, SkipWhatPlainFloatsSkip) {
    LineShapes shapes;
    const auto skip = [&shapes](const std::string& line) {
        const ExactBlock block = blockOf(line);
        const char* const end = shapes.pass(block.data());
        EXPECT_EQ(end, PlainFloats::pass(block.data())) << line;
    };
    for (int i = 0; i < 600; ++i) {
        skip("0 -1 0.5\n");
        skip("1.0e-03 0 0\n");
        skip("0,-1 0.5\n");
    }
}

} // namespace LineShapesTests
