#pragma once

#include <csignal>
#include <sys/resource.h>

namespace TestSupport {

/// While it lives, no file grows beyond `size` bytes: writing behaves as on a disk that is full.
class SmallDisk {
  public:
    explicit SmallDisk(rlim_t size) : former_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit small = {size, former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &former);
        std::signal(SIGXFSZ, former_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

  private:
    void (*former_handler)(int);
    rlimit former = {};
};

} // namespace TestSupport
