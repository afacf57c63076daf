#pragma once

#include "velmarcompiler.h"
#include "velmarmemory.h"
#include "velmarvector.h"

#include "mesh/TextInParts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace Velmar {

/// Appends to a list record by record. While it exists, the size of the list has no meaning: it includes memory that is
/// reserved for records to come and costs nothing before it is written. `finish` or the destructor gives the list its
/// true size.
template <class T>
class RecordAppender {
  public:
    /// `text` is the text that the records are read from, if there is one. How far it has been read forecasts how many
    /// records are to come.
    explicit RecordAppender(Vector<T>& filled, const TextInParts* read_text = nullptr)
        : records(filled), text(read_text), first(filled.data()), count(filled.size()), reserved(count),
          initial_capacity(filled.capacity()) {}
    ~RecordAppender() { records.resizeUninitialized(count); }
    RecordAppender(const RecordAppender&) = delete;
    RecordAppender& operator=(const RecordAppender&) = delete;

    /// A record for the caller to write.
    VELMAR_ALWAYS_INLINE T& append() {
        if (count == reserved) [[unlikely]]
            grow();
        return first[count++];
    }

    void append(const T& record) { append() = record; }

    /// Appends `n` records: `added`, which may be in the list itself, and zeros. Throws `BadAlloc` and appends nothing.
    void appendPadded(std::span<const T> added, std::size_t n) {
        const bool is_own =
            std::greater_equal<const T*>()(added.data(), first) && std::less<const T*>()(added.data(), first + count);
        const auto own_offset = is_own ? added.data() - first : 0;
        reserveMore(n);
        T* const end = std::copy_n(is_own ? first + own_offset : added.data(), added.size(), first + count);
        std::fill(end, first + count + n, T{});
        count += n;
    }

    /// Reserves memory for `n` records in all, if there is that much. It is a hint, so out of memory isn't an error.
    void tryReserve(std::size_t n) noexcept {
        startCounting();
        if (n <= reserved) return;
        try {
            growTo(n);
        } catch (const BadAlloc&) {
            // `append` grows as it must.
        }
    }

    /// Reserves memory for `n` more records or throws `BadAlloc`.
    void reserveMore(std::size_t n) {
        if (n > reserved - count) growTo(count + n);
    }

    /// Gives the list its true size, which the destructor does too, and the capacity that single appends would have
    /// given it: memory that was only a forecast is released. Nothing may be appended afterwards.
    void finish() noexcept {
        records.resizeUninitialized(count);
        reserved = count;
        records.shrinkCapacity(steppedCapacity(count));
    }

    T* data() { return first; }
    const T* data() const { return first; }
    std::size_t size() const { return count; }

  private:
    /// To what the rest of the text contains if it continues as it did from the first record on, so that a large list
    /// is hardly ever copied.
    void grow() {
        constexpr std::size_t min_sample = 1024;
        constexpr std::size_t reliable_sample = 32768;
        startCounting();
        const std::uint64_t appended = count - first_count;
        if (text == nullptr || appended < min_sample) return growTo(count + 1);

        const std::uint64_t read = std::max<std::uint64_t>(text->getPosition() - first_offset, 1);
        // The product of two of these may have more than 64 bits.
        const double to_come_per_read = static_cast<double>(text->getRest()) / static_cast<double>(read);
        const auto to_come = static_cast<std::uint64_t>(to_come_per_read * static_cast<double>(appended));
        std::uint64_t forecast = count + to_come + to_come / 64 + 16;
        if (appended < reliable_sample) forecast = std::min<std::uint64_t>(forecast, 8 * count);
        try {
            growTo(forecast);
        } catch (const BadAlloc&) {
            growTo(count + 1);
        }
    }

    void growTo(std::size_t n) {
        const std::size_t capacity = steppedCapacity(n);
        // `reserve` copies as many records as the list has: not those that aren't written.
        records.resizeUninitialized(count);
        records.reserve(capacity);
        records.resizeUninitialized(records.capacity());
        first = records.data();
        reserved = records.capacity();
    }

    /// The capacity that the list would have after `n` single appends in all.
    std::size_t steppedCapacity(std::size_t n) const {
        std::size_t capacity = initial_capacity;
        while (capacity < n)
            capacity = std::max(capacity + 1, 2 * capacity);
        return capacity;
    }

    void startCounting() {
        if (text == nullptr || first_offset != not_started) return;
        first_offset = text->getPosition();
        first_count = count;
    }

    static constexpr std::uint64_t not_started = 0xFFFFFFFFFFFFFFFF;

    Vector<T>& records;
    const TextInParts* text;
    T* first;
    std::size_t count;
    std::size_t reserved;
    std::size_t initial_capacity;
    std::size_t first_count = 0;
    std::uint64_t first_offset = not_started;
};

} // namespace Velmar
