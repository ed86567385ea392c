#include "fileio/frame_buffer_reader.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using trnmpa::CMpAudioFrameBufferReader;

constexpr std::int64_t kFileBytes = 160;

enum class BackEnd { kFileAccess, kEasyFile };

/// What both back ends do alike.
class FrameBufferReader : public testing::TestWithParam<BackEnd> {
protected:
    void Choose(CMpAudioFrameBufferReader& source) const {
        if (GetParam() == BackEnd::kEasyFile) {
            ASSERT_EQ(source.UseEasyFile(0, 64), 1);
        }
    }

    test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(kFileBytes);
    const std::wstring path_ = test::Wide(scratch_.Add("a.mp3", content_));
};

TEST_P(FrameBufferReader, ReadsAndMoves) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.Path(), path_);
    EXPECT_EQ(source.GetLength(), kFileBytes);
    EXPECT_EQ(source.GetPosition(), 0);
    Bytes buffer(100);
    EXPECT_EQ(source.Read(buffer.data(), 100), 100u);
    EXPECT_EQ(buffer, Bytes(content_.begin(), content_.begin() + 100));
    EXPECT_EQ(source.GetPosition(), 100);
    source.SetPosition(7);
    EXPECT_EQ(source.GetPosition(), 7);
    EXPECT_EQ(source.Read(buffer.data(), 1), 1u);
    EXPECT_EQ(buffer[0], content_[7]);
    EXPECT_EQ(source.Close(), 1);
}

TEST_P(FrameBufferReader, ServesTheDecodersInterface) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    IAMPBitsource* interface = &source;
    Bytes buffer(kFileBytes);
    EXPECT_EQ(interface->Read(buffer.data(), kFileBytes), static_cast<unsigned>(kFileBytes));
    EXPECT_EQ(buffer, content_);
}

TEST_P(FrameBufferReader, CountsBelowOneReadNothing) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    Bytes buffer(10, 0xEE);
    for (const int count : {0, -1, std::numeric_limits<int>::min()})
        EXPECT_EQ(source.Read(buffer.data(), count), 0u);
    EXPECT_EQ(source.Read(nullptr, 10), 0u);
    EXPECT_EQ(source.GetPosition(), 0);
    EXPECT_EQ(buffer, Bytes(10, 0xEE));
}

TEST_P(FrameBufferReader, NeverTouchesWhatIsBehindTheBytesRead) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    source.SetPosition(150);
    const auto buffer = std::make_unique<std::uint8_t[]>(20);
    std::fill_n(buffer.get(), 20, std::uint8_t{0xEE});
    source.Read(buffer.get(), 20);
    EXPECT_TRUE(std::all_of(buffer.get() + 10, buffer.get() + 20, [](auto byte) { return byte == 0xEE; }));
}

TEST_P(FrameBufferReader, PositionsBelowZeroMoveNothing) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    source.SetPosition(7);
    source.SetPosition(-1);
    EXPECT_EQ(source.GetPosition(), 7);
    source.SetPosition(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(source.GetPosition(), 7);
}

TEST_P(FrameBufferReader, BehindTheEndReadsNothing) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    std::uint8_t byte = 0;
    for (const std::int64_t position : {kFileBytes, std::int64_t{1} << 31, std::int64_t{1} << 40,
                                        std::numeric_limits<std::int64_t>::max()}) {
        source.SetPosition(position);
        EXPECT_EQ(source.GetPosition(), position);
        EXPECT_EQ(source.Read(&byte, 1), 0u);
    }
}

TEST_P(FrameBufferReader, NothingIsOpenAfterClose) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    std::uint8_t byte = 0;
    EXPECT_EQ(source.Close(), 1);
    Choose(source);
    ASSERT_EQ(source.Open(path_), 1);
    EXPECT_EQ(source.Close(), 1);
    EXPECT_EQ(source.Close(), 1);
    EXPECT_EQ(source.Read(&byte, 1), 0u);
    EXPECT_EQ(source.GetPosition(), 0);
    EXPECT_EQ(source.GetLength(), 0);
}

TEST_P(FrameBufferReader, OpensAgain) {
    CMpAudioFrameBufferReader source;
    const Bytes other(30, 0x5A);
    const std::wstring otherPath = test::Wide(scratch_.Add("b.mp3", other));
    for (const bool close : {true, false}) {
        Choose(source);
        ASSERT_EQ(source.Open(path_), 1);
        source.SetPosition(50);
        if (close)
            source.Close();
        Choose(source);
        ASSERT_EQ(source.Open(otherPath), 1);
        EXPECT_EQ(source.Path(), otherPath);
        Bytes buffer(30);
        EXPECT_EQ(source.GetPosition(), 0);
        EXPECT_EQ(source.Read(buffer.data(), 30), 30u);
        EXPECT_EQ(buffer, other);
    }
}

TEST_P(FrameBufferReader, EmptyFile) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    ASSERT_EQ(source.Open(test::Wide(scratch_.Add("empty.mp3", {}))), 1);
    std::uint8_t byte = 0;
    EXPECT_EQ(source.GetLength(), 0);
    EXPECT_EQ(source.Read(&byte, 1), 0u);
}

TEST_P(FrameBufferReader, UnicodeAndLongPaths) {
    const test::LongPathFile longPath(content_);
    std::vector<std::wstring> paths = {longPath.Path()};
    for (const fs::path& name : test::UnicodeNames())
        paths.push_back(test::Wide(scratch_.Add(name, content_)));
    for (const std::wstring& path : paths) {
        CMpAudioFrameBufferReader source;
        Choose(source);
        ASSERT_EQ(source.Open(path), 1);
        Bytes buffer(kFileBytes);
        EXPECT_EQ(source.Read(buffer.data(), kFileBytes), static_cast<unsigned>(kFileBytes));
        EXPECT_EQ(buffer, content_);
    }
}

TEST_P(FrameBufferReader, RandomAccess) {
    CMpAudioFrameBufferReader source;
    Choose(source);
    const Bytes content = test::NumberedBytes(200'000);
    ASSERT_EQ(source.Open(test::Wide(scratch_.Add("big.mp3", content))), 1);
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t start = random() % content.size();
        const std::size_t count = std::min<std::size_t>(random() % 3000 + 1, content.size() - start);
        Bytes buffer(count);
        source.SetPosition(static_cast<std::int64_t>(start));
        ASSERT_EQ(source.Read(buffer.data(), static_cast<int>(count)), count);
        ASSERT_TRUE(
            std::equal(buffer.begin(), buffer.end(), content.begin() + static_cast<std::ptrdiff_t>(start)));
    }
}

INSTANTIATE_TEST_SUITE_P(BackEnds, FrameBufferReader,
                         testing::Values(BackEnd::kFileAccess, BackEnd::kEasyFile), [](const auto& instance) {
                             return instance.param == BackEnd::kEasyFile ? "EasyFile" : "FileAccess";
                         });

/// What only one of them does.
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

/// What was read with its block stays as it was when the file changes; the next block is read anew.
TEST_F(BackEnds, BlockSizeIsInKiB) {
    for (const std::uint32_t kiB : {64u, 512u}) {
        const std::int64_t blockBytes = std::int64_t{kiB} * 1024;
        const auto fileBytes = static_cast<std::size_t>(blockBytes) + 1;
        const fs::path path = scratch_.Add("changing.mp3", Bytes(fileBytes, 'a'));
        CMpAudioFrameBufferReader source;
        source.UseEasyFile(0, kiB);
        ASSERT_EQ(source.Open(test::Wide(path)), 1);
        ASSERT_EQ(source.Read(buffer_.data(), 1), 1u);
        test::WriteFile(path, Bytes(fileBytes, 'b'));
        source.SetPosition(blockBytes - 1);
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

TEST(InfoTagKind, FindsTheTextAtItsOffset) {
    const CMpAudioFrameBufferReader source;
    Bytes frame(417, 0);
    std::copy_n("Info", 4, frame.begin() + 36);
    const auto length = static_cast<std::uint32_t>(frame.size());
    EXPECT_EQ(source.InfoTagKind(frame.data(), length), 2);
    EXPECT_EQ(source.InfoTagKind(frame.data(), 40), 2);
}

TEST(InfoTagKind, OtherTextsAndPlacesDoNotCount) {
    const CMpAudioFrameBufferReader source;
    for (const char* text : {"Xing", "info", "INFO", "VBRI", "Inf\0"}) {
        Bytes frame(417, 0);
        std::copy_n(text, 4, frame.begin() + 36);
        EXPECT_EQ(source.InfoTagKind(frame.data(), 417), 1) << text;
    }
    for (const int offset : {13, 21, 35, 37}) {
        Bytes frame(417, 0);
        std::copy_n("Info", 4, frame.begin() + offset);
        EXPECT_EQ(source.InfoTagKind(frame.data(), 417), 1) << offset;
    }
}

TEST(InfoTagKind, ShortFramesAreNotReadBeyondTheirEnd) {
    const CMpAudioFrameBufferReader source;
    for (std::uint32_t length = 0; length < 40; ++length) {
        // Exactly so many bytes, for the sanitizer to see.
        const Bytes frame(length, 'I');
        EXPECT_EQ(source.InfoTagKind(frame.data(), length), 1) << length;
    }
    EXPECT_EQ(source.InfoTagKind(nullptr, 417), 1);
}

static_assert(std::is_base_of_v<IAMPBitsource, CMpAudioFrameBufferReader>);
static_assert(std::has_virtual_destructor_v<CMpAudioFrameBufferReader>);

TEST(FrameBufferReaderLife, EndsThroughItsVirtualDestructor) {
    const test::ScratchFolder scratch;
    const fs::path path = scratch.Add("a.mp3", test::NumberedBytes(10));
    auto source = std::make_unique<CMpAudioFrameBufferReader>();
    source->UseEasyFile(0, 64);
    ASSERT_EQ(source->Open(test::Wide(path)), 1);
    source.reset();
    EXPECT_TRUE(fs::remove(path));
}

} // namespace
