#pragma once

/// Calls into the renderer library, and what it throws. A library of another compiler throws exceptions that this one's
/// frames neither catch nor clean up for. So each call into the library is guarded: its exception becomes one of ours,
/// which carries the original, and the exported functions give the original back to the host.

#include <type_traits>

namespace Velmar {

/// An exception of the library's compiler with its text, copied from where it was thrown. Copies share it.
class LibraryException {
  public:
    /// What is carried; each way of building the library says what that is.
    class Carried;

    /// Takes over the count that the caller holds.
    explicit LibraryException(Carried* held) : carried(held) {}
    LibraryException(const LibraryException& other);
    LibraryException& operator=(const LibraryException&) = delete;
    // Trivial only where no library of another compiler throws.
    ~LibraryException(); // NOLINT(performance-trivially-destructible)

    /// The exception's own text, or the name of its type.
    const char* text() const;

    /// Gives up its share of what is carried.
    Carried* release();

  private:
    Carried* carried;
};

/// Calls `function(argument)`, which calls the library. Throws what the library throws if it is of this compiler; of
/// another compiler's exceptions a `LibraryException`, which also is a `std::exception` or a `Velmar::Exception` of the
/// same text where the original is one.
void callGuarded(void (*function)(void* argument), void* argument);

/// As `callGuarded`, for calls on which nothing of this compiler may be thrown: an exception is kept for `takePending`.
void callGuardedInDestructor(void (*function)(void* argument), void* argument) noexcept;

/// What this thread's destructors have kept, or null. The caller takes over the count.
LibraryException::Carried* takePending();

/// Throws the original to the host.
[[noreturn]] void throwOriginal(LibraryException::Carried* carried);

/// Calls `call`, which calls the library, guarded, and returns its result.
template <class Call>
auto callLibrary(const Call& call) -> decltype(call()) {
    using Result = decltype(call());
    if constexpr (std::is_void_v<Result>) {
        callGuarded([](void* argument) { (*static_cast<const Call*>(argument))(); }, const_cast<Call*>(&call));
    } else {
        struct {
            const Call& call;
            Result result;
        } state{call, Result()};
        callGuarded(
            [](void* argument) {
                auto& inner = *static_cast<decltype(state)*>(argument);
                inner.result = inner.call();
            },
            &state);
        return state.result;
    }
}

/// Calls `call`, which calls the library on the way to destroying something.
template <class Call>
void callLibraryInDestructor(const Call& call) noexcept {
    callGuardedInDestructor([](void* argument) { (*static_cast<const Call*>(argument))(); }, const_cast<Call*>(&call));
}

/// For exported functions that call the library: calls `call`, and what the library threw leaves as the library threw
/// it.
template <class Call>
auto passOnLibraryExceptions(const Call& call) -> decltype(call()) {
    LibraryException::Carried* carried = nullptr;
    try {
        if constexpr (std::is_void_v<decltype(call())>) {
            call();
            carried = takePending();
            if (carried == nullptr) return;
        } else {
            const auto result = call();
            carried = takePending();
            if (carried == nullptr) return result;
        }
    } catch (LibraryException& exception) {
        carried = exception.release();
    }
    // After the handler: this compiler's exception is destroyed before the other is thrown.
    throwOriginal(carried);
}

} // namespace Velmar
