#include "fileio/file_stream.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using namespace trnmpa; // modes and origins by the dozen

class FileStream : public testing::Test {
protected:
    std::wstring AddFile(const fs::path& name = "a.mp3") const {
        return test::Wide(scratch_.Add(name, content_));
    }
    Bytes Read(std::uint32_t count) {
        Bytes bytes(count);
        bytes.resize(stream_.Read(bytes.data(), count));
        return bytes;
    }

    const test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(100);
    CFileStream stream_;
};

TEST_F(FileStream, ClosedGivesZero) {
    Bytes bytes(10);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(stream_.Close(), 0);
        EXPECT_EQ(stream_.Read(bytes.data(), 10), 0u);
        EXPECT_EQ(stream_.Read(nullptr, 10), 0u);
        EXPECT_EQ(stream_.Write(bytes.data(), 10), 0u);
        EXPECT_EQ(stream_.Write(nullptr, 10), 0u);
        for (const std::uint32_t origin : {kSeekFromStart, kSeekFromPosition, kSeekFromEnd, 9u})
            EXPECT_EQ(stream_.Seek(5, origin), 0);
        EXPECT_EQ(stream_.GetPosition(), 0);
        EXPECT_EQ(stream_.GetLength(), 0);
        if (round == 0) {
            EXPECT_EQ(stream_.Open(AddFile(), kStreamRead), 1);
            EXPECT_EQ(stream_.Close(), 1);
        }
    }
}

TEST_F(FileStream, ReadsUpToTheEnd) {
    ASSERT_EQ(stream_.Open(AddFile(), kStreamRead), 1);
    EXPECT_EQ(Read(60), Bytes(content_.begin(), content_.begin() + 60));
    EXPECT_EQ(stream_.GetPosition(), 60);
    EXPECT_EQ(Read(60), Bytes(content_.begin() + 60, content_.end()));
    EXPECT_EQ(Read(60), Bytes{});
    EXPECT_EQ(stream_.GetPosition(), 100);
}

TEST_F(FileStream, CreateMakesAnEmptyFileToReadAndWrite) {
    const std::wstring path = AddFile();
    ASSERT_EQ(stream_.Open(path, kStreamCreate), 1);
    EXPECT_EQ(stream_.GetLength(), 0);
    EXPECT_EQ(stream_.Write(content_.data(), 10), 10u);
    EXPECT_EQ(stream_.GetPosition(), 10);
    EXPECT_EQ(stream_.Seek(2, kSeekFromStart), 2);
    EXPECT_EQ(Read(20), Bytes(content_.begin() + 2, content_.begin() + 10));
    EXPECT_EQ(stream_.Close(), 1);
    EXPECT_EQ(test::ReadFile(test::Plain(path)), Bytes(content_.begin(), content_.begin() + 10));
    const fs::path fresh = scratch_.Path() / "fresh.mp3";
    EXPECT_EQ(stream_.Open(test::Wide(fresh), kStreamCreate), 1);
    EXPECT_TRUE(fs::exists(fresh));
}

TEST_F(FileStream, OtherModesNeedTheFile) {
    const fs::path missing = scratch_.Path() / "missing.mp3";
    for (const std::uint32_t mode : {kStreamRead, kStreamWrite, kStreamReadWrite, 0x1FFFFu, 0xFFFEu, 0xFFF0u})
        EXPECT_EQ(stream_.Open(test::Wide(missing), mode), 0) << mode;
    EXPECT_FALSE(fs::exists(missing));
}

TEST_F(FileStream, AccessIsTheLowTwoBits) {
    const std::wstring path = AddFile();
    std::uint8_t byte = 0;
    for (const std::uint32_t rest : {0u, 0x40u, 0xFF00u, 0xFFFFFF0Cu}) {
        ASSERT_EQ(stream_.Open(path, kStreamRead | rest), 1);
        EXPECT_EQ(stream_.Read(&byte, 1), 1u);
        EXPECT_EQ(stream_.Write(&byte, 1), kTransferFailed);
        ASSERT_EQ(stream_.Open(path, kStreamWrite | rest), 1);
        EXPECT_EQ(stream_.Read(&byte, 1), kTransferFailed);
        EXPECT_EQ(stream_.Write(&byte, 1), 1u);
        ASSERT_EQ(stream_.Open(path, kStreamReadWrite | rest), 1);
        EXPECT_EQ(stream_.Read(&byte, 1), 1u);
        EXPECT_EQ(stream_.Write(&byte, 1), 1u);
        EXPECT_EQ(stream_.GetLength(), 100) << "nothing was cut";
        EXPECT_EQ(stream_.Open(path, 3 | rest), 0) << "no access";
        EXPECT_EQ(stream_.Close(), 0);
    }
}

TEST_F(FileStream, OpensAnew) {
    const std::wstring first = AddFile("first.mp3");
    const std::wstring second = AddFile("second.mp3");
    ASSERT_EQ(stream_.Open(first, kStreamReadWrite), 1);
    stream_.Seek(50, kSeekFromStart);
    ASSERT_EQ(stream_.Open(second, kStreamReadWrite), 1);
    EXPECT_EQ(stream_.GetPosition(), 0);
    EXPECT_TRUE(fs::remove(test::Plain(first))) << "it was closed";
    EXPECT_EQ(stream_.Open(first, kStreamRead), 0);
    EXPECT_EQ(stream_.Close(), 0) << "the earlier one is closed all the same";
    EXPECT_TRUE(fs::remove(test::Plain(second)));
}

TEST_F(FileStream, SeeksFromEachOrigin) {
    ASSERT_EQ(stream_.Open(AddFile(), kStreamRead), 1);
    EXPECT_EQ(stream_.Seek(30, kSeekFromStart), 30);
    EXPECT_EQ(stream_.Seek(-10, kSeekFromPosition), 20);
    EXPECT_EQ(stream_.Seek(5, kSeekFromPosition), 25);
    EXPECT_EQ(stream_.Seek(-1, kSeekFromEnd), 99);
    EXPECT_EQ(Read(5), Bytes{content_[99]});
    EXPECT_EQ(stream_.Seek(10, kSeekFromEnd), 110) << "behind the end";
    EXPECT_EQ(Read(5), Bytes{});
}

TEST_F(FileStream, PositionsAreWiderThan32Bits) {
    ASSERT_EQ(stream_.Open(AddFile(), kStreamRead), 1);
    for (const std::int64_t position :
         {std::int64_t{0x7FFFFFFF}, std::int64_t{0x80000000}, std::int64_t{0xFFFFFFFF},
          std::int64_t{0x100000000}, std::int64_t{0x1FFFFFFFF}, std::int64_t{1} << 40}) {
        EXPECT_EQ(stream_.Seek(position, kSeekFromStart), position);
        EXPECT_EQ(stream_.GetPosition(), position);
        EXPECT_EQ(Read(5), Bytes{});
        EXPECT_EQ(stream_.GetLength(), 100);
        EXPECT_EQ(stream_.Seek(1 - position, kSeekFromPosition), 1);
    }
}

TEST_F(FileStream, SeeksThatFailMoveNothing) {
    using Limits = std::numeric_limits<std::int64_t>;
    ASSERT_EQ(stream_.Open(AddFile(), kStreamRead), 1);
    stream_.Seek(7, kSeekFromStart);
    EXPECT_EQ(stream_.Seek(-1, kSeekFromStart), -1);
    EXPECT_EQ(stream_.Seek(Limits::min(), kSeekFromStart), -1);
    EXPECT_EQ(stream_.Seek(-8, kSeekFromPosition), -1);
    EXPECT_EQ(stream_.Seek(Limits::max(), kSeekFromPosition), -1);
    EXPECT_EQ(stream_.Seek(-101, kSeekFromEnd), -1);
    EXPECT_EQ(stream_.Seek(Limits::max(), kSeekFromEnd), -1);
    for (const std::uint32_t origin : {3u, 4u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(stream_.Seek(1, origin), -1) << origin;
    EXPECT_EQ(stream_.GetPosition(), 7);
    EXPECT_EQ(Read(1), Bytes{content_[7]});
}

TEST_F(FileStream, LengthLeavesThePosition) {
    ASSERT_EQ(stream_.Open(AddFile(), kStreamReadWrite), 1);
    for (const std::int64_t position : {0, 33, 100, 500}) {
        stream_.Seek(position, kSeekFromStart);
        EXPECT_EQ(stream_.GetLength(), 100);
        EXPECT_EQ(stream_.GetPosition(), position);
    }
    EXPECT_EQ(stream_.Write(content_.data(), 1), 1u);
    EXPECT_EQ(stream_.GetLength(), 501);
}

TEST_F(FileStream, NullBuffersAreErrorsThatMoveNothing) {
    const std::wstring path = AddFile();
    ASSERT_EQ(stream_.Open(path, kStreamReadWrite), 1);
    for (const std::uint32_t count : {1u, 0xFFFFFFFFu}) {
        EXPECT_EQ(stream_.Read(nullptr, count), kTransferFailed);
        EXPECT_EQ(stream_.Write(nullptr, count), kTransferFailed);
    }
    EXPECT_EQ(stream_.Read(nullptr, 0), 0u);
    EXPECT_EQ(stream_.Write(nullptr, 0), 0u);
    EXPECT_EQ(stream_.GetPosition(), 0);
    stream_.Close();
    EXPECT_EQ(test::ReadFile(test::Plain(path)), content_);
}

TEST_F(FileStream, RefusesWhatIsNoFile) {
    const std::wstring path = AddFile();
    const std::wstring folder = test::Wide(scratch_.Path());
    for (const std::uint32_t mode : {kStreamRead, kStreamWrite, kStreamReadWrite, kStreamCreate}) {
        EXPECT_EQ(stream_.Open(folder, mode), 0);
        EXPECT_EQ(stream_.Open(L"", mode), 0);
        EXPECT_EQ(stream_.Open(path + L'\0', mode), 0);
    }
    EXPECT_EQ(test::ReadFile(test::Plain(path)), content_);
}

TEST_F(FileStream, UnicodeAndLongPaths) {
    const test::LongPathFile longPath(content_);
    std::vector<std::wstring> paths = {longPath.Path()};
    for (const fs::path& name : test::UnicodeNames())
        paths.push_back(AddFile(name));
    for (const std::wstring& path : paths) {
        ASSERT_EQ(stream_.Open(path, kStreamRead | kStreamShareRead), 1);
        EXPECT_EQ(Read(200), content_);
        ASSERT_EQ(stream_.Open(path, kStreamCreate), 1);
        EXPECT_EQ(stream_.Write(content_.data(), 5), 5u);
        EXPECT_EQ(stream_.GetLength(), 5);
    }
    stream_.Close();
}

} // namespace
