#pragma once

#include "velmarmemory.h"
#include "velmarvector.h"

#include "utils/Parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Velmar {

/// Appends to a list that a text fills record by record. While it lives the list's size means nothing: it covers room
/// for records to come, which costs no memory before it is written.
template <class T>
class RecordAppender {
  public:
    explicit RecordAppender(Vector<T>& filled)
        : records(filled), first(filled.data()), count(filled.size()), room(count),
          initial_capacity(filled.capacity()) {}
    ~RecordAppender() { settle(); }
    RecordAppender(const RecordAppender&) = delete;
    RecordAppender& operator=(const RecordAppender&) = delete;

    /// A record for the caller to write. `cursor` tells how far the text is read.
    T& append(const Parser& cursor) {
        if (count == room) [[unlikely]]
            makeRoom(cursor);
        return first[count++];
    }

    void append(const T& record, const Parser& cursor) { append(cursor) = record; }

    /// As the other, where nothing tells how many are to come.
    T& append() {
        if (count == room) [[unlikely]]
            growTo(doubledCount());
        return first[count++];
    }

    /// Reserves memory for `n` records in all, if there is that much: a hint, so not having it is no failure.
    void tryReserve(std::size_t n) noexcept {
        if (n <= room) return;
        try {
            growTo(n);
        } catch (const BadAlloc&) {
            // `append` grows as it must.
        }
    }
    void tryReserve(std::size_t n, const Parser& cursor) noexcept {
        startCounting(cursor);
        tryReserve(n);
    }

    /// Gives the list its true size, and back the memory that was only a forecast: the capacity becomes what single
    /// appends would have made of it. Nothing may be appended afterwards.
    void settle() noexcept {
        records.resizeUninitialized(count);
        room = count;
        if (records.capacity() == steppedCapacity(count)) return;
        try {
            Vector<T> smaller;
            smaller.reserve(steppedCapacity(count));
            smaller.append(records);
            records.swap(smaller);
        } catch (const BadAlloc&) {
            // It stays as large as it is.
        }
    }

    T* data() { return first; }
    const T* data() const { return first; }
    std::size_t size() const { return count; }

  private:
    /// As much as the rest of the text holds if it goes on as it did from the first record on, so that a large list is
    /// hardly ever copied; but at first no more than a few times the present size.
    void makeRoom(const Parser& cursor) {
        constexpr std::size_t least_to_judge_by = 1024;
        constexpr std::size_t enough_to_trust = 32768;
        startCounting(cursor);
        const std::uint64_t appended = count - first_count;
        if (appended < least_to_judge_by) return growTo(doubledCount());

        const std::uint64_t read = std::max<std::uint64_t>(cursor.pos - first_offset, 1);
        const std::uint64_t rest = cursor.size - cursor.pos;
        const std::uint64_t to_come = rest * appended / read;
        std::uint64_t forecast = count + to_come + to_come / 64 + 16;
        if (appended < enough_to_trust) forecast = std::min<std::uint64_t>(forecast, 8 * count);
        try {
            growTo(forecast);
        } catch (const BadAlloc&) {
            growTo(doubledCount());
        }
    }

    void growTo(std::size_t n) {
        const std::size_t capacity = steppedCapacity(n);
        // What is reserved is copied, so not the empty room.
        records.resizeUninitialized(count);
        records.reserve(capacity);
        records.resizeUninitialized(records.capacity());
        first = records.data();
        room = records.capacity();
    }

    /// The capacity that the list would have after `n` single appends in all.
    std::size_t steppedCapacity(std::size_t n) const {
        std::size_t capacity = initial_capacity;
        while (capacity < n)
            capacity = std::max(capacity + 1, 2 * capacity);
        return capacity;
    }

    std::size_t doubledCount() const { return std::max(2 * count, count + 16); }

    void startCounting(const Parser& cursor) {
        if (first_offset != not_started) return;
        first_offset = cursor.pos;
        first_count = count;
    }

    static constexpr std::uint32_t not_started = 0xFFFFFFFF;

    Vector<T>& records;
    T* first;
    std::size_t count;
    std::size_t room;
    std::size_t initial_capacity;
    std::size_t first_count = 0;
    std::uint32_t first_offset = not_started;
};

} // namespace Velmar
