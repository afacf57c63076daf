/// PLY files have a fast path for those of the usual form, and RPly for all others. Both must give the same.

#include "tests/support/ReaderPaths.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace TestSupport;
using Velmar::PlyFormat;
using Velmar::PlyType;

namespace {

constexpr const char* type_names[] = {"char", "uint8", "short", "uint16", "int", "uint32", "float", "double"};

struct Property {
    std::string name;
    PlyType type;
    bool is_list = false;
    PlyType length_type = PlyType::uint8;
};

struct Element {
    std::string name;
    int count;
    std::vector<Property> properties;
};

/// Writes a file of given elements with random numbers, which are mostly of the usual form, and indices of vertices.
class FileMaker {
  public:
    FileMaker(std::uint64_t seed, PlyFormat body_format, bool may_be_unusual)
        : random(seed), format(body_format), unusual(may_be_unusual) {}

    std::string file(const std::vector<Element>& elements) {
        constexpr const char* names[] = {"", "ascii", "binary_little_endian", "binary_big_endian"};
        std::string text = "ply\nformat " + std::string(names[static_cast<int>(format)]) + " 1.0\n";
        for (const Element& element : elements) {
            if (element.name == "vertex") num_vertices = static_cast<std::uint32_t>(element.count);
            text += "element " + element.name + " " + std::to_string(element.count) + "\n";
            for (const Property& property : element.properties) {
                text += "property ";
                if (property.is_list) text += "list " + nameOf(property.length_type) + " ";
                text += nameOf(property.type) + " " + property.name + "\n";
            }
        }
        text += "end_header\n";
        for (const Element& element : elements)
            for (int i = 0; i < element.count; ++i) {
                for (const Property& property : element.properties)
                    appendProperty(text, property);
                if (format == PlyFormat::ascii) endLine(text);
            }
        return text;
    }

    bool chance(int in) { return random() % static_cast<unsigned>(in) == 0; }
    int below(int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); }

  private:
    static std::string nameOf(PlyType type) { return type_names[static_cast<int>(type)]; }

    void endLine(std::string& text) {
        if (unusual && chance(20)) text.back() = chance(2) ? '\t' : '\r';
        if (chance(3))
            text.back() = '\n';
        else
            text += '\n';
    }

    void appendProperty(std::string& text, const Property& property) {
        if (!property.is_list) return appendNumber(text, property.type);
        const int length = chance(4) ? below(6) : 3;
        appendInteger(text, property.length_type, unusual && chance(100) ? -length : length);
        for (int i = 0; i < length; ++i)
            if (property.name == "vertex_indices" && !(unusual && chance(1000)))
                appendInteger(text, property.type, below(static_cast<int>(std::max(num_vertices, 1u))));
            else
                appendNumber(text, property.type);
    }

    void appendNumber(std::string& text, PlyType type) {
        if (type < PlyType::float32) return appendInteger(text, type, below(100));
        const double value = (static_cast<double>(random() % 2000001) - 1000000) / 100000;
        if (format != PlyFormat::ascii) {
            if (type == PlyType::float64) return appendBytes(text, unusual && chance(50) ? 1e300 * value : value);
            return appendBytes(text, unusual && chance(50) ? std::bit_cast<float>(static_cast<std::uint32_t>(random()))
                                                           : static_cast<float>(value));
        }
        constexpr const char* usual_forms[] = {"%.6f ", "%.6f ", "%g ", "%.9g ", "%.17g ", "%e "};
        constexpr const char* unusual_forms[] = {"%a ",    "+%g ",    "%.25f ", "%ge30 ",
                                                 "%ge40 ", "%ge-60 ", "%gf ",   "nan%.0f "};
        char number[128];
        std::snprintf(number, sizeof number, unusual && chance(500) ? unusual_forms[below(8)] : usual_forms[below(6)],
                      value);
        text += number;
        if (unusual && chance(100)) text += std::string(static_cast<std::size_t>(below(40)), chance(2) ? ' ' : '\n');
    }

    void appendInteger(std::string& text, PlyType type, std::int64_t value) {
        if (format == PlyFormat::ascii) {
            if (unusual && chance(500)) value *= 100000000;
            text += (chance(50) ? "+" : "") + std::to_string(value) + " ";
            if (unusual && chance(1000)) text.replace(text.size() - 1, 1, ".0 ");
            return;
        }
        switch (type) {
        case PlyType::int8:
        case PlyType::uint8:
            return appendBytes(text, static_cast<std::uint8_t>(value));
        case PlyType::int16:
        case PlyType::uint16:
            return appendBytes(text, static_cast<std::uint16_t>(value));
        case PlyType::float32:
            return appendBytes(text, static_cast<float>(value));
        case PlyType::float64:
            return appendBytes(text, static_cast<double>(value));
        default:
            return appendBytes(text, static_cast<std::uint32_t>(value));
        }
    }

    template <class T>
    void appendBytes(std::string& text, T value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        if (format == PlyFormat::big_endian) std::reverse(std::begin(bytes), std::end(bytes));
        text.append(bytes, sizeof bytes);
    }

    std::mt19937_64 random;
    PlyFormat format;
    bool unusual;
    std::uint32_t num_vertices = 0;
};

const std::vector<Property> position = {{"x", PlyType::float32}, {"y", PlyType::float32}, {"z", PlyType::float32}};
const Property index_list = {"vertex_indices", PlyType::int32, true};

constexpr PlyFormat all_formats[] = {PlyFormat::ascii, PlyFormat::little_endian, PlyFormat::big_endian};

std::vector<Property> joined(std::vector<Property> a, const std::vector<Property>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

PlainPly resultOf(const std::vector<Element>& elements, PlyFormat format) {
    return comparePlyPaths(FileMaker(1, format, false).file(elements), 0.75f);
}

std::vector<Property> randomProperties(FileMaker& random) {
    std::vector<Property> properties;
    for (int i = random.below(4); i > 0; --i)
        properties.push_back({"p", static_cast<PlyType>(random.below(8)), random.chance(4),
                              static_cast<PlyType>(random.below(random.chance(20) ? 8 : 6))});
    return properties;
}

/// Of the usual form for the most part.
std::vector<Element> randomElements(FileMaker& random) {
    std::vector<Property> vertex;
    for (const char* axis : {"x", "y", "z"}) {
        if (random.chance(5)) vertex.push_back({"n", static_cast<PlyType>(random.below(8))});
        vertex.push_back({axis, random.chance(3) ? PlyType::float64 : PlyType::float32});
    }
    if (random.chance(20)) std::swap(vertex.front(), vertex.back());
    const Property list = {"vertex_indices", static_cast<PlyType>(random.chance(3) ? random.below(8) : 4), true,
                           static_cast<PlyType>(random.chance(3) ? random.below(6) : 1)};
    std::vector<Element> elements = {
        {"vertex", 1 + random.below(100), joined(vertex, random.chance(2) ? randomProperties(random) : position)},
        {"face", random.below(100), {list}}};
    if (random.chance(3)) elements[1].properties = joined(randomProperties(random), {list});
    if (random.chance(3)) elements[1].properties = joined(elements[1].properties, randomProperties(random));
    for (int i = random.below(3); i > 0; --i)
        elements.insert(elements.begin() + random.below(3), {"other", random.below(5), randomProperties(random)});
    if (random.chance(20)) std::swap(elements.front(), elements.back());
    return elements;
}

} // namespace

TEST(PlainPly, TakesTheFilesOfMostPrograms) {
    const std::vector<Property> normal = {{"nx", PlyType::float32}, {"ny", PlyType::float32}, {"nz", PlyType::float32}};
    const std::vector<Property> colour = {{"red", PlyType::uint8}, {"green", PlyType::uint8}, {"blue", PlyType::uint8}};
    const Property uvs = {"texcoord", PlyType::float32, true};
    for (const PlyFormat format : all_formats) {
        EXPECT_EQ(resultOf({{"vertex", 50, position}, {"face", 90, {index_list}}}, format), PlainPly::same_as_rply);
        EXPECT_EQ(resultOf({{"vertex", 50, joined(position, normal)},
                            {"face", 90, joined({index_list}, joined(colour, {uvs}))}},
                           format),
                  PlainPly::same_as_rply);
        EXPECT_EQ(resultOf({{"camera", 1, normal},
                            {"vertex", 50, joined(colour, joined(position, colour))},
                            {"edge", 7, colour},
                            {"face", 90, joined(colour, {index_list})},
                            {"strip", 2, {uvs}}},
                           format),
                  PlainPly::same_as_rply);
        EXPECT_EQ(resultOf({{"vertex", 50, position}}, format), PlainPly::same_as_rply);
    }
}

TEST(PlainPly, TakesCoordinatesOfBothTypesAndIndicesOfAllIntegerTypes) {
    for (const PlyFormat format : all_formats)
        for (int type = 0; type < 6; ++type)
            for (int length_type = 0; length_type < 6; ++length_type) {
                const auto coordinate = [type](int axis) {
                    return (type >> axis & 1) != 0 ? PlyType::float64 : PlyType::float32;
                };
                EXPECT_EQ(resultOf({{"vertex", 50, {{"x", coordinate(0)}, {"y", coordinate(1)}, {"z", coordinate(2)}}},
                                    {"face",
                                     90,
                                     {{"vertex_indices", static_cast<PlyType>(type), true,
                                       static_cast<PlyType>(length_type)}}}},
                                   format),
                          PlainPly::same_as_rply);
            }
}

TEST(PlainPly, LeavesWhatIsUnusualToRPly) {
    using Properties = std::vector<Property>;
    const Properties reversed(position.rbegin(), position.rend());
    Properties integers = position;
    for (Property& property : integers)
        property.type = PlyType::int32;
    for (const PlyFormat format : all_formats) {
        for (const Properties& vertex : {reversed, integers, joined(position, {{"l", PlyType::int8, true}}),
                                         Properties(position.begin(), position.begin() + 2)})
            EXPECT_EQ(resultOf({{"vertex", 50, vertex}, {"face", 9, {index_list}}}, format), PlainPly::refused);
        EXPECT_EQ(resultOf({{"face", 1, {index_list}}, {"vertex", 50, position}}, format), PlainPly::refused);
        EXPECT_EQ(
            resultOf({{"vertex", 50, position}, {"face", 9, {{"vertex_indices", PlyType::float32, true}}}}, format),
            PlainPly::refused);
        EXPECT_EQ(resultOf({{"vertex", 5, position}, {"o", 9, {{"l", PlyType::int8, true, PlyType::float32}}}}, format),
                  PlainPly::refused);
    }
}

TEST(PlainPly, GivesWhatRPlyGivesForRandomFiles) {
    int num_taken = 0;
    constexpr int num_files = 3000;
    for (int seed = 0; seed < num_files; ++seed) {
        FileMaker random(static_cast<std::uint64_t>(seed), all_formats[seed % 3], false);
        const PlainPly result = comparePlyPaths(random.file(randomElements(random)), 0.75f);
        ASSERT_TRUE(result == PlainPly::refused || result == PlainPly::same_as_rply) << seed;
        num_taken += result == PlainPly::same_as_rply ? 1 : 0;
    }
    EXPECT_GT(num_taken, num_files / 2);
}

TEST(PlainPly, GivesWhatRPlyGivesForUnusualAndBrokenFiles) {
    for (int seed = 0; seed < 3000; ++seed) {
        FileMaker random(static_cast<std::uint64_t>(seed), all_formats[seed % 3], true);
        std::string file = random.file(randomElements(random));
        if (random.chance(3)) file.resize(file.size() - static_cast<std::size_t>(random.below(100)));
        if (random.chance(5)) file[static_cast<std::size_t>(random.below(static_cast<int>(file.size())))] = '7';
        const PlainPly result = comparePlyPaths(file, 0.75f);
        ASSERT_TRUE(result == PlainPly::refused || result == PlainPly::same_as_rply) << seed;
    }
}

TEST(PlainPly, ReadsNumbersUpToTheLastByteOfAText) {
    const std::string file =
        FileMaker(2, PlyFormat::ascii, false).file({{"vertex", 50, position}, {"face", 90, {index_list}}});
    const std::string trimmed = file.substr(0, file.find_last_not_of(" \n") + 1);
    for (const char* end : {"", "\n", " \r\n", "\n1 2 x"})
        EXPECT_EQ(comparePlyPaths(trimmed + end, 1.0f), PlainPly::same_as_rply) << end;
    // Without its last digit the last number may be another index, but without the whole it is missing.
    const std::string cut = trimmed.substr(0, trimmed.find_last_of(" \n"));
    EXPECT_EQ(comparePlyPaths(cut, 1.0f), PlainPly::refused);
}
