/// The reader object, through the loaded module.
#include "reader/reader_streams.h"
#include "support/loaded_module.h"

#include "trnmediadet/media_info.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;
using test::Bytes;
using test::ReadPcm;

constexpr std::uint32_t kProbe = 2;
constexpr std::uint32_t kSampleReader = 4;
constexpr std::uint32_t kAlternate = 8;
constexpr std::uint32_t kIndexBuilder = 1;

class PluginReader : public testing::Test {
protected:
    static test::Pcm Part(const test::Pcm& whole, std::int64_t start, std::int64_t count) {
        return test::Pcm(whole.begin() + 2 * start, whole.begin() + 2 * (start + count));
    }
    bool Delivers(PLUGIN_FILE_READER_CLASS& reader, const test::Pcm& whole) {
        return ReadPcm(reader, 5000, 3000) == Part(whole, 5000, 3000);
    }
    bool HasSampleReader(PLUGIN_FILE_READER_CLASS& reader) {
        KW_MEDIA_BASE_INFO_ST info;
        return reader.GetFileInfo(4, &info) != 0 && ReadPcm(reader, 0, 10).has_value();
    }
    bool HasProbe(PLUGIN_FILE_READER_CLASS& reader) {
        TRN_MEDIA_INFO2 info;
        return reader.GetFileInfo(1, &info) == 1;
    }
    std::wstring Add(const char* name, const Bytes& bytes) { return test::Wide(folder_.Add(name, bytes)); }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const test::bitstream::Stream layer2_ = test::Layer2Stream();
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
    const test::Pcm layer2Pcm_ = test::DeliveredFrom(layer2_, 0, 0);
    const std::wstring song_ = Add("song.mp3", stream_.bytes);
    const std::wstring layer2Song_ = Add("song.mp2", layer2_.bytes);
    const std::wstring missing_ = test::Wide(folder_.Path() / "missing.mp3");
    const std::wstring xing_ =
        Add("xing.mp3", test::Joined({test::DescribingFrame(stream_, "Xing"), stream_.bytes}));
    test::LoadedModule module_;
    const Reader reader_ = module_.CreateReader();
};

} // namespace

TEST_F(PluginReader, BeforeAnyOpenEverythingGivesZero) {
    TRN_MEDIA_INFO2 info2;
    KW_MEDIA_BASE_INFO_ST info;
    PLUGIN_INDEX_PROGRESS progress;
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    EXPECT_EQ(reader_->CreateFileIndex(), 0);
    EXPECT_EQ(reader_->GetIndexProgress(1, &progress), 0);
    EXPECT_EQ(reader_->CancelIndexing(), 0);
    EXPECT_EQ(reader_->GetFileInfo(1, &info2), 0);
    EXPECT_EQ(reader_->GetFileInfo(4, &info), 0);
    EXPECT_EQ(reader_->ClassReserved1(), 0);
    EXPECT_EQ(reader_->ReadSamples(0, 0, 10, &data, &size), 0);
    EXPECT_EQ(reader_->ClassReserved2(), 0);
}

TEST_F(PluginReader, FlagsThatNameNoEngineOpenNone) {
    for (const std::uint32_t flags : {0u, 16u, 0x80000000u, 0xFFFFFFF0u})
        for (const std::wstring& path : {song_, missing_, std::wstring()}) {
            EXPECT_EQ(reader_->OpenFile(path, flags), 1) << flags;
            EXPECT_FALSE(HasProbe(*reader_));
            EXPECT_FALSE(HasSampleReader(*reader_));
        }
}

TEST_F(PluginReader, EachFlagOpensItsEngine) {
    EXPECT_EQ(reader_->OpenFile(song_, kProbe), 1);
    EXPECT_TRUE(HasProbe(*reader_));
    EXPECT_FALSE(HasSampleReader(*reader_));
    for (const std::uint32_t flags : {kSampleReader, kAlternate, kSampleReader | kAlternate}) {
        const Reader reader = module_.CreateReader();
        EXPECT_EQ(reader->OpenFile(song_, flags), 1);
        EXPECT_FALSE(HasProbe(*reader));
        EXPECT_TRUE(Delivers(*reader, whole_));
    }
    EXPECT_EQ(reader_->OpenFile(song_, kProbe | kSampleReader), 1);
    EXPECT_TRUE(HasProbe(*reader_));
    EXPECT_TRUE(Delivers(*reader_, whole_));
}

TEST_F(PluginReader, AVariableRateEndsTheOpenWithTwo) {
    for (const std::uint32_t flags : {kProbe, kProbe | kSampleReader, kProbe | kSampleReader | kIndexBuilder,
                                      kProbe | kAlternate, kProbe | kIndexBuilder}) {
        const Reader reader = module_.CreateReader();
        EXPECT_EQ(reader->OpenFile(xing_, flags), 2) << flags;
        EXPECT_TRUE(HasProbe(*reader));
        EXPECT_FALSE(HasSampleReader(*reader));
        EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "xing.mp3.idx"));
    }
    EXPECT_EQ(reader_->OpenFile(xing_, kSampleReader), 1);
    EXPECT_EQ(
        ReadPcm(*reader_, 0, 5000),
        Part(test::Delivered(test::ReadFile(folder_.Path() / "xing.mp3"), test::kDecoderDelay), 0, 5000));
}

TEST_F(PluginReader, AnEngineKeepsItsFileUntilItsOwnFlagIsSet) {
    ASSERT_EQ(reader_->OpenFile(song_, kSampleReader), 1);
    EXPECT_EQ(reader_->OpenFile(layer2Song_, kProbe), 1);
    EXPECT_TRUE(Delivers(*reader_, whole_));
    EXPECT_EQ(reader_->OpenFile(xing_, kProbe | kSampleReader), 2);
    EXPECT_TRUE(Delivers(*reader_, whole_));
    EXPECT_EQ(reader_->OpenFile(missing_, kProbe | kSampleReader), 0) << "the probe fails first";
    EXPECT_TRUE(Delivers(*reader_, whole_));
    EXPECT_EQ(reader_->OpenFile(missing_, kIndexBuilder), 0);
    EXPECT_EQ(reader_->OpenFile(missing_, 0), 1);
    EXPECT_TRUE(Delivers(*reader_, whole_));
    EXPECT_EQ(reader_->OpenFile(layer2Song_, kSampleReader), 1);
    EXPECT_TRUE(Delivers(*reader_, layer2Pcm_));
    EXPECT_EQ(reader_->OpenFile(song_, kProbe | kAlternate), 1);
    EXPECT_TRUE(Delivers(*reader_, whole_));
}

TEST_F(PluginReader, AFailedOpenLeavesNothingToRead) {
    for (const std::wstring& path :
         {missing_, test::Wide(folder_.Path()), Add("empty.mp3", {}), Add("one.mp3", {0xFF}),
          Add("noise.mp3", Bytes(10000, 0)), std::wstring()}) {
        ASSERT_EQ(reader_->OpenFile(song_, kProbe | kSampleReader), 1);
        EXPECT_EQ(reader_->OpenFile(path, kProbe), 0);
        EXPECT_EQ(reader_->OpenFile(path, kProbe | kSampleReader), 0);
        EXPECT_EQ(reader_->OpenFile(path, kSampleReader), 0);
        EXPECT_EQ(reader_->OpenFile(path, kAlternate), 0);
        EXPECT_FALSE(ReadPcm(*reader_, 0, 10).has_value());
        KW_MEDIA_BASE_INFO_ST info;
        EXPECT_LT(reader_->GetFileInfo(4, &info), 1);
        EXPECT_TRUE(HasProbe(*reader_)) << "it stays, with what it found";
        EXPECT_EQ(reader_->OpenFile(song_, kSampleReader), 1);
        EXPECT_TRUE(Delivers(*reader_, whole_));
    }
}

TEST_F(PluginReader, DescribesTheFile) {
    ASSERT_EQ(reader_->OpenFile(song_, kProbe | kSampleReader), 1);
    TRN_MEDIA_INFO2 probed;
    EXPECT_EQ(reader_->GetFileInfo(1, &probed), 1);
    EXPECT_EQ(probed.filePath, song_);
    EXPECT_EQ(probed.fileSize, static_cast<std::int64_t>(stream_.bytes.size()));
    EXPECT_EQ(probed.classIdentifier, 2323);
    EXPECT_EQ(probed.audioCodec, 1043);
    EXPECT_EQ(probed.audioFormat.wFormatTag, 85);
    EXPECT_EQ(probed.duration, static_cast<std::int64_t>((20.0 * 1152 - 1100) / 44100 * 1e7));
    KW_MEDIA_BASE_INFO_ST read;
    EXPECT_EQ(reader_->GetFileInfo(4, &read), 1);
    EXPECT_EQ(read.audioFormat.wFormatTag, 1);
    EXPECT_EQ(read.audioFormat.nChannels, 2);
    EXPECT_EQ(read.audioFormat.nSamplesPerSec, 44100u);
    EXPECT_EQ(read.audioFormat.nAvgBytesPerSec, 176400u);
    EXPECT_EQ(read.audioFormat.nBlockAlign, 4);
    EXPECT_EQ(read.audioFormat.wBitsPerSample, 16);
    EXPECT_EQ(read.audioFormat.cbSize, 0);
}

TEST_F(PluginReader, OtherKindsOfInformationDoNotExist) {
    ASSERT_EQ(reader_->OpenFile(song_, kProbe | kSampleReader), 1);
    TRN_MEDIA_INFO2 info;
    for (const std::int32_t kind : {0, 2, 3, 5, 8, -1, -4, std::numeric_limits<std::int32_t>::min(),
                                    std::numeric_limits<std::int32_t>::max()})
        EXPECT_EQ(reader_->GetFileInfo(kind, &info), 0) << kind;
    for (const std::int32_t kind : {0, 1, 2, 4})
        EXPECT_EQ(reader_->GetFileInfo(kind, nullptr), 0) << kind;
}

TEST_F(PluginReader, ReadsAnyRun) {
    ASSERT_EQ(reader_->OpenFile(song_, kSampleReader), 1);
    for (const std::uint32_t stream : {0u, 1u, 0xFFFFFFFFu}) {
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        ASSERT_EQ(reader_->ReadSamples(stream, 7000, 100, &data, &size), 1);
        ASSERT_EQ(size, 400);
        EXPECT_EQ(std::memcmp(data, Part(whole_, 7000, 100).data(), 400), 0);
    }
    for (const std::int64_t start : {std::int64_t{0}, std::int64_t{10000}, std::int64_t{1}, std::int64_t{52}})
        EXPECT_EQ(ReadPcm(*reader_, start, 2000), Part(whole_, start, 2000)) << start;
}

TEST_F(PluginReader, RefusesBadRequests) {
    constexpr std::int64_t kFurthest = std::numeric_limits<std::int64_t>::max();
    ASSERT_EQ(reader_->OpenFile(song_, kSampleReader), 1);
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    EXPECT_EQ(reader_->ReadSamples(0, 0, 10, nullptr, &size), 0);
    EXPECT_EQ(reader_->ReadSamples(0, 0, 10, &data, nullptr), 0);
    EXPECT_EQ(reader_->ReadSamples(0, 0, 10, nullptr, nullptr), 0);
    for (const std::int64_t start : {std::int64_t{-1}, -kFurthest, std::numeric_limits<std::int64_t>::min()})
        EXPECT_FALSE(ReadPcm(*reader_, start, 10).has_value()) << start;
    EXPECT_FALSE(ReadPcm(*reader_, 0, 0).has_value());
    EXPECT_FALSE(ReadPcm(*reader_, 0, 0xFFFFFFFF).has_value());
    EXPECT_FALSE(ReadPcm(*reader_, 0, 0x20000000).has_value());
    EXPECT_EQ(ReadPcm(*reader_, kFurthest, 10), test::Pcm(20, 0));
    EXPECT_EQ(ReadPcm(*reader_, kFurthest - 1100, 10), test::Pcm(20, 0));
    EXPECT_EQ(ReadPcm(*reader_, kFurthest / 4, 10), test::Pcm(20, 0));
    EXPECT_TRUE(Delivers(*reader_, whole_));
}

TEST_F(PluginReader, TheBufferStaysUntilTheNextRead) {
    ASSERT_EQ(reader_->OpenFile(song_, kSampleReader), 1);
    const Reader other = module_.CreateReader();
    ASSERT_EQ(other->OpenFile(song_, kSampleReader), 1);
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    ASSERT_EQ(reader_->ReadSamples(0, 5000, 3000, &data, &size), 1);
    TRN_MEDIA_INFO2 info2;
    KW_MEDIA_BASE_INFO_ST info;
    EXPECT_EQ(reader_->OpenFile(layer2Song_, kProbe), 1);
    EXPECT_EQ(reader_->GetFileInfo(1, &info2), 1);
    EXPECT_EQ(reader_->GetFileInfo(4, &info), 1);
    EXPECT_EQ(ReadPcm(*other, 0, 8000), Part(whole_, 0, 8000));
    EXPECT_EQ(std::memcmp(data, Part(whole_, 5000, 3000).data(), static_cast<std::size_t>(size)), 0);
}

TEST_F(PluginReader, TwoReadersOfOneFileAreIndependent) {
    const Reader other = module_.CreateReader(2321);
    ASSERT_EQ(reader_->OpenFile(song_, kSampleReader), 1);
    ASSERT_EQ(other->OpenFile(song_, kAlternate), 1);
    for (std::int64_t i = 0; i < 18; ++i) {
        EXPECT_EQ(ReadPcm(*reader_, 1000 * i, 1000), Part(whole_, 1000 * i, 1000));
        EXPECT_EQ(ReadPcm(*other, 20000 - 1000 * i, 1500), Part(whole_, 20000 - 1000 * i, 1500));
    }
}

TEST_F(PluginReader, OutlivesTheModuleObject) {
    const auto entry = module_.Library().FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
    std::unique_ptr<PLUGIN_FILE_READER_MODULE> object(entry());
    PLUGIN_FILE_READER_CLASS* created = nullptr;
    ASSERT_EQ(object->CreateReaderClass(2323, &created), 1);
    const Reader reader(created);
    object.reset();
    EXPECT_EQ(reader->OpenFile(song_, kProbe | kSampleReader), 1);
    EXPECT_TRUE(Delivers(*reader, whole_));
}

TEST_F(PluginReader, PathsFromEveryScript) {
    const auto path = folder_.Path() / u8"Ünï 日本 \U0001F3B5.mp3";
    test::WriteFile(path, stream_.bytes);
    EXPECT_EQ(reader_->OpenFile(test::Wide(path), kProbe | kSampleReader), 1);
    EXPECT_TRUE(Delivers(*reader_, whole_));
    TRN_MEDIA_INFO2 info;
    EXPECT_EQ(reader_->GetFileInfo(1, &info), 1);
    EXPECT_EQ(info.filePath, test::Wide(path));
}

TEST_F(PluginReader, StoragePathsFailWithoutStorage) {
    EXPECT_EQ(reader_->OpenFile(L"dqs:\\song.mp3", kProbe), 0);
    EXPECT_EQ(reader_->OpenFile(L"dqs:\\song.mp3", kSampleReader), 0);
    EXPECT_FALSE(HasSampleReader(*reader_));
}

TEST_F(PluginReader, AnIndexDescribesAndPositions) {
    Add("song.mp3.idx", test::IndexOf(stream_).ToBytes());
    ASSERT_EQ(reader_->OpenFile(song_, kProbe | kSampleReader), 1);
    EXPECT_TRUE(Delivers(*reader_, test::DeliveredFrom(stream_, 1, 0)));
    Add("xing.mp3.idx", Bytes(28, 0));
    EXPECT_EQ(reader_->OpenFile(xing_, kProbe | kSampleReader), 1)
        << "an index is described whatever the stream is";
    unsigned char* data = nullptr;
    std::int32_t size = -1;
    EXPECT_EQ(reader_->ReadSamples(0, 0, 100, &data, &size), 1);
    EXPECT_EQ(size, 0);
}
