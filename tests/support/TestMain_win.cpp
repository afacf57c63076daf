#include <gtest/gtest.h>
#include <stdlib.h>
#include <windows.h>

/// The main function of every test executable. On Windows a failed assertion or a crash would open a dialogue and wait
/// for a click; here both end the process, with the report on the standard error stream.
int main(int argc, char** argv) {
    _set_error_mode(_OUT_TO_STDERR);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
