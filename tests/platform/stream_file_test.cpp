#include "os/stream_file.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>

namespace {

namespace fs = std::filesystem;
using os::StreamAccess;
using os::StreamFile;
using os::StreamSharing;
using test::Bytes;

class StreamFileTest : public testing::Test {
protected:
    const test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(100);
    const std::wstring path_ = test::Wide(scratch_.Add("a.bin", content_));
    StreamFile file_;
    Bytes bytes_ = Bytes(10);
};

TEST_F(StreamFileTest, ClosedFileGivesNothing) {
    EXPECT_FALSE(file_.IsOpen());
    EXPECT_FALSE(file_.Close());
    EXPECT_EQ(file_.Read(bytes_), std::nullopt);
    EXPECT_EQ(file_.Write(bytes_), std::nullopt);
    EXPECT_EQ(file_.Seek(0, 0), -1);
}

TEST_F(StreamFileTest, EachSharingOpensAFileThatNobodyHas) {
    for (const auto sharing : {StreamSharing::kNone, StreamSharing::kReaders, StreamSharing::kWriters,
                               StreamSharing::kReadersAndWriters}) {
        for (const auto access : {StreamAccess::kRead, StreamAccess::kWrite, StreamAccess::kReadWrite}) {
            ASSERT_TRUE(file_.Open(path_, access, sharing));
            EXPECT_EQ(file_.Seek(0, 2), 100);
        }
    }
    EXPECT_TRUE(file_.Close());
    EXPECT_FALSE(file_.IsOpen());
}

TEST_F(StreamFileTest, AccessIsKept) {
    ASSERT_TRUE(file_.Open(path_, StreamAccess::kRead, StreamSharing::kNone));
    EXPECT_EQ(file_.Read(bytes_), 10u);
    EXPECT_EQ(bytes_, Bytes(content_.begin(), content_.begin() + 10));
    EXPECT_EQ(file_.Write(bytes_), std::nullopt);
    EXPECT_EQ(file_.Seek(0, 1), 10) << "the error moved nothing";
    ASSERT_TRUE(file_.Open(path_, StreamAccess::kWrite, StreamSharing::kNone));
    EXPECT_EQ(file_.Read(bytes_), std::nullopt);
    EXPECT_EQ(file_.Write(bytes_), 10u);
}

TEST_F(StreamFileTest, ReadingAndWritingShareThePosition) {
    ASSERT_TRUE(file_.Open(path_, StreamAccess::kReadWrite, StreamSharing::kNone));
    const Bytes news(5, 0xAA);
    EXPECT_EQ(file_.Read(bytes_), 10u);
    EXPECT_EQ(file_.Write(news), 5u);
    EXPECT_EQ(file_.Read(bytes_), 10u);
    EXPECT_EQ(bytes_, Bytes(content_.begin() + 15, content_.begin() + 25));
    EXPECT_EQ(file_.Seek(-4, 2), 96);
    EXPECT_EQ(file_.Read(bytes_), 4u);
    EXPECT_EQ(file_.Read(bytes_), 0u);
    EXPECT_EQ(file_.Write(news), 5u) << "at the end it grows";
    EXPECT_EQ(file_.Seek(0, 2), 105);
    EXPECT_EQ(file_.Read({}), 0u);
    EXPECT_EQ(file_.Write({}), 0u);
}

TEST_F(StreamFileTest, CreateEmptiesOrMakes) {
    ASSERT_TRUE(file_.Create(path_));
    EXPECT_EQ(file_.Seek(0, 2), 0);
    const std::wstring fresh = test::Wide(scratch_.Path() / u8"Ünï 日本.bin");
    ASSERT_TRUE(file_.Create(fresh));
    EXPECT_EQ(file_.Write(content_), 100u);
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(test::ReadFile(test::Plain(path_)), Bytes{});
    EXPECT_EQ(test::ReadFile(test::Plain(fresh)), content_);
    EXPECT_FALSE(file_.Create(test::Wide(scratch_.Path() / "nowhere" / "a.bin")));
}

TEST_F(StreamFileTest, FailedOpenClosesTheEarlierFile) {
    ASSERT_TRUE(file_.Open(path_, StreamAccess::kReadWrite, StreamSharing::kNone));
    EXPECT_FALSE(file_.Open(path_ + L"x", StreamAccess::kRead, StreamSharing::kNone));
    EXPECT_FALSE(file_.IsOpen());
    ASSERT_TRUE(file_.Open(path_, StreamAccess::kReadWrite, StreamSharing::kNone));
    EXPECT_FALSE(file_.Create(test::Wide(scratch_.Path())));
    EXPECT_FALSE(file_.IsOpen());
    EXPECT_TRUE(fs::remove(test::Plain(path_)));
}

TEST_F(StreamFileTest, BeyondFourGibibytes) {
    constexpr std::int64_t kFar = 0x1FFFFFFFF;
    ASSERT_TRUE(file_.Open(path_, StreamAccess::kRead, StreamSharing::kNone));
    EXPECT_EQ(file_.Seek(kFar, 0), kFar) << "its low half is what marks a failure on Windows";
    EXPECT_EQ(file_.Seek(0, 1), kFar);
    EXPECT_EQ(file_.Read(bytes_), 0u);
    EXPECT_EQ(file_.Seek(-kFar - 1, 1), -1);
    EXPECT_EQ(file_.Seek(0, 3), -1);
    EXPECT_EQ(file_.Seek(0, 1), kFar);
}

} // namespace
