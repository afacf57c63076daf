#pragma once

/// What differs between compilers and runtimes. Every other source file is plain C++20.

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>

#ifndef _WIN32
// The header declares it for debug builds only.
// NOLINTNEXTLINE(readability-redundant-declaration,readability-inconsistent-declaration-parameter-name)
extern "C" [[gnu::noreturn]] void __assert_fail(const char* text, const char* file, unsigned line,
                                                const char* function) noexcept;
#endif

/// For functions of inner loops whose state must stay in registers, and for those that would cost such loops something.
#ifdef _MSC_VER
#define VELMAR_ALWAYS_INLINE __forceinline
#define VELMAR_NEVER_INLINE __declspec(noinline)
#else
#define VELMAR_ALWAYS_INLINE [[gnu::always_inline]] inline
#define VELMAR_NEVER_INLINE [[gnu::noinline]]
#endif

namespace Velmar {

/// If set, receives the text of a failed assertion in place of the runtime's report. It may throw; libraries that
/// report failures by a status do.
inline void (*failed_assertion_handler)(const char* text) = nullptr;

/// Hands a failed assertion to the runtime's own report, which by its usual rules prints the text, the file and the
/// line and ends the process. Active in release builds too: hosts rely on the report of a broken invariant.
[[gnu::cold]] inline void reportFailedAssertion(const char* text, const char* file, unsigned line,
                                                [[maybe_unused]] const char* function) {
    if (failed_assertion_handler != nullptr) failed_assertion_handler(text);
#ifdef _WIN32
    constexpr std::size_t max_length = 511;
    wchar_t wide_text[max_length + 1] = {};
    wchar_t wide_file[max_length + 1] = {};
    const auto widen = [](const char* from, wchar_t* to) {
        for (std::size_t i = 0; i < max_length && from[i] != '\0'; ++i)
            to[i] = static_cast<unsigned char>(from[i]);
    };
    widen(text, wide_text);
    widen(file, wide_file);
    _wassert(wide_text, wide_file, line);
#else
    __assert_fail(text, file, line, function);
#endif
}

/// Asserts that `holds` is true; otherwise reports `text` with the place of the call. The place comes from built-ins
/// that GCC, Clang and MSVC share, because Clang before 16 lacks std::source_location.
inline void assertThat(bool holds, const char* text, const char* file = __builtin_FILE(),
                       unsigned line = static_cast<unsigned>(__builtin_LINE()),
                       const char* function = __builtin_FUNCTION()) {
    if (!holds) [[unlikely]]
        reportFailedAssertion(text, file, line, function);
}

/// `block`. What compilers make of malloc and a memset, calloc, doesn't use the caches of glibc: so the two stay two.
VELMAR_ALWAYS_INLINE void* hideOrigin(void* block) {
#ifndef _MSC_VER
    asm("" : "+r"(block));
#endif
    return block;
}

/// The index of the lowest bit that is set. `bits` must not be 0, which spares the check of std::countr_zero.
VELMAR_ALWAYS_INLINE std::size_t lowestBit(std::uint64_t bits) {
#ifdef _MSC_VER
    return static_cast<std::size_t>(std::countr_zero(bits));
#else
    return static_cast<std::size_t>(__builtin_ctzll(bits));
#endif
}

} // namespace Velmar
