/// Slices of files of the family's storage, whose paths hold "dqs:\".
#include "reader/reader_streams.h"
#include "reader/slice_reader.h"
#include "support/test_files.h"

#include "trcommontoolsr/file_access.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace trnmpa;

class SliceStorage : public testing::Test {
protected:
    SliceStorage() { TRCT_FileAccess::SetStorageFolder(test::Wide(folder_.Path())); }
    ~SliceStorage() override { TRCT_FileAccess::SetStorageFolder(L""); }

    void SetUp() override { ASSERT_EQ(engine_.Initialize(), 1); }

    /// The results of SetInputFile and StartRead.
    std::pair<std::int32_t, std::int32_t> Open(const std::wstring& path) {
        const std::int32_t taken = engine_.SetInputFile(path);
        return {taken, engine_.StartRead()};
    }

    test::Pcm Read(std::uint32_t number) {
        PcmSlice slice;
        engine_.SeekTo(number);
        EXPECT_EQ(engine_.ReadFrame(slice), 1);
        test::Pcm pcm(static_cast<std::size_t>(slice.length) / sizeof(std::int16_t));
        if (slice.data != nullptr)
            std::memcpy(pcm.data(), slice.data, pcm.size() * sizeof(std::int16_t));
        return pcm;
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    KwMpAudioReader engine_;
};

constexpr std::pair<std::int32_t, std::int32_t> kOpened = {1, 1};
constexpr std::pair<std::int32_t, std::int32_t> kTakenAndNotOpened = {1, 0};

TEST_F(SliceStorage, AnIndexIsNeverUsed) {
    folder_.Add("song.mp3", stream_.bytes);
    folder_.Add("song.mp3.idx", test::IndexOf(stream_).ToBytes());
    const test::Pcm whole = test::Delivered(stream_.bytes, test::kDecoderDelay);
    for (const wchar_t* path : {L"dqs:\\song.mp3", L"server/dqs:\\song.mp3"}) {
        ASSERT_EQ(Open(path), kOpened);
        WAVEFORMATEX format = {};
        engine_.GetOriginalStreamInfo(format);
        EXPECT_EQ(format.cbSize, 0) << "18 with an index";
        for (const std::uint32_t number : {0u, 1u, 7u, 3u}) {
            const auto start = whole.begin() + 2 * 1764 * static_cast<std::ptrdiff_t>(number);
            EXPECT_EQ(Read(number), test::Pcm(start, start + 2 * 1764)) << number;
        }
        std::uint32_t position = 99;
        EXPECT_EQ(engine_.PositionByTime(0, position), 1);
        EXPECT_EQ(position, 0u) << "the second frame's place with an index";
    }
}

TEST_F(SliceStorage, PathsAreTakenWithoutALook) {
    EXPECT_EQ(Open(L"dqs:\\missing.mp3"), kTakenAndNotOpened);
    EXPECT_EQ(Open(L"dqs:\\"), kTakenAndNotOpened);
    folder_.Add("song.mp3", stream_.bytes);
    ASSERT_EQ(Open(L"dqs:\\song.mp3"), kOpened);
    TRCT_FileAccess::SetStorageFolder(L"");
    EXPECT_EQ(Open(L"dqs:\\song.mp3"), kTakenAndNotOpened) << "no storage";
    EXPECT_EQ(engine_.SetInputFile(L"DQS:\\song.mp3"), 0) << "an ordinary path, and no such file";
}

} // namespace
