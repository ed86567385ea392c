#include "trnCommonUtils/easy_file.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using test::Bytes;

constexpr int kWait = 30;

class EasyFile : public testing::Test {
protected:
    test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(160);
    const std::wstring path_ = test::Wide(scratch_.Add("a.mp3", content_));
};

TEST_F(EasyFile, ReadsAndMovesWithEveryBlockSize) {
    for (const std::uint32_t block : {0u, 1u, 7u, 65536u, std::numeric_limits<std::uint32_t>::max()}) {
        TRN_EasyFile file;
        file.SetReadBlockSize(block);
        ASSERT_EQ(file.Open(os::ToAutomationString(path_)), 1);
        EXPECT_EQ(file.GetFileSize(true), 160);
        Bytes buffer(100);
        EXPECT_EQ(file.Read(buffer.data(), 100, kWait), 100u);
        EXPECT_EQ(buffer, Bytes(content_.begin(), content_.begin() + 100));
        EXPECT_EQ(file.Read(buffer.data(), 100, kWait), 60u);
        EXPECT_EQ(file.GetPos(), 160);
        EXPECT_EQ(file.SetPos(5, kWait), 1);
        EXPECT_EQ(file.Read(buffer.data(), 1, kWait), 1u);
        EXPECT_EQ(buffer[0], content_[5]);
        EXPECT_EQ(file.SetPos(-1, kWait), 0);
        EXPECT_EQ(file.GetPos(), 6);
    }
}

TEST_F(EasyFile, ClosedGivesNothing) {
    TRN_EasyFile file;
    Bytes buffer(10);
    EXPECT_EQ(file.Read(buffer.data(), 10, kWait), 0u);
    EXPECT_EQ(file.Open(os::ToAutomationString(L"missing")), 0);
    EXPECT_EQ(file.Open(CComBSTR()), 0);
    EXPECT_EQ(file.Read(buffer.data(), 10, kWait), 0u);
    EXPECT_EQ(file.GetFileSize(true), 0);
    EXPECT_EQ(file.GetPos(), 0);
    EXPECT_EQ(file.SetPos(0, kWait), 0);
    file.Close();
}

TEST_F(EasyFile, OpensAgain) {
    TRN_EasyFile file;
    Bytes buffer(160);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(file.Open(os::ToAutomationString(path_)), 1);
        EXPECT_EQ(file.Read(buffer.data(), 160, kWait), 160u);
        EXPECT_EQ(buffer, content_);
    }
    EXPECT_EQ(file.Open(os::ToAutomationString(test::Wide(scratch_.Path()))), 0);
    EXPECT_EQ(file.Read(buffer.data(), 160, kWait), 0u);
    ASSERT_EQ(file.Open(os::ToAutomationString(path_)), 1);
    EXPECT_EQ(file.Read(nullptr, 160, kWait), 0u);
}

} // namespace
