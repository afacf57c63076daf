#include "velmarhashtable.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace HashTableTests {

namespace {

struct NumberTraits {
    static std::uint64_t hash(const std::uint32_t& key) { return key; }
    static bool equal(const std::uint32_t& a, const std::uint32_t& b) { return a == b; }
};

using Table = Velmar::HashTable<std::uint32_t, int, NumberTraits>;

Table tableOf(std::uint32_t count) {
    Table table;
    for (std::uint32_t key = 0; key < count; ++key)
        table.insert(key, static_cast<int>(key) * 10);
    return table;
}

std::vector<std::uint32_t> keysInOrder(const Table& table) {
    std::vector<std::uint32_t> keys;
    table.forEach([&keys](std::uint32_t key, int) { keys.push_back(key); });
    return keys;
}

/// The capacity of the bucket at `index`, as the renderer library reads it.
std::uint64_t bucketCapacity(const Table& table, std::size_t index) {
    const char* buckets = nullptr;
    std::memcpy(&buckets, static_cast<const void*>(&table), sizeof buckets);
    std::uint64_t capacity = 0;
    std::memcpy(&capacity, buckets + 24 * index + 16, sizeof capacity);
    return capacity;
}

} // namespace

TEST(HashTable, BeginsWithFourBuckets) {
    const Table table;
    EXPECT_EQ(4U, table.bucketCount());
    EXPECT_EQ(0U, table.size());
    EXPECT_EQ(nullptr, table.find(0));
}

TEST(HashTable, ConsistsOfBucketsCountAndMask) {
    const Table table = tableOf(33);
    ASSERT_EQ(40U, sizeof table);
    std::array<std::uint64_t, 5> words = {};
    std::memcpy(words.data(), static_cast<const void*>(&table), sizeof table);
    EXPECT_EQ(8U, words[1]);
    EXPECT_EQ(8U, words[2]);
    EXPECT_EQ(33U, words[3]);
    EXPECT_EQ(7U, words[4]);
}

TEST(HashTable, DoublesWithTheThirtyThirdEntry) {
    EXPECT_EQ(4U, tableOf(32).bucketCount());
    EXPECT_EQ(8U, tableOf(33).bucketCount());
    EXPECT_EQ(8U, tableOf(64).bucketCount());
    EXPECT_EQ(16U, tableOf(65).bucketCount());
}

TEST(HashTable, FindsEveryEntryAfterGrowth) {
    Table table = tableOf(1000);
    EXPECT_EQ(1000U, table.size());
    for (std::uint32_t key = 0; key < 1000; ++key) {
        ASSERT_NE(nullptr, table.find(key));
        EXPECT_EQ(static_cast<int>(key) * 10, *table.find(key));
    }
    EXPECT_EQ(nullptr, table.find(1000));
}

TEST(HashTable, ValueIsSetForAKeyThatIsThereOrNot) {
    Table table = tableOf(32);
    table.set(7, -1);
    EXPECT_EQ(32U, table.size());
    EXPECT_EQ(4U, table.bucketCount());
    EXPECT_EQ(-1, *table.find(7));
    table.set(32, -2);
    EXPECT_EQ(33U, table.size());
    EXPECT_EQ(8U, table.bucketCount());
    EXPECT_EQ(-2, *table.find(32));
}

TEST(HashTable, ValuesCanBeChangedInPlace) {
    Table table = tableOf(3);
    *table.find(1) = 7;
    EXPECT_EQ(7, *std::as_const(table).find(1));
}

TEST(HashTable, BucketsKeepTheOrderOfInsertion) {
    Table table;
    for (const std::uint32_t key : {9U, 1U, 4U, 5U, 0U, 3U})
        table.insert(key, 0);
    EXPECT_EQ((std::vector<std::uint32_t>{4, 0, 9, 1, 5, 3}), keysInOrder(table));
}

TEST(HashTable, GrowthKeepsTheOrderWithinBuckets) {
    Table table;
    for (std::uint32_t i = 33; i > 0; --i)
        table.insert(i * 8, 0);
    std::vector<std::uint32_t> expected;
    for (std::uint32_t i = 33; i > 0; --i)
        expected.push_back(i * 8);
    EXPECT_EQ(8U, table.bucketCount());
    EXPECT_EQ(expected, keysInOrder(table));
}

TEST(HashTable, BucketsOfADoubledTableGrowAsAllVectors) {
    Table table;
    // Only multiples of 4, so that all are in the first bucket, and in the first and fifth of eight.
    for (std::uint32_t i = 0; i < 32; ++i)
        table.insert(i * 4, 0);
    EXPECT_EQ(32U, bucketCapacity(table, 0));
    EXPECT_EQ(0U, bucketCapacity(table, 1));
    table.insert(1, 0);
    ASSERT_EQ(8U, table.bucketCount());
    EXPECT_EQ(16U, bucketCapacity(table, 0));
    EXPECT_EQ(1U, bucketCapacity(table, 1));
    EXPECT_EQ(16U, bucketCapacity(table, 4));
    table.insert(9, 0);
    table.insert(17, 0);
    EXPECT_EQ(4U, bucketCapacity(table, 1));
}

TEST(HashTable, BucketsOfADoubledTableHaveTheCapacitiesOfSinglePushes) {
    Table table;
    // Three entries for the first of eight buckets, five for the fifth, and the rest for the second.
    for (const std::uint32_t key : {0U, 8U, 16U, 4U, 12U, 20U, 28U, 36U})
        table.insert(key, 0);
    for (std::uint32_t i = 0; i < 25; ++i)
        table.insert(1 + i * 8, 0);
    ASSERT_EQ(8U, table.bucketCount());
    EXPECT_EQ(4U, bucketCapacity(table, 0));
    EXPECT_EQ(8U, bucketCapacity(table, 4));
    EXPECT_EQ(32U, bucketCapacity(table, 1));
    EXPECT_EQ(0U, bucketCapacity(table, 5));
}

TEST(HashTable, TheLastEntryOfTheBucketTakesThePlaceOfAnErasedOne) {
    Table table;
    for (const std::uint32_t key : {0U, 4U, 8U, 12U, 1U})
        table.insert(key, static_cast<int>(key) * 10);
    table.erase(4);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 12, 8, 1}), keysInOrder(table));
    EXPECT_EQ(4U, table.size());
    EXPECT_EQ(nullptr, table.find(4));
    ASSERT_NE(nullptr, table.find(12));
    EXPECT_EQ(120, *table.find(12));
}

TEST(HashTable, ErasingAnAbsentKeyChangesNothing) {
    Table table = tableOf(3);
    table.erase(7);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 1, 2}), keysInOrder(table));
    EXPECT_EQ(3U, table.size());
}

} // namespace HashTableTests
