/// `mpatool index` over a module that is slow, fails or crashes.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

namespace {

using test::Bytes;
using test::ProcessResult;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kUnfinishedIndex = ".idx";
constexpr int kInterrupted = 130;
const Bytes kOldIndex = {1, 2, 3};

class IndexCancelTest : public test::ToolTest {
protected:
    /// A file whose index takes a minute if nobody stops it.
    void AddSlow(const std::string& name) const {
        AddPlanned(name, test::SilentLayer3(50), {{"indexEntries", 6000}, {"indexDelay", 10}});
    }
    void AddWithPlan(const Plan& plan) const { AddPlanned("a.mp3", test::SilentLayer3(50), plan); }
};

TEST_F(IndexCancelTest, SlowBuildThatFinishes) {
    AddWithPlan({{"indexEntries", 49}, {"indexDelay", 5}});
    Add("a.mp3.idx", kOldIndex);
    test::RunningProcess process = StartCounting({"index", "--force", "a.mp3"});
    ASSERT_TRUE(WaitForNewFiles(kUnfinishedIndex));
    EXPECT_EQ(Read("a.mp3.idx"), kOldIndex);
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(result.output, "a.mp3: 49 frames indexed\n");
    // The progress bar is for terminals.
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(Read("a.mp3.idx").size(), 28u + 49u * 8u);
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexCancelTest, InterruptLeavesTheOldIndex) {
    AddSlow("a.mp3");
    Add("a.mp3.idx", kOldIndex);
    test::RunningProcess process = StartCounting({"index", "--force", "a.mp3"});
    ASSERT_TRUE(WaitForNewFiles(kUnfinishedIndex));
    if (!process.Interrupt())
        GTEST_SKIP() << "no console to send the interrupt through";
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, kInterrupted);
    EXPECT_EQ(result.error, "mpatool: a.mp3: cancelled; the old index is untouched\n");
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_EQ(Read("a.mp3.idx"), kOldIndex);
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexCancelTest, InterruptEndsAllFiles) {
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3", "d.mp3"})
        AddSlow(name);
    test::RunningProcess process =
        StartCounting({"index", "--jobs", "2", "a.mp3", "b.mp3", "c.mp3", "d.mp3"});
    // Both at the same time.
    ASSERT_TRUE(WaitForNewFiles(kUnfinishedIndex, 2));
    if (!process.Interrupt())
        GTEST_SKIP() << "no console to send the interrupt through";
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, kInterrupted);
    EXPECT_THAT(result.error, AllOf(HasSubstr("mpatool: a.mp3: cancelled; no index was left\n"),
                                    HasSubstr("mpatool: b.mp3: cancelled; no index was left\n"),
                                    HasSubstr("mpatool: 2 files not begun\n")));
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexCancelTest, FailureLeavesTheOldIndex) {
    AddWithPlan({{"indexState", 2}});
    Add("a.mp3.idx", kOldIndex);
    const ProcessResult result = RunCounting({"index", "--force", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, AllOf(HasSubstr("mpatool: a.mp3: the module failed"),
                                    HasSubstr("; the old index is untouched\n")));
    EXPECT_EQ(Read("a.mp3.idx"), kOldIndex);
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexCancelTest, FailureWithoutAnOldIndex) {
    // A state of 0 or 3 without a cancellation is none of the ways in which a build may end.
    for (const std::int64_t state : {0, 2, 3}) {
        AddWithPlan({{"indexState", state}});
        const ProcessResult result = RunCounting({"index", "a.mp3"});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_THAT(result.error, AllOf(HasSubstr("mpatool: a.mp3: the module failed"),
                                        HasSubstr("; no index was left\n")));
        EXPECT_THAT(NewFiles(), IsEmpty());
    }
}

TEST_F(IndexCancelTest, ModuleThatDoesNotBegin) {
    AddWithPlan({{"indexOpen", 0}});
    const ProcessResult result = RunCounting({"index", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "mpatool: a.mp3: the module cannot begin its index; no index was left\n");
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexCancelTest, IndexThatAppearsMeanwhileStays) {
    AddWithPlan({{"indexEntries", 100}, {"indexDelay", 10}});
    test::RunningProcess process = StartCounting({"index", "a.mp3"});
    ASSERT_TRUE(WaitForNewFiles(kUnfinishedIndex));
    Add("a.mp3.idx", kOldIndex);
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, HasSubstr("mpatool: a.mp3.idx: "));
    EXPECT_EQ(Read("a.mp3.idx"), kOldIndex);
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexCancelTest, CrashLeavesTheOldIndex) {
    AddWithPlan({{"indexCrash", 1}});
    Add("a.mp3.idx", kOldIndex);
    constexpr int kCrashStatus = 77;
    EXPECT_EQ(RunCounting({"index", "--force", "a.mp3"}).exitStatus, kCrashStatus);
    EXPECT_EQ(Read("a.mp3.idx"), kOldIndex);
    EXPECT_EQ(Read("a.mp3"), test::SilentLayer3(50));
    // What such a run leaves does not disturb the next one.
    const auto left = NewFiles();
    EXPECT_THAT(left, SizeIs(2));
    EXPECT_EQ(RunCounting({"index", "--verify", "a.mp3"}).exitStatus, 1);
    EXPECT_EQ(Run({"index", "--force", "a.mp3"}).exitStatus, 0);
    EXPECT_EQ(Read("a.mp3.idx"), test::IndexOfSilence(50));
    EXPECT_EQ(NewFiles(), left);
}

} // namespace
