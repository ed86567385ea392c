/// The index builder of the reader object, through the loaded module, and what its index is good for.
#include "reader/reader_streams.h"
#include "support/loaded_module.h"

#include "trnmediadet/media_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

namespace fs = std::filesystem;
using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;
using test::Bytes;
using test::ReadPcm;

constexpr std::uint32_t kIndexBuilder = 1;
constexpr std::uint32_t kProbe = 2;
constexpr std::uint32_t kSampleReader = 4;
constexpr std::uint32_t kAlternate = 8;

class PluginIndex : public testing::Test {
protected:
    fs::path IndexOf(const fs::path& media) const { return media.string() + ".idx"; }

    /// The record's 40 bytes; none when there is no builder.
    static Bytes Progress(PLUGIN_FILE_READER_CLASS& reader) {
        Bytes record(40, 0x55);
        PLUGIN_INDEX_PROGRESS progress;
        static_assert(sizeof progress == 40);
        std::memcpy(&progress, record.data(), record.size());
        if (reader.GetIndexProgress(1, &progress) != 1)
            return {};
        std::memcpy(record.data(), &progress, record.size());
        return record;
    }
    static Bytes ExpectedProgress(std::uint8_t percent, std::uint8_t frames, std::uint8_t state) {
        Bytes record(40);
        record[0] = percent;
        record[4] = frames;
        record[32] = state;
        return record;
    }
    static bool HasBuilder(PLUGIN_FILE_READER_CLASS& reader) { return !Progress(reader).empty(); }

    std::int32_t Open(const fs::path& media, std::uint32_t flags) {
        return reader_->OpenFile(test::Wide(media), flags);
    }
    void Build(const fs::path& media) {
        ASSERT_EQ(Open(media, kIndexBuilder), 1);
        ASSERT_EQ(reader_->CreateFileIndex(), 1);
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const test::bitstream::Stream changing_ = test::ChangingStream();
    const fs::path song_ = folder_.Add("song.mp3", stream_.bytes);
    const fs::path varying_ = folder_.Add("varying.mp3", changing_.bytes);
    const fs::path missing_ = folder_.Path() / "missing.mp3";
    const fs::path noise_ = folder_.Add("noise.mp3", Bytes(10000, 0));
    const fs::path xing_ =
        folder_.Add("xing.mp3", test::Joined({test::DescribingFrame(stream_, "Xing"), stream_.bytes}));
    test::LoadedModule module_;
    const Reader reader_ = module_.CreateReader();
};

} // namespace

TEST_F(PluginIndex, IsBuiltAndReported) {
    ASSERT_EQ(Open(song_, kIndexBuilder), 1);
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), Bytes(28));
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(0, 0, 0));
    EXPECT_EQ(reader_->CreateFileIndex(), 1);
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), test::IndexOf(stream_).ToBytes());
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(100, 19, 1));
    EXPECT_EQ(reader_->CancelIndexing(), 1);
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(100, 19, 3));
    EXPECT_EQ(reader_->CancelIndexing(), 1) << "again, without waiting for anything";
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), test::IndexOf(stream_).ToBytes());
}

TEST_F(PluginIndex, OtherProgressRecordsDoNotExist) {
    ASSERT_EQ(Open(song_, kIndexBuilder), 1);
    PLUGIN_INDEX_PROGRESS record;
    std::memset(&record, 0x55, sizeof record);
    const PLUGIN_INDEX_PROGRESS before = record;
    for (const std::int32_t kind : {0, 2, 3, 4, -1}) {
        EXPECT_EQ(reader_->GetIndexProgress(kind, &record), 0) << kind;
        EXPECT_EQ(reader_->GetIndexProgress(kind, nullptr), 0) << kind;
    }
    EXPECT_EQ(reader_->GetIndexProgress(1, nullptr), 0);
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);
}

TEST_F(PluginIndex, WithoutABuilderNothingIsDone) {
    ASSERT_EQ(Open(song_, kProbe | kSampleReader), 1);
    EXPECT_EQ(reader_->CreateFileIndex(), 0);
    EXPECT_FALSE(HasBuilder(*reader_));
    EXPECT_EQ(reader_->CancelIndexing(), 0);
    EXPECT_FALSE(fs::exists(IndexOf(song_)));
}

TEST_F(PluginIndex, TheThreeEnginesOpenTogether) {
    const test::Pcm whole = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
    for (const std::uint32_t flags :
         {kIndexBuilder | kProbe, kIndexBuilder | kSampleReader, kIndexBuilder | kAlternate,
          kIndexBuilder | kProbe | kSampleReader, 15u}) {
        fs::remove(IndexOf(song_));
        const Reader reader = module_.CreateReader();
        ASSERT_EQ(reader->OpenFile(test::Wide(song_), flags), 1) << flags;
        TRN_MEDIA_INFO2 info;
        EXPECT_EQ(reader->GetFileInfo(1, &info), (flags & kProbe) != 0 ? 1 : 0);
        if ((flags & (kSampleReader | kAlternate)) != 0) {
            EXPECT_EQ(ReadPcm(*reader, 0, 5000), test::Pcm(whole.begin(), whole.begin() + 10000))
                << "opened before the index was made";
        }
        EXPECT_EQ(reader->CreateFileIndex(), 1);
        EXPECT_EQ(test::ReadFile(IndexOf(song_)), test::IndexOf(stream_).ToBytes());
    }
}

TEST_F(PluginIndex, TheProbesTwoStopsBeforeTheBuilder) {
    for (const std::uint32_t flags : {kProbe | kIndexBuilder, kProbe | kSampleReader | kIndexBuilder}) {
        EXPECT_EQ(Open(xing_, flags), 2);
        EXPECT_FALSE(HasBuilder(*reader_));
        EXPECT_FALSE(ReadPcm(*reader_, 0, 10).has_value());
        EXPECT_FALSE(fs::exists(IndexOf(xing_)));
    }
    Build(xing_);
    EXPECT_EQ(Open(xing_, kProbe | kSampleReader | kIndexBuilder), 1) << "with an index it is described";
}

TEST_F(PluginIndex, AnEarlierFailureStopsBeforeTheBuilder) {
    Build(song_);
    EXPECT_EQ(Open(noise_, kProbe | kIndexBuilder), 0);
    EXPECT_EQ(Open(noise_, kSampleReader | kIndexBuilder), 0);
    EXPECT_FALSE(fs::exists(IndexOf(noise_)));
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(100, 19, 1)) << "the former builder stays";
}

TEST_F(PluginIndex, AFailedBuilderIsLeftInPlace) {
    EXPECT_EQ(Open(missing_, kIndexBuilder), 0);
    EXPECT_FALSE(fs::exists(IndexOf(missing_)));
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(0, 0, 0));
    EXPECT_EQ(reader_->CreateFileIndex(), 1) << "the state tells";
    EXPECT_EQ(Progress(*reader_)[32], 2);
    EXPECT_EQ(Open(noise_, kIndexBuilder), 0);
    EXPECT_EQ(test::ReadFile(IndexOf(noise_)), Bytes(28));
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(0, 0, 0));
    EXPECT_EQ(reader_->CancelIndexing(), 1);
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(0, 0, 3));
}

TEST_F(PluginIndex, OpeningAgainReplacesTheBuilder) {
    Build(song_);
    EXPECT_EQ(reader_->CancelIndexing(), 1);
    ASSERT_EQ(Open(varying_, kIndexBuilder), 1);
    EXPECT_EQ(Progress(*reader_), ExpectedProgress(0, 0, 0));
    EXPECT_EQ(test::ReadFile(IndexOf(varying_)), Bytes(28)) << "a header of its own";
    EXPECT_EQ(reader_->CreateFileIndex(), 1);
    EXPECT_EQ(test::ReadFile(IndexOf(varying_)), test::IndexOf(changing_).ToBytes());
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), test::IndexOf(stream_).ToBytes());
    Build(song_);
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), test::IndexOf(stream_).ToBytes());
}

TEST_F(PluginIndex, OtherFlagsKeepTheBuilder) {
    ASSERT_EQ(Open(song_, kIndexBuilder), 1);
    EXPECT_EQ(Open(varying_, kSampleReader), 1);
    EXPECT_EQ(Open(missing_, kProbe), 0);
    EXPECT_EQ(Open(missing_, 0), 1);
    EXPECT_EQ(reader_->CreateFileIndex(), 1);
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), test::IndexOf(stream_).ToBytes());
    EXPECT_FALSE(fs::exists(IndexOf(varying_)));
}

TEST_F(PluginIndex, AReaderThatIsNeverRunLeavesThePlaceholder) {
    {
        const Reader reader = module_.CreateReader();
        ASSERT_EQ(reader->OpenFile(test::Wide(song_), kIndexBuilder), 1);
    }
    EXPECT_EQ(test::ReadFile(IndexOf(song_)), Bytes(28));
    fs::rename(IndexOf(song_), folder_.Path() / "moved.idx");
    fs::rename(song_, folder_.Path() / "moved.mp3");
}

TEST_F(PluginIndex, DescribesTheFileToTheProbe) {
    Build(varying_);
    ASSERT_EQ(Open(varying_, kProbe), 1);
    TRN_MEDIA_INFO2 info;
    ASSERT_EQ(reader_->GetFileInfo(1, &info), 1);
    EXPECT_EQ(info.classIdentifier, 2323);
    EXPECT_EQ(info.fileSize, static_cast<std::int64_t>(changing_.bytes.size()));
    EXPECT_EQ(info.audioFormat.nSamplesPerSec, 44100u);
    EXPECT_EQ(info.audioFormat.nChannels, 2);
    EXPECT_EQ(info.duration, std::int64_t{39} * 1152 * 10'000'000 / 44100) << "40 frames, 39 of them listed";
}

TEST_F(PluginIndex, PositionsTheSampleReaderExactly) {
    Build(varying_);
    ASSERT_EQ(Open(varying_, kSampleReader), 1);
    const test::Pcm whole = test::DeliveredFrom(changing_, 1, 0);
    const auto samples = static_cast<std::int64_t>(whole.size() / 2);
    ASSERT_EQ(samples, 39 * 1152);
    for (const std::int64_t start :
         {std::int64_t{30000}, std::int64_t{0}, std::int64_t{20000}, samples - 3000, std::int64_t{1152},
          std::int64_t{25001}, std::int64_t{7}})
        EXPECT_EQ(ReadPcm(*reader_, start, 3000),
                  test::Pcm(whole.begin() + 2 * start, whole.begin() + 2 * (start + 3000)))
            << start;
}

TEST_F(PluginIndex, IsReplacedWhileASampleReaderUsesTheOldOne) {
    Build(varying_);
    const test::Pcm whole = test::DeliveredFrom(changing_, 1, 0);
    ASSERT_EQ(Open(varying_, kSampleReader | kIndexBuilder), 1);
    EXPECT_EQ(ReadPcm(*reader_, 20000, 3000), test::Pcm(whole.begin() + 40000, whole.begin() + 46000))
        << "its entries were read before the file was emptied";
    EXPECT_EQ(reader_->CreateFileIndex(), 1);
    EXPECT_EQ(Progress(*reader_)[32], 1);
    EXPECT_EQ(ReadPcm(*reader_, 30000, 3000), test::Pcm(whole.begin() + 60000, whole.begin() + 66000));
    EXPECT_EQ(test::ReadFile(IndexOf(varying_)), test::IndexOf(changing_).ToBytes());
}
