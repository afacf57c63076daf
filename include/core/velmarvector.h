#pragma once

#include "velmarbulkmemory.h"
#include "velmarcompiler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace Velmar {

/// Whether a value may be moved by copying its bytes, without a call of its constructors and destructor: plain types,
/// and classes that say so by a type `Relocatable`.
template <class T>
inline constexpr bool is_relocatable = std::is_trivially_copyable_v<T> || requires {
    typename T::Relocatable;
};

/// A growing array on the SDK's allocation entry points. Elements are copied, never moved, but for relocatable ones.
/// Its layout is shared with the renderer library.
template <class T>
class Vector {
  public:
    Vector() = default;

    /// Allocates exactly the other's size.
    Vector(const Vector& other) {
        if (other.size_ == 0) return;
        Vector copy(ExactCapacity{other.size_});
        copy.copyConstruct(other.e, other.size_);
        swap(copy);
    }

    ~Vector() {
        assertInvariants();
        destroyElements(0);
        sdkFree(e);
    }

    /// Keeps the present array when the other's elements fit in it.
    Vector& operator=(const Vector& other) {
        if (this == &other) return *this;
        if (other.size_ > capacity_) {
            // Copied before the old elements are destroyed, so that running out of memory changes nothing.
            Vector copy(other);
            swap(copy);
        } else {
            clear();
            copyConstruct(other.e, other.size_);
        }
        return *this;
    }

    /// Checked access.
    T& operator[](std::size_t index) {
        assertIndex(index);
        return e[index];
    }
    const T& operator[](std::size_t index) const {
        assertIndex(index);
        return e[index];
    }

    void push_back(const T& x) {
        assertThat(capacity_ >= size_, "capacity_ >= size_");
        if (size_ == capacity_) [[unlikely]] {
            // A copy first: x may be an element of this vector.
            const T copy(x);
            reserve(grownCapacity(size_ + 1));
            new (static_cast<void*>(e + size_)) T(copy);
        } else {
            new (static_cast<void*>(e + size_)) T(x);
        }
        ++size_;
        assertInvariants();
    }

    /// Appends all of `elements`, with one reallocation at most. The capacity ends as that many single `push_back`s
    /// would leave it.
    void append(std::span<const T> elements) {
        if (elements.size() > capacity_ - size_) {
            // The old array lives until all are copied: the new elements may lie in it.
            Vector grown(ExactCapacity{steppedCapacity(elements.size())});
            grown.copyConstruct(e, size_);
            grown.copyConstruct(elements.data(), elements.size());
            swap(grown);
        } else {
            copyConstruct(elements.data(), elements.size());
        }
        assertInvariants();
    }

    /// Makes the capacity exactly `n` elements if it is less.
    void reserve(std::size_t n) {
        assertThat(capacity_ >= size_, "capacity_ >= size_");
        if (n > capacity_) {
            Vector grown(ExactCapacity{n});
            if constexpr (is_relocatable<T>) {
                if (size_ != 0) std::memcpy(static_cast<void*>(grown.e), static_cast<void*>(e), size_ * sizeof(T));
                std::swap(grown.size_, size_);
            } else {
                grown.copyConstruct(e, size_);
            }
            swap(grown);
        }
        assertInvariants();
    }

    /// Reserves space for `count` more elements, growing in the steps of that many `push_back`s.
    void growFor(std::size_t count) { reserve(steppedCapacity(count)); }

    /// New elements are default-constructed: zeros for numbers and plain records.
    void resize(std::size_t n) {
        shrinkOrMakeRoom(n);
        if constexpr (std::is_trivially_copyable_v<T> && std::is_trivially_default_constructible_v<T>) {
            if (n > size_) std::memset(static_cast<void*>(e + size_), 0, (n - size_) * sizeof(T));
            size_ = n;
        } else {
            for (; size_ < n; ++size_)
                new (static_cast<void*>(e + size_)) T();
        }
    }

    /// As `resize`, but leaves new elements of plain types unwritten, for a caller that fills all of them next.
    void
    resizeUninitialized(std::size_t n) requires(std::is_trivially_copyable_v<T>&& std::is_trivially_destructible_v<T>) {
        shrinkOrMakeRoom(n);
        size_ = n;
    }

    /// Makes the capacity `n` elements if it is more, and returns the rest of the memory, mostly without a copy. `n` is
    /// not less than the size. Without effect when out of memory.
    void shrinkCapacity(std::size_t n) noexcept requires(std::is_trivially_copyable_v<T>) {
        if (n >= capacity_) return;
        void* const block = sdkRealloc(e, n * sizeof(T));
        if (block == nullptr) return;
        e = static_cast<T*>(block);
        capacity_ = n;
    }

    void clear() {
        destroyElements(0);
        size_ = 0;
    }

    /// Exchanges the arrays; no element is copied.
    void swap(Vector& other) noexcept {
        std::swap(e, other.e);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    std::size_t size() const { return size_; }
    std::size_t capacity() const { return capacity_; }
    bool empty() const { return size_ == 0; }

    T* data() { return e; }
    const T* data() const { return e; }
    T* begin() { return e; }
    T* end() { return e + size_; }
    const T* begin() const { return e; }
    const T* end() const { return e + size_; }

  private:
    struct ExactCapacity {
        std::size_t n;
    };

    explicit Vector(ExactCapacity capacity) {
        if (capacity.n > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw BadAlloc();
        e = static_cast<T*>(bulkMalloc(capacity.n * sizeof(T)));
        capacity_ = capacity.n;
    }

    /// Appends to the present elements. The capacity must suffice.
    void copyConstruct(const T* from, std::size_t count) {
        if constexpr (std::is_trivially_copyable_v<T>) {
            if (count != 0) std::memcpy(static_cast<void*>(e + size_), from, count * sizeof(T));
            size_ += count;
        } else {
            for (std::size_t i = 0; i < count; ++i, ++size_)
                new (static_cast<void*>(e + size_)) T(from[i]);
        }
    }

    void shrinkOrMakeRoom(std::size_t n) {
        if (n < size_) {
            destroyElements(n);
            size_ = n;
        } else if (n > capacity_) {
            reserve(grownCapacity(n));
        }
    }

    /// The capacity after `count` more `push_back`s.
    std::size_t steppedCapacity(std::size_t count) const {
        if (count > std::numeric_limits<std::size_t>::max() - size_) throw BadAlloc();
        const std::size_t needed = size_ + count;
        std::size_t capacity = capacity_;
        while (capacity < needed)
            capacity = std::max(capacity + 1, doubled(capacity));
        return capacity;
    }

    static std::size_t doubled(std::size_t capacity) {
        constexpr std::size_t max_capacity = std::numeric_limits<std::size_t>::max();
        return capacity > max_capacity / 2 ? max_capacity : capacity * 2;
    }

    std::size_t grownCapacity(std::size_t needed) const { return std::max(needed, doubled(capacity_)); }

    void destroyElements(std::size_t from) {
        if constexpr (!std::is_trivially_destructible_v<T>) {
            for (std::size_t i = from; i < size_; ++i)
                e[i].~T();
        }
    }

    void assertIndex(std::size_t index) const {
        assertThat(capacity_ >= size_, "capacity_ >= size_");
        assertThat(index < size_, "index < size_");
    }

    void assertInvariants() const {
        assertThat(capacity_ >= size_, "capacity_ >= size_");
        assertThat(size_ > 0 ? (e != nullptr) : true, "size_ > 0 ? (e != NULL) : true");
    }

    T* e = nullptr;
    std::uint64_t size_ = 0;
    std::uint64_t capacity_ = 0;
};

static_assert(sizeof(Vector<int>) == 24);

} // namespace Velmar
