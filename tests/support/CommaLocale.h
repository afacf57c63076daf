#pragma once

#include <locale>
#include <memory>
#include <string>

namespace TestSupport {

/// A host that writes numbers with a comma, in C and in C++, as long as the object lives.
class CommaLocale {
  public:
    /// Throws `std::runtime_error` where there is no such locale.
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

  private:
    struct CommaNumbers final : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    struct State;

    std::unique_ptr<State> state;
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
};

} // namespace TestSupport
