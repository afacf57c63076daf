#include "tests/support/System.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>

namespace {

/// Leaves only the cases whose full names, `program.Suite.Case`, the regular expression matches.
void selectCases(const std::string& program, const std::regex& wanted) {
    // Matches nothing, unless more follows.
    std::string selected = ":";
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *all.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j) {
            const std::string name = std::string(suite.name()) + "." + suite.GetTestInfo(j)->name();
            if (std::regex_search(program + "." + name, wanted)) selected += name + ":";
        }
    }
    GTEST_FLAG_SET(filter, selected);
}

} // namespace

/// The main function of every test program. `./dev test FILTER` passes its filter in an environment variable.
int main(int argc, char** argv) {
    TestSupport::reportCrashes();
    testing::InitGoogleTest(&argc, argv);
    if (const char* const filter = std::getenv("VELMAR_TEST_FILTER"))
        selectCases(std::filesystem::path(argv[0]).stem().string(), std::regex(filter));
    return RUN_ALL_TESTS();
}
