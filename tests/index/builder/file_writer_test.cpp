/// What the writer asks of the library's file object, and what it makes of the answers.
#include "fileio/file_writer.h"

#include "index/builder/failing_file.h"

#include <gtest/gtest.h>

namespace {

using test::Bytes;
using test::Disk;

class FileWriterCalls : public testing::Test {
protected:
    FileWriterCalls() { Disk() = {}; }
    ~FileWriterCalls() override { Disk() = {}; }

    std::string Calls() const { return std::string(Disk().calls.begin(), Disk().calls.end()); }
};

TEST_F(FileWriterCalls, TheSettingsAreTheLibrarysOwn) {
    const trnmpa::CFileWriter writer;
    const TRCT_FILE_EX_SETTINGS& settings = Disk().settings;
    EXPECT_EQ(settings.leading[0], 0);
    EXPECT_EQ(settings.leading[1], 2);
    EXPECT_EQ(settings.leading[2], 0);
    EXPECT_EQ(settings.leading[3], 33554432);
    EXPECT_EQ(settings.text.Length(), 0u);
    EXPECT_EQ(settings.trailing[0], 4194304);
    EXPECT_EQ(settings.trailing[1], 16777216);
    EXPECT_EQ(Calls(), "");
}

TEST_F(FileWriterCalls, OpenCreatesAlwaysForReadingAndWriting) {
    trnmpa::CFileWriter writer;
    EXPECT_EQ(writer.Open(L"some.idx"), 1);
    EXPECT_EQ(Disk().path, L"some.idx");
    EXPECT_EQ(Disk().createArguments, (std::vector<std::int64_t>{0xC0000000, 3, 0, 2, 128, 0}));
}

TEST_F(FileWriterCalls, AShortWriteIsNone) {
    trnmpa::CFileWriter writer;
    ASSERT_EQ(writer.Open(L"some.idx"), 1);
    const Bytes bytes = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(writer.Write(bytes.data(), 8), 8);
    Disk().faultAt = Disk().calls.size();
    Disk().fault = test::Fault::kShort;
    EXPECT_EQ(writer.Write(bytes.data(), 8), 0);
    EXPECT_EQ(Disk().content.size(), 12u) << "four of them arrived";
    EXPECT_EQ(writer.GetPosition(), 12);
    Disk().faultAt = Disk().calls.size();
    Disk().fault = test::Fault::kRefuses;
    EXPECT_EQ(writer.Write(bytes.data(), 8), 0);
    EXPECT_EQ(writer.Write(bytes.data(), 8), 8);
}

TEST_F(FileWriterCalls, ARefusedFileIsNotOpen) {
    trnmpa::CFileWriter writer;
    Disk().faultAt = 0;
    EXPECT_EQ(writer.Open(L"some.idx"), 0);
    const std::uint8_t byte = 1;
    EXPECT_EQ(writer.Write(&byte, 1), 0);
    EXPECT_EQ(writer.GetPosition(), 0);
    EXPECT_EQ(writer.SetPosition(0), 0);
    EXPECT_EQ(writer.Close(), 1);
    EXPECT_EQ(Calls(), "c");
}

TEST_F(FileWriterCalls, ClosingGivesOneWhateverTheLibrarySays) {
    trnmpa::CFileWriter writer;
    ASSERT_EQ(writer.Open(L"some.idx"), 1);
    Disk().faultAt = 1;
    EXPECT_EQ(writer.Close(), 1);
    EXPECT_EQ(writer.Close(), 1);
    EXPECT_EQ(Calls(), "cx");
}

TEST_F(FileWriterCalls, OpeningAndDestructionCloseTheFormerFile) {
    {
        trnmpa::CFileWriter writer;
        ASSERT_EQ(writer.Open(L"one.idx"), 1);
        ASSERT_EQ(writer.Open(L"two.idx"), 1);
        EXPECT_EQ(Calls(), "cxc");
    }
    EXPECT_EQ(Calls(), "cxcx");
}

TEST_F(FileWriterCalls, PositionsAreCutTo32Bits) {
    trnmpa::CFileWriter writer;
    ASSERT_EQ(writer.Open(L"some.idx"), 1);
    EXPECT_EQ(writer.SetPosition(0xFFFFFFFF), 1);
    EXPECT_EQ(writer.GetPosition(), -1);
    EXPECT_EQ(writer.SetPosition(5), 1);
    EXPECT_EQ(writer.GetPosition(), 5);
}

} // namespace
