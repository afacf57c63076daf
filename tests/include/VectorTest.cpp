#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace VectorTests {

using testing::HasSubstr;
using Velmar::Reference;
using Velmar::String;
using Velmar::Vector;

namespace {

constexpr std::size_t max_size = std::numeric_limits<std::size_t>::max();

/// Writes down every copy and destruction; the copy numbered `failing_copy` throws.
class Logged {
  public:
    explicit Logged(int number = 0) : id(number) {}
    Logged(const Logged& other) : id(other.id) {
        if (failing_copy == id) throw std::runtime_error("copy");
        log += "+" + std::to_string(id);
        ++alive;
    }
    Logged& operator=(const Logged&) = delete;
    ~Logged() {
        log += "-" + std::to_string(id);
        --alive;
    }

    static void reset() {
        log.clear();
        failing_copy = -1;
    }

    int id;
    static inline std::string log;
    static inline int failing_copy = -1;
    static inline int alive = 0;
};

/// 1 to `count`, without room to spare.
Vector<int> countTo(int count) {
    Vector<int> numbers;
    numbers.reserve(static_cast<std::size_t>(count));
    for (int i = 1; i <= count; ++i)
        numbers.push_back(i);
    return numbers;
}

std::vector<int> contents(const Vector<int>& numbers) {
    return std::vector<int>(numbers.begin(), numbers.end());
}

/// Memory in the form of a `Vector<int>`, as a broken module might leave it. It is never destroyed.
union Bent {
    Bent(std::uint64_t elements, std::uint64_t size, std::uint64_t capacity) : words{elements, size, capacity} {}
    ~Bent() {}

    Vector<int>& vector() { return *std::launder(reinterpret_cast<Vector<int>*>(words.data())); }

    std::array<std::uint64_t, 3> words;
};

class CountedElement : public Velmar::Destroyable<CountedElement, Velmar::ThreadSafeRefCounted> {};

} // namespace

TEST(Vector, BeginsEmptyWithoutAnArray) {
    const Vector<int> numbers;
    EXPECT_EQ(nullptr, numbers.data());
    EXPECT_EQ(0U, numbers.size());
    EXPECT_EQ(0U, numbers.capacity());
}

TEST(Vector, FieldsAreInTheirOrder) {
    Vector<int> numbers = countTo(2);
    numbers.reserve(5);
    std::array<std::uint64_t, 3> words = {};
    std::memcpy(words.data(), static_cast<const void*>(&numbers), sizeof numbers);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(numbers.data()), words[0]);
    EXPECT_EQ(2U, words[1]);
    EXPECT_EQ(5U, words[2]);
}

TEST(Vector, CapacitiesDoubleFromOne) {
    Vector<int> numbers;
    std::vector<std::size_t> capacities;
    for (int i = 0; i < 9; ++i) {
        numbers.push_back(i);
        capacities.push_back(numbers.capacity());
    }
    EXPECT_EQ((std::vector<std::size_t>{1, 2, 4, 4, 8, 8, 8, 8, 16}), capacities);
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}), contents(numbers));
}

TEST(Vector, PushingAnElementOfItsOwnSurvivesGrowth) {
    Vector<String> texts;
    texts.push_back(String("a text that is too long for the buffer"));
    for (int i = 0; i < 5; ++i)
        texts.push_back(texts[0]);
    for (const String& text : texts)
        EXPECT_EQ("a text that is too long for the buffer", text.view());
}

TEST(Vector, ReserveIsExactAndNeverShrinks) {
    Vector<int> numbers = countTo(3);
    numbers.reserve(7);
    EXPECT_EQ(7U, numbers.capacity());
    numbers.reserve(2);
    EXPECT_EQ(7U, numbers.capacity());
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(numbers));
}

TEST(Vector, ReallocationCopiesAllBeforeItDestroysAny) {
    Vector<Logged> items;
    items.reserve(2);
    items.push_back(Logged(1));
    items.push_back(Logged(2));
    Logged::reset();
    items.reserve(3);
    EXPECT_EQ("+1+2-1-2", Logged::log);
}

TEST(Vector, ACopyThatFailsDuringReallocationLeavesTheOldContents) {
    {
        Vector<Logged> items;
        items.reserve(2);
        items.push_back(Logged(1));
        items.push_back(Logged(2));
        Logged::reset();
        Logged::alive = 2;
        Logged::failing_copy = 2;
        EXPECT_THROW(items.reserve(3), std::runtime_error);
        Logged::failing_copy = -1;
        EXPECT_EQ(2, Logged::alive);
        EXPECT_EQ(2U, items.size());
        EXPECT_EQ(2U, items.capacity());
        EXPECT_EQ(2, items[1].id);
    }
    EXPECT_EQ(0, Logged::alive);
}

TEST(Vector, ReferencesKeepTheirCountsOverAReallocation) {
    const Reference<CountedElement> object = new CountedElement;
    Vector<Reference<CountedElement>> holders;
    for (int i = 1; i <= 20; ++i) {
        holders.push_back(object);
        EXPECT_EQ(1 + i, object->getRefCount());
    }
    holders.resize(5);
    EXPECT_EQ(6, object->getRefCount());
    holders.clear();
    EXPECT_EQ(1, object->getRefCount());
}

TEST(Vector, ResizeGrowsToTheLargerOfDoubleAndNeeded) {
    Vector<int> numbers = countTo(4);
    numbers.resize(5);
    EXPECT_EQ(8U, numbers.capacity());
    numbers.resize(17);
    EXPECT_EQ(17U, numbers.capacity());
    numbers.resize(3);
    EXPECT_EQ(17U, numbers.capacity());
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(numbers));
}

TEST(Vector, ResizeMakesDefaultElements) {
    Vector<int> numbers = countTo(3);
    numbers.resize(1);
    numbers.resize(3);
    EXPECT_EQ((std::vector<int>{1, 0, 0}), contents(numbers));

    struct Record {
        int one = 1;
    };
    Vector<Record> records;
    records.resize(2);
    EXPECT_EQ(1, records[1].one);

    Vector<String> texts;
    texts.resize(2);
    EXPECT_TRUE(texts[1].empty());
}

TEST(Vector, ResizeUninitializedKeepsWhatWasThere) {
    Vector<int> numbers = countTo(3);
    numbers.resizeUninitialized(4);
    EXPECT_EQ(6U, numbers.capacity());
    EXPECT_EQ(4U, numbers.size());
    EXPECT_EQ(3, numbers[2]);
}

TEST(Vector, ShrinkingDestroysTheTailInOrder) {
    Vector<Logged> items;
    items.reserve(3);
    for (const int i : {1, 2, 3})
        items.push_back(Logged(i));
    Logged::reset();
    items.resize(1);
    EXPECT_EQ("-2-3", Logged::log);
}

TEST(Vector, DestructionGoesInTheOrderOfTheIndices) {
    {
        Vector<Logged> items;
        items.reserve(3);
        for (const int i : {1, 2, 3})
            items.push_back(Logged(i));
        Logged::reset();
    }
    EXPECT_EQ("-1-2-3", Logged::log);
}

TEST(Vector, CopyAllocatesExactlyTheSize) {
    Vector<int> numbers = countTo(3);
    numbers.reserve(10);
    const Vector<int> copy(numbers);
    EXPECT_EQ(3U, copy.capacity());
    EXPECT_EQ(contents(numbers), contents(copy));
    const Vector<int> copy_of_empty{Vector<int>()};
    EXPECT_EQ(nullptr, copy_of_empty.data());
}

TEST(Vector, AssignmentKeepsAnArrayThatIsLargeEnough) {
    Vector<int> numbers = countTo(5);
    const int* const array = numbers.data();
    numbers = countTo(3);
    EXPECT_EQ(array, numbers.data());
    EXPECT_EQ(5U, numbers.capacity());
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(numbers));
    numbers = Vector<int>();
    EXPECT_EQ(0U, numbers.size());
    EXPECT_EQ(5U, numbers.capacity());
}

TEST(Vector, AssignmentAllocatesExactlyWhenItMust) {
    Vector<int> numbers = countTo(2);
    Vector<int> longer = countTo(5);
    longer.reserve(50);
    numbers = longer;
    EXPECT_EQ(5U, numbers.capacity());
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), contents(numbers));
}

TEST(Vector, AssigningItselfChangesNothing) {
    Vector<int> numbers = countTo(3);
    const int* const array = numbers.data();
    const Vector<int>& same = numbers;
    numbers = same;
    EXPECT_EQ(array, numbers.data());
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(numbers));
}

TEST(Vector, AppendEndsAtTheCapacityOfSinglePushes) {
    const std::array<int, 37> block = {};
    for (std::size_t before = 0; before < 6; ++before) {
        for (std::size_t count = 0; count <= block.size(); ++count) {
            Vector<int> pushed;
            Vector<int> appended;
            pushed.reserve(before);
            appended.reserve(before);
            for (std::size_t i = 0; i < count; ++i)
                pushed.push_back(0);
            appended.append(std::span(block).first(count));
            EXPECT_EQ(pushed.size(), appended.size());
            EXPECT_EQ(pushed.capacity(), appended.capacity());
        }
    }
}

TEST(Vector, ExhaustedMemoryLeavesTheOldContents) {
    Vector<int> numbers = countTo(3);
    for (const std::size_t n : {max_size, max_size / sizeof(int), max_size / sizeof(int) / 2}) {
        EXPECT_THROW(numbers.reserve(n), std::bad_alloc);
        EXPECT_THROW(numbers.resize(n), std::bad_alloc);
        EXPECT_THROW(numbers.resizeUninitialized(n), std::bad_alloc);
        EXPECT_THROW(numbers.growFor(n), std::bad_alloc);
        EXPECT_EQ(3U, numbers.capacity());
        EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(numbers));
    }
}

TEST(VectorDeathTest, AccessBehindTheEndIsReported) {
    Vector<int> numbers = countTo(2);
    numbers.reserve(10);
    EXPECT_DEATH(numbers[2] = 0, HasSubstr("index < size_"));
    const Vector<int> empty;
    EXPECT_DEATH(static_cast<void>(empty[0]), HasSubstr("index < size_"));
}

TEST(VectorDeathTest, ASizeAboveTheCapacityIsReported) {
    Bent bent(0, 3, 2);
    const int one = 1;
    EXPECT_DEATH(bent.vector().push_back(one), HasSubstr("capacity_ >= size_"));
    EXPECT_DEATH(bent.vector().reserve(1), HasSubstr("capacity_ >= size_"));
    EXPECT_DEATH(static_cast<void>(bent.vector()[0]), HasSubstr("capacity_ >= size_"));
    EXPECT_DEATH(bent.vector().~Vector(), HasSubstr("capacity_ >= size_"));
}

TEST(VectorDeathTest, ElementsWithoutAnArrayAreReported) {
    Bent bent(0, 1, 1);
    EXPECT_DEATH(bent.vector().reserve(1), HasSubstr("size_ > 0 ? (e != NULL) : true"));
    EXPECT_DEATH(bent.vector().~Vector(), HasSubstr("size_ > 0 ? (e != NULL) : true"));
}

} // namespace VectorTests
