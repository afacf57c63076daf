#pragma once

#include "velmarcompiler.h"
#include "velmarmemory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Velmar {

/// The base of everything that is kept alive by an intrusive count. A fresh object has count 0: nothing but a
/// `Reference` counts. The count may be changed from any thread; nothing else about the object is protected by it.
///
/// Objects of this class cross to libraries built by other compilers, which call the virtual operations by position.
/// Slot 0 is therefore an explicit operation and not a C++ virtual destructor, whose table entries differ by compiler.
class ThreadSafeRefCounted : public SdkAllocated {
  public:
    ThreadSafeRefCounted() = default;
    ThreadSafeRefCounted(const ThreadSafeRefCounted&) = delete;
    ThreadSafeRefCounted& operator=(const ThreadSafeRefCounted&) = delete;

    /// Slot 0. Runs the destructor of the object's real class and, with bit 0 of `flags` set, frees its memory.
    /// Returns the object's address. Concrete classes get it from `Destroyable`.
    virtual void* destroy(unsigned flags) {
        assertUnreferenced();
        this->ThreadSafeRefCounted::~ThreadSafeRefCounted();
        if ((flags & 1) != 0) sdkFree(this);
        return this;
    }

    void increment() const { refcount.fetch_add(1, std::memory_order_seq_cst); }

    /// Returns the count held before the decrement.
    std::int64_t decrement() const { return refcount.fetch_add(-1, std::memory_order_seq_cst); }

    std::int64_t getRefCount() const { return refcount.load(std::memory_order_seq_cst); }

  protected:
    ~ThreadSafeRefCounted() = default;

    /// For the classes that must not be destroyed while a `Reference` holds them; all others are, regardless.
    void assertUnreferenced() const { assertThat(getRefCount() == 0, "refcount == 0"); }

  private:
    mutable std::atomic<std::int64_t> refcount{0};
};

static_assert(sizeof(std::atomic<std::int64_t>) == 8);
static_assert(sizeof(ThreadSafeRefCounted) == 16);

/// Supplies slot 0 for the class `Concrete`, which derives from `Destroyable<Concrete, Base>`.
///
/// No such class may be final. The renderer library makes and derives objects of these classes, with tables of their
/// own. A compiler that knows an object's class calls our functions directly, past that table.
template <class Concrete, class Base>
class Destroyable : public Base {
  public:
    using Base::Base;

    void* destroy(unsigned flags) override {
        static_assert(!std::is_final_v<Concrete>);
        auto* const self = static_cast<Concrete*>(this);
        void* const memory = self;
        self->Concrete::~Concrete();
        if ((flags & 1) != 0) sdkFree(memory);
        return memory;
    }

  protected:
    ~Destroyable() = default;
};

} // namespace Velmar
