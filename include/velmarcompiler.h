#pragma once

/// What differs between compilers and runtimes. Every other source file is plain C++20.

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#endif

#ifndef _WIN32
// The header declares it for debug builds only.
// NOLINTNEXTLINE(readability-redundant-declaration,readability-inconsistent-declaration-parameter-name)
extern "C" [[gnu::noreturn]] void __assert_fail(const char* text, const char* file, unsigned line,
                                                const char* function) noexcept;
#endif

/// For functions of inner loops whose state must stay in registers.
#ifdef _MSC_VER
#define VELMAR_ALWAYS_INLINE __forceinline
#else
#define VELMAR_ALWAYS_INLINE [[gnu::always_inline]] inline
#endif

namespace Velmar {

/// Hands a failed assertion to the runtime's own report, which by its usual rules prints the text, the file and the
/// line and ends the process. Active in release builds too: hosts rely on hearing of a broken invariant.
[[gnu::cold]] inline void reportFailedAssertion(const char* text, const char* file, unsigned line,
                                                [[maybe_unused]] const char* function) {
#ifdef _WIN32
    constexpr std::size_t longest = 511;
    wchar_t wide_text[longest + 1] = {};
    wchar_t wide_file[longest + 1] = {};
    const auto widen = [](const char* from, wchar_t* to) {
        for (std::size_t i = 0; i < longest && from[i] != '\0'; ++i)
            to[i] = static_cast<unsigned char>(from[i]);
    };
    widen(text, wide_text);
    widen(file, wide_file);
    _wassert(wide_text, wide_file, line);
#else
    __assert_fail(text, file, line, function);
#endif
}

/// Asserts that `holds`; otherwise reports `text` with the place of the call. The place comes from built-ins that GCC,
/// Clang and MSVC share, because Clang before 16 lacks std::source_location.
inline void assertThat(bool holds, const char* text, const char* file = __builtin_FILE(),
                       unsigned line = static_cast<unsigned>(__builtin_LINE()),
                       const char* function = __builtin_FUNCTION()) {
    if (!holds) [[unlikely]]
        reportFailedAssertion(text, file, line, function);
}

/// The place of the lowest bit that is set. `bits` must not be 0: that spares a look at it, unlike std::countr_zero.
VELMAR_ALWAYS_INLINE std::size_t lowestBit(std::uint64_t bits) {
#ifdef _MSC_VER
    return static_cast<std::size_t>(std::countr_zero(bits));
#else
    return static_cast<std::size_t>(__builtin_ctzll(bits));
#endif
}

/// Asks the system to back a block by large pages: with small ones the first touch of a mesh's arrays takes longer than
/// reading the mesh into them. A wish only; without it the block works the same, and no memory is taken before it is
/// touched. Elsewhere large pages need a privilege that hosts don't have.
[[gnu::noinline]] inline void preferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) {
#ifdef __linux__
    // What is smaller isn't worth the call.
    constexpr std::size_t large_block = std::size_t{4} << 20;
    if (size < large_block) return;
    // Whole pages inside the block alone: its ends share theirs with the allocator's own data.
    constexpr std::uintptr_t page = 4096;
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (start + page - 1) / page * page;
    const std::uintptr_t behind = (start + size) / page * page;
    if (behind > first) madvise(reinterpret_cast<void*>(first), behind - first, MADV_HUGEPAGE);
#endif
}

} // namespace Velmar
