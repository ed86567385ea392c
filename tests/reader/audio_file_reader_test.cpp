/// The exported sample reader, linked from the shared library, in all its calls.

#include "reader/reader_streams.h"
#include "support/loaded_module.h"
#include "trnmpafileread/audio_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <random>

namespace {

using namespace test;

class AudioFileReader : public testing::Test {
protected:
    CComBSTR Name(const std::filesystem::path& path) const { return os::ToAutomationString(Wide(path)); }

    std::int32_t Open(ITRN_AUDIO_READER_BASE& reader, const std::filesystem::path& path) const {
        const std::int32_t result = reader.SetInputFile(Name(path));
        KW_MEDIA_BASE_INFO_ST info;
        return result == 1 ? reader.GetItemInfo(&info) : result;
    }

    static std::int32_t Ask(ITRN_AUDIO_READER_BASE& reader, std::int64_t start, std::uint32_t count,
                            Pcm& pcm) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = count;
        unsigned char* data = nullptr;
        std::int32_t size = -1;
        const std::int32_t result = reader.GetSamples(request, &data, size, nullptr);
        pcm.clear();
        if (result == 1) {
            pcm.resize(static_cast<std::size_t>(size) / sizeof(std::int16_t));
            std::memcpy(pcm.data(), data, static_cast<std::size_t>(size));
        }
        return result;
    }

    bool Delivers(ITRN_AUDIO_READER_BASE& reader) const {
        Pcm pcm;
        return Ask(reader, 3000, 2000, pcm) == 1 &&
               pcm == Pcm(whole_.begin() + 2 * 3000, whole_.begin() + 2 * 5000);
    }

    void ExpectNoEngine(TRN_MpAudioFileReader2& reader) const {
        KW_MEDIA_BASE_INFO_ST info;
        unsigned char byte = 0;
        unsigned char* data = &byte;
        std::int32_t size = 5;
        EXPECT_EQ(reader.SetInputFile(Name(path_)), TRN_AUDIO_READER_NO_ENGINE);
        EXPECT_EQ(reader.GetItemInfo(&info), TRN_AUDIO_READER_NO_ENGINE);
        EXPECT_EQ(reader.GetItemInfo(nullptr), TRN_AUDIO_READER_NO_ENGINE);
        EXPECT_EQ(reader.GetSamples({}, &data, size, nullptr), TRN_AUDIO_READER_NO_ENGINE);
        EXPECT_EQ(data, nullptr);
    }

    static void ExpectCounts(TRN_MpAudioFileReader2& reader) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(reader.AddRef(), 1);
            EXPECT_EQ(reader.GetRef(), 1);
            EXPECT_EQ(reader.ConfigureObj(i, nullptr, -1, &reader, 7), 1);
        }
    }

    ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(30);
    const std::filesystem::path path_ = folder_.Add("song.mp3", stream_.bytes);
    const Pcm whole_ = Delivered(stream_.bytes, kDecoderDelay);
};

TEST_F(AudioFileReader, WithoutAnEngineEveryCallSaysSo) {
    TRN_MpAudioFileReader2 reader;
    ExpectNoEngine(reader);
    ExpectCounts(reader);
    EXPECT_EQ(reader.Release(), 1);
    EXPECT_EQ(reader.Release(), 1);
    ExpectNoEngine(reader);
}

TEST_F(AudioFileReader, ReleaseLetsGoOfTheEngineWhateverWasCounted) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(Open(reader, path_), 1);
    ExpectCounts(reader);
    EXPECT_TRUE(Delivers(reader));
    EXPECT_EQ(reader.Release(), 1);
    ExpectNoEngine(reader);
    EXPECT_EQ(reader.Release(), 1);
    ExpectCounts(reader);
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(Open(reader, path_), 1);
    EXPECT_TRUE(Delivers(reader));
}

TEST_F(AudioFileReader, TheCallsHaveTheirOrder) {
    TRN_MpAudioFileReader2 reader;
    Pcm pcm;
    ASSERT_EQ(reader.Initialize(), 1);
    EXPECT_EQ(Ask(reader, 0, 10, pcm), TRN_AUDIO_READER_NOT_OPEN);
    EXPECT_EQ(reader.GetItemInfo(nullptr), TRN_AUDIO_READER_MEDIA_NOT_OPENED);
    ASSERT_EQ(reader.SetInputFile(Name(path_)), 1);
    EXPECT_EQ(Ask(reader, 0, 10, pcm), TRN_AUDIO_READER_NOT_OPEN);
    EXPECT_EQ(reader.GetItemInfo(nullptr), TRN_AUDIO_READER_OPEN_FAILED) << "opened, and nothing to fill";
    EXPECT_TRUE(Delivers(reader));
    EXPECT_EQ(Ask(reader, -1, 10, pcm), TRN_AUDIO_READER_BAD_REQUEST);
    EXPECT_EQ(Ask(reader, 0, 0, pcm), TRN_AUDIO_READER_BAD_REQUEST);
    EXPECT_EQ(Ask(reader, 0, 0xFFFFFFFF, pcm), TRN_AUDIO_READER_EXCEPTION);
    AudioReaderDataIn request;
    request.sampleCount = 10;
    std::int32_t size = 0;
    EXPECT_EQ(reader.GetSamples(request, nullptr, size, nullptr), 1);
    EXPECT_EQ(size, 40);
    EXPECT_TRUE(Delivers(reader));
}

TEST_F(AudioFileReader, TheRecordTellsTheFormat) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(reader.SetInputFile(Name(path_)), 1);
    for (int i = 0; i < 2; ++i) {
        KW_MEDIA_BASE_INFO_ST info;
        info.filePath = L"before";
        info.duration = 77;
        ASSERT_EQ(reader.GetItemInfo(&info), 1);
        const WAVEFORMATEX& format = info.audioFormat;
        EXPECT_EQ(format.wFormatTag, 1);
        EXPECT_EQ(format.nChannels, 2);
        EXPECT_EQ(format.nSamplesPerSec, 44100u);
        EXPECT_EQ(format.nAvgBytesPerSec, 176'400u);
        EXPECT_EQ(format.nBlockAlign, 4);
        EXPECT_EQ(format.wBitsPerSample, 16);
        EXPECT_EQ(format.cbSize, 0);
        // The record is copied whole.
        EXPECT_EQ(info.filePath, L"");
        EXPECT_EQ(info.duration, 0);
    }
    folder_.Add("song.mp3.idx", IndexOf(stream_).ToBytes());
    KW_MEDIA_BASE_INFO_ST info;
    ASSERT_EQ(reader.SetInputFile(Name(path_)), 1);
    ASSERT_EQ(reader.GetItemInfo(&info), 1);
    EXPECT_EQ(info.audioFormat.cbSize, 18);
    EXPECT_EQ(info.audioFormat.nSamplesPerSec, 44100u);
}

TEST_F(AudioFileReader, FilesThatCannotBeOpenedHaveTheirCodes) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    EXPECT_LT(Open(reader, folder_.Path() / "missing.mp3"), 0);
    EXPECT_EQ(Open(reader, folder_.Add("noise.mp3", Bytes(5000, 0x11))), TRN_AUDIO_READER_ANALYSIS_FAILED);
    ASSERT_EQ(Open(reader, path_), 1);
    EXPECT_TRUE(Delivers(reader));
}

/// The module has no storage until its host names one.
TEST_F(AudioFileReader, StoragePathsAreTakenAndDoNotOpen) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    EXPECT_EQ(reader.SetInputFile(L"dqs:\\song.mp3"), 1);
    EXPECT_EQ(reader.GetItemInfo(nullptr), TRN_AUDIO_READER_MEDIA_NOT_OPENED);
    ASSERT_EQ(Open(reader, path_), 1);
    EXPECT_TRUE(Delivers(reader));
}

TEST_F(AudioFileReader, GivesWhatThePlugInGives) {
    LoadedModule module;
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    std::mt19937 random(3);
    for (const bool hasIndex : {false, true}) {
        if (hasIndex)
            folder_.Add("song.mp3.idx", IndexOf(stream_).ToBytes());
        ASSERT_EQ(Open(reader, path_), 1);
        const auto plugIn = module.OpenForReading(path_);
        ASSERT_NE(plugIn, nullptr);
        for (int i = 0; i < 60; ++i) {
            const auto start = static_cast<std::int64_t>(random() % 36'000);
            const auto count = static_cast<std::uint32_t>(1 + random() % 4000);
            Pcm pcm;
            ASSERT_EQ(Ask(reader, start, count, pcm), 1);
            ASSERT_EQ(ReadPcm(*plugIn, start, count), std::optional(pcm)) << count << " at " << start;
        }
    }
}

TEST_F(AudioFileReader, TheInterfaceIsEnoughToUseAndDeleteIt) {
    auto reader = std::make_unique<TRN_MpAudioFileReader2>();
    ASSERT_EQ(reader->Initialize(), 1);
    std::unique_ptr<ITRN_AUDIO_READER_BASE> base = std::move(reader);
    ASSERT_EQ(Open(*base, path_), 1);
    EXPECT_TRUE(Delivers(*base));
    base.reset();
    EXPECT_TRUE(std::filesystem::remove(path_)) << "closed";
}

class AudioFileReaderCopies : public AudioFileReader {
protected:
    void SetUp() override {
        ASSERT_EQ(original_->Initialize(), 1);
        ASSERT_EQ(Open(*original_, path_), 1);
        copy_.emplace(*original_);
    }

    std::optional<TRN_MpAudioFileReader2> original_{std::in_place};
    std::optional<TRN_MpAudioFileReader2> copy_;
};

TEST_F(AudioFileReaderCopies, ShareOneEngine) {
    EXPECT_TRUE(Delivers(*copy_));
    // What one opens the other reads.
    const bitstream::Stream other = Layer2Stream(30);
    const Pcm expected = Delivered(other.bytes, 0);
    ASSERT_EQ(Open(*copy_, folder_.Add("b.mp2", other.bytes)), 1);
    Pcm pcm;
    ASSERT_EQ(Ask(*original_, 100, 50, pcm), 1);
    EXPECT_EQ(pcm, Pcm(expected.begin() + 200, expected.begin() + 300));
}

TEST_F(AudioFileReaderCopies, MayGoInAnyOrder) {
    original_.reset();
    EXPECT_TRUE(Delivers(*copy_));
    original_.emplace(*copy_);
    copy_.reset();
    EXPECT_TRUE(Delivers(*original_));
    original_.reset();
    EXPECT_TRUE(std::filesystem::remove(path_)) << "closed";
}

TEST_F(AudioFileReaderCopies, LetGoOfTheEngineOneByOne) {
    EXPECT_EQ(original_->Release(), 1);
    ExpectNoEngine(*original_);
    EXPECT_TRUE(Delivers(*copy_));
    EXPECT_EQ(original_->Release(), 1);
    EXPECT_TRUE(Delivers(*copy_));
    EXPECT_EQ(copy_->Release(), 1);
    ExpectNoEngine(*copy_);
}

TEST_F(AudioFileReaderCopies, AreMadeByAssignmentToo) {
    TRN_MpAudioFileReader2 other;
    ASSERT_EQ(other.Initialize(), 1);
    other = *original_;
    EXPECT_TRUE(Delivers(other));
    other = *&other;
    original_.reset();
    copy_.reset();
    EXPECT_TRUE(Delivers(other));
    const TRN_MpAudioFileReader2 none;
    other = none;
    ExpectNoEngine(other);
}

TEST_F(AudioFileReaderCopies, ASecondInitializeLeavesTheFirstEngineToTheOthers) {
    Pcm pcm;
    ASSERT_EQ(original_->Initialize(), 1);
    EXPECT_EQ(Ask(*original_, 0, 10, pcm), TRN_AUDIO_READER_NOT_OPEN);
    EXPECT_TRUE(Delivers(*copy_));
    copy_.reset();
    EXPECT_TRUE(std::filesystem::remove(path_)) << "the first engine is gone";
    const auto again = folder_.Add("again.mp3", stream_.bytes);
    ASSERT_EQ(Open(*original_, again), 1);
    EXPECT_TRUE(Delivers(*original_));
    ASSERT_EQ(original_->Initialize(), 1);
    EXPECT_TRUE(std::filesystem::remove(again)) << "dropped by the second call";
}

} // namespace
