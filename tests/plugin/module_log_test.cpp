#include "plugin/module_log.h"

#include "platform/environment.h"
#include "platform/log_lines.h"
#include "support/test_files.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

class ModuleLog : public testing::Test {
protected:
    ModuleLog() { EXPECT_FALSE(trnmpa::LogExists()) << "an earlier test has not left"; }

    std::string Text() const {
        const test::Bytes bytes = test::ReadFile(file_);
        return std::string(bytes.begin(), bytes.end());
    }

    test::ScratchFolder scratch_;
    const fs::path file_ = scratch_.Path() / "log.txt";
    const test::ScopedVariable variable_{"TRN_LOG", file_.string()};
};

TEST_F(ModuleLog, LivesWhileOneHasJoined) {
    trnmpa::JoinLog();
    trnmpa::JoinLog();
    EXPECT_TRUE(trnmpa::LogExists());
    trnmpa::LeaveLog();
    EXPECT_TRUE(trnmpa::LogExists());
    trnmpa::LeaveLog();
    EXPECT_FALSE(trnmpa::LogExists());
    trnmpa::JoinLog();
    EXPECT_TRUE(trnmpa::LogExists());
    trnmpa::LeaveLog();
    EXPECT_FALSE(trnmpa::LogExists());
}

TEST_F(ModuleLog, LeavingTooOftenDoesNoHarm) {
    trnmpa::LeaveLog();
    trnmpa::JoinLog();
    EXPECT_TRUE(trnmpa::LogExists());
    trnmpa::LeaveLog();
    trnmpa::LeaveLog();
    EXPECT_FALSE(trnmpa::LogExists());
}

TEST_F(ModuleLog, ItsLineNamesTheFrame) {
    trnmpa::JoinLog();
    trnmpa::LogDecodeError(4711);
    trnmpa::LeaveLog();
    EXPECT_THAT(test::LogLines(Text()),
                testing::ElementsAre("[trnmpafileread] lame decode error, return mute. frmNo:4711"));
}

TEST_F(ModuleLog, WithoutMembersNothingIsWritten) {
    trnmpa::LogDecodeError(1);
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(ModuleLog, WritesNothingByDefault) {
    variable_.Set("");
    trnmpa::JoinLog();
    trnmpa::LogDecodeError(1);
    trnmpa::LeaveLog();
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(ModuleLog, ManyThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 50;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([number] {
            for (int round = 0; round < kRounds; ++round) {
                trnmpa::JoinLog();
                trnmpa::LogDecodeError(number);
                trnmpa::LeaveLog();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(trnmpa::LogExists());
    const std::vector<std::string> lines = test::LogLines(Text());
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kRounds));
    for (int number = 0; number < kThreads; ++number) {
        const std::string line =
            "[trnmpafileread] lame decode error, return mute. frmNo:" + std::to_string(number);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), kRounds);
    }
}

} // namespace
