#include <gtest/gtest.h>

/// The main function of every test executable.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
