#pragma once

#include "velmarexceptions.h"

#include "tests/faults/FailingAllocation.h"
#include "tests/faults/OpenFiles.h"
#include "tests/support/Throws.h"

#include <clocale>
#include <functional>
#include <gmock/gmock.h>
#include <new>
#include <string>
#include <vector>

namespace Faults {

inline const std::string bad_allocation = "std::bad_alloc";

/// An operation and how its outcome is described. Only `act` meets failures.
struct Operation {
    std::function<void()> act;
    /// The whole result of `act`, after it returned.
    std::function<std::string()> tellResult;
    /// What `act` may throw, as `thrownBy` describes it.
    std::vector<std::string> failures;
    /// Removes what `act` may leave.
    std::function<void()> cleanUp = [] {};
};

/// What `act` throws, as a text; empty when it returns.
template <class Act>
std::string thrownBy(const Act& act, FailingAllocation& fault) {
    try {
        act();
        fault.end();
        return "";
    } catch (const Velmar::VelmarException& e) {
        fault.end();
        return "VelmarException: " + TestSupport::asText(e.getMessage());
    } catch (const Velmar::Exception& e) {
        fault.end();
        return "Exception: " + e.getMessage();
    } catch (const std::bad_alloc&) {
        fault.end();
        return bad_allocation;
    }
}

/// Has the first, second, third ... allocation of the operation fail, until it meets no failure any more; first each
/// alone, then with all that follow. Each time it either gives the same result as without a failure or throws one of
/// its `failures`, leaves no memory allocated, no file open and the locale as it was, and works again at once.
inline void failEachAllocation(const Operation& operation) {
    prepareRuntime();
    const auto resultNow = [&] {
        operation.act();
        std::string result = operation.tellResult();
        operation.cleanUp();
        return result;
    };
    const std::string expected = resultNow();
    constexpr std::size_t max_failure_length = 1000;

    for (const Lasting lasting : {Lasting::once, Lasting::for_ever}) {
        bool met = true;
        std::int64_t nth = 0;
        while (met) {
            ++nth;
            const std::string locale_before = std::setlocale(LC_ALL, nullptr);
            const std::size_t files_before = openFiles();
            std::int64_t blocks_after = 0;
            std::string failure;
            bool same_result = false;
            failure.reserve(max_failure_length);
            const std::int64_t blocks_before = liveBlocks();
            {
                FailingAllocation fault(nth, lasting);
                failure.append(thrownBy(operation.act, fault));
                met = fault.hasStruck();
                same_result = failure.empty() && operation.tellResult() == expected;
                operation.cleanUp();
                blocks_after = liveBlocks();
            }
            SCOPED_TRACE("allocation " + std::to_string(nth) +
                         (lasting == Lasting::once ? " failed" : " failed and all that followed"));
            EXPECT_EQ(blocks_after, blocks_before) << failure;
            EXPECT_EQ(openFiles(), files_before) << failure;
            EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale_before) << failure;
            if (failure.empty())
                EXPECT_TRUE(same_result) << "it returned without its whole result";
            else
                EXPECT_THAT(operation.failures, testing::Contains(failure));
            EXPECT_EQ(resultNow(), expected) << "the next operation works";
            if (testing::Test::HasFailure()) return;
        }
        EXPECT_GT(nth, 1) << "nothing was allocated";
    }
}

} // namespace Faults
