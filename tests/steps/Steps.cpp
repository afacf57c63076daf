#include "tests/steps/Steps.h"

#include <utility>

namespace {
std::uint64_t steps = 0;
}

extern "C" void __sanitizer_cov_trace_pc();
extern "C" void __sanitizer_cov_trace_pc() {
    ++steps;
}

std::uint64_t Steps::take() {
    return std::exchange(steps, 0);
}
