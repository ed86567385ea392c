#include "LogManagerU/log_manager.h"

#include "os/log_output.h"
#include "platform/environment.h"
#include "platform/log_lines.h"
#include "support/test_files.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

std::string TextOf(const fs::path& path) {
    const test::Bytes bytes = test::ReadFile(path);
    return std::string(bytes.begin(), bytes.end());
}

class LogManager : public testing::Test {
protected:
    test::ScratchFolder scratch_;
    const fs::path file_ = scratch_.Path() / "log.txt";
    const test::ScopedVariable variable_{"TRN_LOG", file_.string()};
};

TEST_F(LogManager, OneLineForEachEvent) {
    TRN_LogManagerU log;
    log.ConfigName(L"tester");
    log << L"first " << 12 << TRN_LogManagerU::endl;
    log << L"second " << -2147483647 - 1 << L" \u00FC" << TRN_LogManagerU::endl;
    EXPECT_THAT(test::LogLines(TextOf(file_)),
                ElementsAre("[tester] first 12", "[tester] second -2147483648 \xC3\xBC"));
    EXPECT_EQ(TextOf(file_).back(), '\n');
}

TEST_F(LogManager, NothingIsWrittenBeforeTheEndOfTheLine) {
    TRN_LogManagerU log;
    log.ConfigName(L"tester");
    log << L"half a line";
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(LogManager, AddsToTheFile) {
    for (int round = 0; round < 2; ++round) {
        TRN_LogManagerU log;
        log.ConfigName(L"tester");
        log << round << TRN_LogManagerU::endl;
    }
    EXPECT_THAT(test::LogLines(TextOf(file_)), ElementsAre("[tester] 0", "[tester] 1"));
}

TEST_F(LogManager, LineBreaksInTheTextMakeNoNewLine) {
    TRN_LogManagerU log;
    log.ConfigName(L"tester");
    log << L"a\nb\r\nc" << TRN_LogManagerU::endl;
    EXPECT_THAT(test::LogLines(TextOf(file_)), ElementsAre("[tester] a b  c"));
}

TEST_F(LogManager, WithoutATargetNothingIsWritten) {
    variable_.Set("");
    TRN_LogManagerU log;
    log.ConfigName(L"tester");
    testing::internal::CaptureStderr();
    log << L"lost" << TRN_LogManagerU::endl;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(LogManager, WithoutANameNothingIsWritten) {
    TRN_LogManagerU log;
    log << L"lost" << TRN_LogManagerU::endl;
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(LogManager, DashIsStandardError) {
    variable_.Set("-");
    TRN_LogManagerU log;
    log.ConfigName(L"tester");
    testing::internal::CaptureStderr();
    log << L"seen " << 7 << TRN_LogManagerU::endl;
    EXPECT_THAT(test::LogLines(testing::internal::GetCapturedStderr()), ElementsAre("[tester] seen 7"));
    EXPECT_FALSE(fs::exists("-"));
}

TEST_F(LogManager, AnUnwritableTargetIsNoFailure) {
    variable_.Set((scratch_.Path() / "no such folder" / "log.txt").string());
    TRN_LogManagerU log;
    log.ConfigName(L"tester");
    log << L"lost" << TRN_LogManagerU::endl;
    variable_.Set(scratch_.Path().string());
    log.ConfigName(L"tester");
    log << L"lost" << TRN_LogManagerU::endl;
    EXPECT_TRUE(fs::is_empty(scratch_.Path()));
}

TEST(LogOutput, EnvironmentVariables) {
    const test::ScopedVariable variable("TRN_TEST_VARIABLE", "value");
    EXPECT_EQ(os::EnvironmentVariable(L"TRN_TEST_VARIABLE"), L"value");
    variable.Set("");
    EXPECT_EQ(os::EnvironmentVariable(L"TRN_TEST_VARIABLE"), L"");
}

} // namespace
