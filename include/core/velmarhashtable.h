#pragma once

#include "velmarvector.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace Velmar {

/// The one form of hash table of the scene graph: a power-of-two `Vector` of buckets, each a `Vector` of entries in the
/// order of insertion, an entry count and a mask. Its layout is shared with the renderer library.
///
/// `Traits` gives `static std::uint64_t hash(const Key&)` and `static bool equal(const Key&, const Key&)`.
template <class Key, class Value, class Traits>
class HashTable {
  public:
    struct Entry {
        Key key;
        Value value;
    };

    HashTable() { buckets.resize(initial_buckets); }

    Value* find(const Key& key) { return const_cast<Value*>(std::as_const(*this).find(key)); }

    /// The value of `key`, or null.
    const Value* find(const Key& key) const {
        for (const Entry& entry : buckets[bucketOf(key)])
            if (Traits::equal(entry.key, key)) return &entry.value;
        return nullptr;
    }

    /// Adds an entry for a key that must be absent. The table doubles when its count exceeds 8 times its buckets.
    void insert(const Key& key, const Value& value) {
        growFor(1);
        buckets[bucketOf(key)].push_back(Entry{key, value});
        ++entry_count;
    }

    /// Gives `key` the value, in its entry or in a new one.
    void set(const Key& key, const Value& value) {
        if (Value* const known = find(key))
            *known = value;
        else
            insert(key, value);
    }

    /// Makes as many buckets as `count` more entries need.
    void reserveBuckets(std::size_t count) { growFor(count); }

    /// Makes room for entries of `keys`, which must be absent: inserting them next allocates nothing but what the
    /// copies of keys and values themselves need.
    void reserveFor(std::span<const Key> keys) {
        growFor(keys.size());
        for (const Key& key : keys) {
            const auto shared = std::count_if(keys.begin(), keys.end(),
                                              [&](const Key& other) { return bucketOf(other) == bucketOf(key); });
            buckets[bucketOf(key)].growFor(static_cast<std::size_t>(shared));
        }
    }

    /// Removes the entry of `key`, if there is one. The last entry of its bucket takes its place.
    void erase(const Key& key) {
        Vector<Entry>& bucket = buckets[bucketOf(key)];
        for (std::size_t i = 0; i < bucket.size(); ++i) {
            if (!Traits::equal(bucket[i].key, key)) continue;
            bucket[i] = Entry(bucket[bucket.size() - 1]);
            bucket.resize(bucket.size() - 1);
            --entry_count;
            return;
        }
    }

    std::uint64_t size() const { return entry_count; }
    std::uint64_t bucketCount() const { return buckets.size(); }

    /// Calls `visit(key, value)` for each entry, bucket by bucket.
    template <class Visit>
    void forEach(Visit visit) const {
        for (const Vector<Entry>& bucket : buckets)
            for (const Entry& entry : bucket)
                visit(entry.key, entry.value);
    }

  private:
    static constexpr std::uint64_t initial_buckets = 4;
    static constexpr std::uint64_t max_entries_per_bucket = 8;

    std::uint64_t bucketOf(const Key& key) const { return Traits::hash(key) & mask; }

    void growFor(std::uint64_t further_entries) {
        while (entry_count + further_entries > max_entries_per_bucket * buckets.size())
            grow();
    }

    /// Builds the larger table beside the old one, so that exhausted memory leaves all entries in place.
    void grow() {
        Vector<Vector<Entry>> grown;
        grown.resize(buckets.size() * 2);
        const std::uint64_t grown_mask = grown.size() - 1;
        for (std::size_t i = 0; i < buckets.size(); ++i) {
            // The entries of a bucket go to two.
            Vector<Entry>& first = grown[i];
            Vector<Entry>& second = grown[i + buckets.size()];
            const auto isSecond = [&](const Entry& entry) { return (Traits::hash(entry.key) & grown_mask) != i; };
            const auto second_count =
                static_cast<std::size_t>(std::count_if(buckets[i].begin(), buckets[i].end(), isSecond));
            // The capacities are those of single pushes: the renderer library reads them.
            first.growFor(buckets[i].size() - second_count);
            second.growFor(second_count);
            for (const Entry& entry : buckets[i])
                (isSecond(entry) ? second : first).push_back(entry);
        }
        buckets.swap(grown);
        mask = grown_mask;
    }

    Vector<Vector<Entry>> buckets;
    std::uint64_t entry_count = 0;
    std::uint64_t mask = initial_buckets - 1;
};

} // namespace Velmar
