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

/// What both back ends do alike; back_ends_test.cpp has what only one of them does.
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
