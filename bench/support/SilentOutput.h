#pragma once

#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace BenchSupport {

/// Discards the standard output during its lifetime: the library prints a line for each list of materials.
class SilentOutput {
  public:
    SilentOutput() : saved(dup(STDOUT_FILENO)) {
        std::cout.flush();
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~SilentOutput() {
        std::cout.flush();
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

  private:
    int saved;
};

} // namespace BenchSupport
