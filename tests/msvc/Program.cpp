#include "Check.h"

int failures = 0;

/// Where a program begins.
extern "C" void start() {
    run();
    exit(failures);
}
