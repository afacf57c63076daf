#pragma once

/// What differs between compilers and runtimes. Every other source file is plain C++20.

#include <cassert>
#include <cstddef>
#include <cstdint>

#ifndef _WIN32
// The header declares it for debug builds only.
// NOLINTNEXTLINE(readability-redundant-declaration,readability-inconsistent-declaration-parameter-name)
extern "C" [[gnu::noreturn]] void __assert_fail(const char* text, const char* file, unsigned line,
                                                const char* function) noexcept;
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

} // namespace Velmar
