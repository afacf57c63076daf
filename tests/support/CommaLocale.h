#pragma once

#include <memory>

namespace TestSupport {

/// A host that writes numbers with a comma, in C and where it can in C++, as long as the object lives.
class CommaLocale {
  public:
    /// Throws `std::runtime_error` where there is no such locale.
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace TestSupport
