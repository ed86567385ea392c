#include "fileio/frame_buffer_reader.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using trnmpa::CMpAudioFrameBufferReader;

constexpr std::int64_t kFileBytes = 160;

/// What only one of the two back ends does.
class BackEnds : public testing::Test {
protected:
    ~BackEnds() override { TRCT_FileAccess::SetStorageFolder(L""); }

    test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(kFileBytes);
    const std::wstring path_ = test::Wide(scratch_.Add("a.mp3", content_));
    Bytes buffer_ = Bytes(100);
};

TEST_F(BackEnds, FileAccessReadsAllOrNothing) {
    CMpAudioFrameBufferReader source;
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.SetPosition(100), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 100), 0u);
    EXPECT_EQ(source.SetPosition(100), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 60), 60u);
}

TEST_F(BackEnds, EasyFileReadsWhatIsLeft) {
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.SetPosition(100), 100);
    EXPECT_EQ(source.Read(buffer_.data(), 100), 60u);
    EXPECT_TRUE(std::equal(buffer_.begin(), buffer_.begin() + 60, content_.begin() + 100));
    EXPECT_EQ(source.Read(buffer_.data(), 100), 0u);
}

TEST_F(BackEnds, FileAccessSaysWhetherItMoved) {
    CMpAudioFrameBufferReader source;
    EXPECT_EQ(source.SetPosition(0), 0);
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.SetPosition(0), 1);
    EXPECT_EQ(source.SetPosition(1000), 1);
    EXPECT_EQ(source.SetPosition(-1), 0);
}

TEST_F(BackEnds, EasyFileGivesThePositionBack) {
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(path_), 1);
    for (const std::int64_t position : {0, 5, 1000, -5})
        EXPECT_EQ(source.SetPosition(position), position);
}

TEST_F(BackEnds, FileAccessFailsToOpenWhatIsNotThere) {
    CMpAudioFrameBufferReader source;
    const std::wstring missing = test::Wide(scratch_.Path() / "missing.mp3");
    EXPECT_EQ(source.Open(missing), 0);
    EXPECT_EQ(source.Path(), L"");
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.Open(missing), 0);
    EXPECT_EQ(source.Open(test::Wide(scratch_.Path())), 0);
    EXPECT_EQ(source.Open(L""), 0);
    EXPECT_EQ(source.Path(), path_);
    EXPECT_EQ(source.Read(buffer_.data(), 1), 0u);
}

TEST_F(BackEnds, EasyFileNeverFailsToOpen) {
    for (const std::wstring& path :
         {test::Wide(scratch_.Path() / "missing.mp3"), test::Wide(scratch_.Path()), std::wstring()}) {
        CMpAudioFrameBufferReader source;
        source.UseEasyFile(0, 64);
        EXPECT_EQ(source.Open(path), 1);
        EXPECT_EQ(source.Path(), path);
        EXPECT_EQ(source.Read(buffer_.data(), 1), 0u);
        EXPECT_EQ(source.GetLength(), 0);
        EXPECT_EQ(source.SetPosition(5), 5);
        EXPECT_EQ(source.GetPosition(), 0);
    }
}

TEST_F(BackEnds, CloseForgetsTheEasyFileButKeepsTheChoice) {
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(path_), 1);
    source.Close();
    EXPECT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 1), 0u);
    EXPECT_EQ(source.GetLength(), 0);
    EXPECT_EQ(source.GetPosition(), 0);
    EXPECT_EQ(source.SetPosition(5), -1);
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 100), 100u);
}

/// What was read with its block stays as it was when the file changes; the next block is read anew. Blocks
/// begin with 8 KiB and double from one to the next up to their size, which is then 8 KiB away from its
/// multiples.
TEST_F(BackEnds, BlockSizeIsInKiB) {
    constexpr std::int64_t kFirstBytes = 8 * 1024;
    for (const std::uint32_t kiB : {64u, 512u}) {
        const std::int64_t blockBytes = std::int64_t{kiB} * 1024;
        const std::int64_t wholeBlock = blockBytes - kFirstBytes;
        const auto fileBytes = static_cast<std::size_t>(2 * blockBytes);
        const fs::path path = scratch_.Add("changing.mp3", Bytes(fileBytes, 'a'));
        CMpAudioFrameBufferReader source;
        source.UseEasyFile(0, kiB);
        ASSERT_EQ(source.Open(test::Wide(path)), 1);
        for (std::int64_t position = 0; position <= wholeBlock; position += 64)
            ASSERT_EQ(source.Read(buffer_.data(), 64), 64u);
        test::WriteFile(path, Bytes(fileBytes, 'b'));
        source.SetPosition(wholeBlock + blockBytes - 1);
        ASSERT_EQ(source.Read(buffer_.data(), 2), 2u);
        EXPECT_EQ(buffer_[0], 'a') << kiB;
        EXPECT_EQ(buffer_[1], 'b') << kiB;
    }
}

TEST_F(BackEnds, BlockSizesMaySaturate) {
    for (const std::uint32_t kiB : {0u, 1u, 64u, 512u, 4096u, 4194303u, 4194304u, 0xFFFFFFFFu}) {
        CMpAudioFrameBufferReader source;
        EXPECT_EQ(source.UseEasyFile(-7, kiB), 1);
        ASSERT_EQ(source.Open(path_), 1);
        EXPECT_EQ(source.Read(buffer_.data(), 100), 100u) << kiB;
    }
}

TEST_F(BackEnds, ABlockSizeOfZeroAndOfManyGiveTheSameBytes) {
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 1);
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 10), 10u);
    source.UseEasyFile(0, 512);
    EXPECT_EQ(source.GetPosition(), 10);
    EXPECT_EQ(source.Read(buffer_.data(), 10), 10u);
    EXPECT_TRUE(std::equal(buffer_.begin(), buffer_.begin() + 10, content_.begin() + 10));
}

class StoragePaths : public BackEnds {
protected:
    StoragePaths() {
        fs::create_directories(storage_ / "sub");
        test::WriteFile(storage_ / "sub" / "clip.mp3", content_);
    }

    const fs::path storage_ = scratch_.Path() / "storage";
};

TEST_F(StoragePaths, PrefixIsFoundAnywhereInThePath) {
    EXPECT_TRUE(trnmpa::IsStoragePath(L"dqs:\\a"));
    EXPECT_TRUE(trnmpa::IsStoragePath(L"C:\\x\\dqs:\\a"));
    EXPECT_TRUE(trnmpa::IsStoragePath(L"adqs:\\"));
    EXPECT_FALSE(trnmpa::IsStoragePath(L"DQS:\\a"));
    EXPECT_FALSE(trnmpa::IsStoragePath(L"dqs:/a"));
    EXPECT_FALSE(trnmpa::IsStoragePath(L"dqs:"));
    EXPECT_FALSE(trnmpa::IsStoragePath(L""));
}

TEST_F(StoragePaths, GoThroughFileAccessAfterUseEasyFile) {
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(L"dqs:\\sub\\clip.mp3"), 1);
    EXPECT_EQ(source.SetPosition(100), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 100), 0u) << "all or nothing: the other back end is in use";
    EXPECT_EQ(source.SetPosition(0), 1);
    EXPECT_EQ(source.Read(buffer_.data(), 100), 100u);
}

TEST_F(StoragePaths, FileAccessStaysInUseForLaterOpens) {
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(L"dqs:\\sub\\clip.mp3"), 1);
    EXPECT_EQ(source.Open(test::Wide(scratch_.Path() / "missing.mp3")), 0);
    source.UseEasyFile(0, 64);
    ASSERT_EQ(source.Open(path_), 1);
    source.SetPosition(100);
    EXPECT_EQ(source.Read(buffer_.data(), 100), 60u);
}

TEST_F(StoragePaths, FailWithoutAStorageFolder) {
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    EXPECT_EQ(source.Open(L"dqs:\\sub\\clip.mp3"), 0);
    EXPECT_EQ(source.Path(), L"");
}

TEST_F(StoragePaths, UpperCaseKeepsTheEasyFile) {
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    CMpAudioFrameBufferReader source;
    source.UseEasyFile(0, 64);
    EXPECT_EQ(source.Open(L"DQS:\\sub\\clip.mp3"), 1) << "that back end never fails";
    EXPECT_EQ(source.Read(buffer_.data(), 1), 0u);
}

} // namespace
