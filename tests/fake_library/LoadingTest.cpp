#include "velmarapi.h"
#include "velmarexceptions.h"

#include "tests/support/Handles.h"
#include "tests/support/LibraryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace TestSupport;
using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr const char* entry_line = "This is where it stops.\n";
constexpr const char* success_lines = "This is where it stops.\nInitialized Velmar context.\n";

/// What a call of `VelmarContext_Initialize` returned and printed.
struct Outcome {
    int result;
    std::string out;
    std::string err;
};

std::string withPlainLineEnds(std::string text) {
    std::erase(text, '\r');
    return text;
}

Outcome initialize(VelmarContext* context) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int result = VelmarContext_Initialize(context);
    return {result, withPlainLineEnds(testing::internal::GetCapturedStdout()),
            withPlainLineEnds(testing::internal::GetCapturedStderr())};
}

std::string failureLine(const std::string& code, const std::string& text) {
    return "Failed to initialise Velmar context, " + code + " error description: " + text + "\n";
}

class Loading : public testing::Test {
  protected:
    void TearDown() override { VelmarContext_Delete(context); }

    /// Ends the context before the test does.
    void deleteContext() {
        VelmarContext_Delete(context);
        context = nullptr;
    }

    LibraryFolder folder;
    VelmarContext* context = VelmarContext_Create();
};

} // namespace

TEST_F(Loading, NullContextIsAFailureThatPrintsItsOwnLineAlone) {
    const Outcome outcome = initialize(nullptr);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "Context doesn't exist! Did you forget to create it?\n");
}

TEST_F(Loading, FreshContextIsNotCounted) {
    EXPECT_EQ(refCountOf(context), 0);
}

TEST_F(Loading, DeleteOfNullDoesNothing) {
    VelmarContext_Delete(nullptr);
    EXPECT_THAT(folder.record(), IsEmpty());
}

TEST_F(Loading, WithoutAFolderThereIsNoLibrary) {
    std::filesystem::remove(folder.path("vs2017_64"));
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, entry_line);
    // The system's own word for a missing folder or file on the way.
    const std::string text = "Failed to load Velmar SDK DLL from 'vs2017_64' (Error code: ";
    EXPECT_THAT(outcome.err, AnyOf(failureLine("20", text + "2)"), failureLine("20", text + "3)")));
}

TEST_F(Loading, WithAnEmptyFolderThereIsNoLibrary) {
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, entry_line);
    EXPECT_EQ(outcome.err, failureLine("20", "Failed to load Velmar SDK DLL from 'vs2017_64' (Error code: 2)"));
}

TEST_F(Loading, LibraryIsSetUpAndThenGivenTheMemoryFunctions) {
    folder.install("good");
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, success_lines);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(folder.record(), ElementsAre("global init in vs2017_64, error text empty yes", "memory functions set"));
}

TEST_F(Loading, ContextShutsTheLibraryDownAndUnloadsIt) {
    folder.install("good");
    initialize(context);
    folder.clearRecord();
    deleteContext();
    EXPECT_THAT(folder.record(), ElementsAre("global shutdown", "unloaded"));
}

TEST_F(Loading, RenderOnlyLibraryServesWhenItIsAlone) {
    folder.install("good", "velmar_rt_sdk");
    EXPECT_EQ(initialize(context).result, 0);
    EXPECT_EQ(folder.record().size(), 2u);
}

TEST_F(Loading, FullLibraryWinsOverTheRenderOnlyOne) {
    folder.install("good");
    folder.install("no_create_instance", "velmar_rt_sdk");
    EXPECT_EQ(initialize(context).result, 0);
}

TEST_F(Loading, FullLibraryThatIsUnusableIsNotReplacedByTheRenderOnlyOne) {
    folder.install("no_create_instance");
    folder.install("good", "velmar_rt_sdk");
    EXPECT_EQ(initialize(context).result, -1);
}

TEST_F(Loading, LibraryOfTheSameNameFurtherDownIsNotTaken) {
    folder.install("good");
    folder.install("no_create_instance", "velmar_sdk", "vs2017_64/vs2017_64");
    EXPECT_EQ(initialize(context).result, 0);
}

TEST_F(Loading, FileThatIsNoLibraryIsReportedInTheSystemsWords) {
    folder.installText();
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, entry_line);
    const std::string begin = "Failed to initialise Velmar context, 22 error description: ";
    EXPECT_THAT(outcome.err, StartsWith(begin));
    EXPECT_THAT(outcome.err, EndsWith("\n"));
    EXPECT_GT(outcome.err.size(), begin.size() + 10);
    deleteContext();
    EXPECT_THAT(folder.record(), IsEmpty());
}

namespace {

class MissingEntryPoint : public Loading, public testing::WithParamInterface<std::pair<const char*, const char*>> {};

} // namespace

TEST_P(MissingEntryPoint, IsNamedAndNothingWasCalled) {
    folder.install(GetParam().first);
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, entry_line);
    EXPECT_EQ(outcome.err,
              failureLine("1", "unable to get address of procedure '" + std::string(GetParam().second) + "'"));
    deleteContext();
    EXPECT_THAT(folder.record(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Loading, MissingEntryPoint,
                         testing::Values(std::pair{"no_create_instance", "velmarCreateInstance"},
                                         std::pair{"no_global_init", "velmarGlobalLibraryInit"},
                                         std::pair{"no_global_shutdown", "velmarGlobalLibraryShutdown"}),
                         [](const auto& case_info) { return std::string(case_info.param.first); });

TEST_F(Loading, LibraryWithoutRoomForMemoryFunctionsHasBeenSetUpAndIsShutDown) {
    folder.install("no_mem_alloc_functions");
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.err, failureLine("1", "unable to get address of procedure 'setMemAllocFunctions'"));
    deleteContext();
    EXPECT_THAT(folder.record(),
                ElementsAre("global init in vs2017_64, error text empty yes", "global shutdown", "unloaded"));
}

TEST_F(Loading, FailedSetUpIsReportedInTheLibrarysWordsAndShutDown) {
    folder.install("global_init");
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.out, entry_line);
    EXPECT_EQ(outcome.err, failureLine("1", "no licence found"));
    deleteContext();
    EXPECT_THAT(folder.record(),
                ElementsAre("global init in vs2017_64, error text empty yes", "global shutdown", "unloaded"));
}

// The exception is ours; it passes through the library's frames.
TEST_F(Loading, ExhaustedMemoryIsToldAndThenTakenForSuccess) {
    folder.install("out_of_memory");
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, success_lines);
    // A sanitizer has its own word on the allocation before.
    EXPECT_THAT(outcome.err, EndsWith("This failed: bad allocation\n"));
}

TEST_F(Loading, OtherExceptionsReachTheHost) {
    folder.install("throws");
    testing::internal::CaptureStdout();
    EXPECT_THROW(VelmarContext_Initialize(context), Velmar::Exception);
    EXPECT_EQ(withPlainLineEnds(testing::internal::GetCapturedStdout()), entry_line);
}

TEST_F(Loading, StandardExceptionIsToldInItsOwnWords) {
    folder.install("throws_standard");
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, success_lines);
    EXPECT_EQ(outcome.err, "This failed: no room at the inn\n");
}

TEST_F(Loading, ExhaustedMemoryReadsTheSameWithEveryRuntime) {
    folder.install("throws_bad_alloc");
    EXPECT_EQ(initialize(context).err, "This failed: bad allocation\n");
}

TEST_F(Loading, BadCastReadsTheSameWithEveryRuntime) {
    folder.install("throws_bad_cast");
    const Outcome outcome = initialize(context);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, success_lines);
    EXPECT_EQ(outcome.err, "This failed: bad cast\n");
}

TEST_F(Loading, StandardExceptionWithoutATextIsUnknown) {
    folder.install("throws_nameless");
    EXPECT_EQ(initialize(context).err, "This failed: Unknown exception\n");
}

TEST_F(Loading, FailedContextMayBeInitializedAgain) {
    initialize(context);
    folder.install("good");
    EXPECT_EQ(initialize(context).result, 0);
}

TEST_F(Loading, SecondInitializationLoadsAgainAndLosesTheFirstHandle) {
    folder.install("good");
    initialize(context);
    initialize(context);
    folder.clearRecord();
    deleteContext();
    EXPECT_THAT(folder.record(), ElementsAre("global shutdown")) << "still loaded once";
}

TEST_F(Loading, TwoContextsLoadTheLibraryTwice) {
    folder.install("good");
    initialize(context);
    VelmarContext* const other = VelmarContext_Create();
    initialize(other);
    folder.clearRecord();
    VelmarContext_Delete(other);
    EXPECT_THAT(folder.record(), ElementsAre("global shutdown"));
    folder.clearRecord();
    deleteContext();
    EXPECT_THAT(folder.record(), ElementsAre("global shutdown", "unloaded"));
}
