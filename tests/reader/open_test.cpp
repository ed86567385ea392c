/// Opening a file that has no index, the order of the calls and their results.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace trnmpa;
using test::Bytes;
using test::Engine;

namespace {

constexpr std::uint32_t kSomeSamples = 5000;

class Open : public testing::Test {
protected:
    /// The result of opening a file of these bytes.
    std::int32_t ResultOf(const Bytes& file) {
        Engine engine;
        return engine.Open(folder_.Add("stream.mp3", file));
    }

    /// What a file of these bytes delivers first.
    test::Pcm FirstOf(const Bytes& file) {
        Engine engine(folder_.Add("stream.mp3", file));
        EXPECT_EQ(engine.Opened(), kSuccess);
        return engine.Read(0, kSomeSamples);
    }

    static test::Pcm First(test::Pcm pcm, std::size_t values = 2 * kSomeSamples) {
        pcm.resize(values);
        return pcm;
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const test::Pcm expected_ = First(test::DeliveredFrom(stream_, 0, test::kDecoderDelay));
};

} // namespace

TEST_F(Open, CallsInTheWrongOrderAreAnswered) {
    KwMpAudioReader2 reader;
    KW_MEDIA_BASE_INFO_ST info;
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    AudioReaderDataIn request;
    request.sampleCount = 10;
    EXPECT_EQ(reader.SetInputFile(L"stream.mp3"), kNoDecoder);
    EXPECT_EQ(reader.GetStreamInfo(&info), kNoDecoder);
    EXPECT_EQ(reader.GetStreamInfo(nullptr), kNoDecoder);
    EXPECT_EQ(reader.GetSamples(request, data, size, nullptr), kNotOpen);
    ASSERT_EQ(reader.Initialize(), kSuccess);
    EXPECT_EQ(reader.GetStreamInfo(&info), kMediaNotOpened) << "no file was named";
    EXPECT_EQ(reader.GetSamples(request, data, size, nullptr), kNotOpen);
    ASSERT_EQ(reader.SetInputFile(test::Wide(folder_.Add("stream.mp3", stream_.bytes))), kSuccess);
    EXPECT_EQ(reader.GetSamples(request, data, size, nullptr), kNotOpen);
    request.sampleCount = 0;
    EXPECT_EQ(reader.GetSamples(request, data, size, nullptr), kNotOpen);
    EXPECT_EQ(reader.GetStreamInfo(&info), kSuccess);
    request.sampleCount = 10;
    EXPECT_EQ(reader.GetSamples(request, data, size, nullptr), kSuccess);
}

TEST_F(Open, ANullRecordStillCompletesIt) {
    Engine engine;
    ASSERT_EQ(engine->Initialize(), kSuccess);
    ASSERT_EQ(engine->SetInputFile(test::Wide(folder_.Add("stream.mp3", stream_.bytes))), kSuccess);
    EXPECT_EQ(engine->GetStreamInfo(nullptr), kOpenFailed);
    EXPECT_EQ(engine.Read(0, kSomeSamples), expected_);
    EXPECT_EQ(engine->GetStreamInfo(nullptr), kOpenFailed);
    KW_MEDIA_BASE_INFO_ST info;
    EXPECT_EQ(engine->GetStreamInfo(&info), kSuccess);
    EXPECT_EQ(info.audioFormat.nSamplesPerSec, 44100u);
}

TEST_F(Open, WhatHoldsNoFrameFailsTheAnalysis) {
    EXPECT_EQ(ResultOf({}), kAnalysisFailed);
    EXPECT_EQ(ResultOf({0xFF}), kAnalysisFailed);
    EXPECT_EQ(ResultOf({0xFF, 0xFB, 0x90}), kAnalysisFailed);
    EXPECT_EQ(ResultOf(Bytes(100000, 0)), kAnalysisFailed);
    EXPECT_EQ(ResultOf(Bytes(100000, 0xFF)), kAnalysisFailed);
    Engine engine;
    EXPECT_EQ(engine.Open(folder_.Path() / "missing.mp3"), kAnalysisFailed);
    EXPECT_EQ(engine.Open(folder_.Path()), kAnalysisFailed) << "a folder";
    EXPECT_EQ(engine.OpenWide(L""), kAnalysisFailed);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
}

TEST_F(Open, RefusesLayerOneAndFreeFormat) {
    Bytes layer1 = stream_.bytes;
    Bytes freeFormat = stream_.bytes;
    for (const auto& frame : stream_.frames) {
        layer1[frame.offset + 1] = static_cast<std::uint8_t>(layer1[frame.offset + 1] | 0x06);
        freeFormat[frame.offset + 2] = static_cast<std::uint8_t>(freeFormat[frame.offset + 2] & 0x0F);
    }
    // Other bytes of the frames must not look like headers either.
    for (Bytes* file : {&layer1, &freeFormat})
        for (const auto& frame : stream_.frames)
            std::fill_n(file->begin() + static_cast<std::ptrdiff_t>(frame.offset) + 4, frame.length - 4, 0);
    EXPECT_EQ(ResultOf(layer1), kAnalysisFailed);
    EXPECT_EQ(ResultOf(freeFormat), kAnalysisFailed);
}

TEST_F(Open, ACutFirstFrameFailsTheOpen) {
    for (const std::ptrdiff_t length : {4, 5, 20, 35, 36, 100, 416})
        EXPECT_EQ(ResultOf(Bytes(stream_.bytes.begin(), stream_.bytes.begin() + length)), kOpenFailed)
            << length;
    EXPECT_EQ(ResultOf(Bytes(stream_.bytes.begin(), stream_.bytes.begin() + 417)), kSuccess);
}

TEST_F(Open, ALayerTwoFrameNeedsASecondOne) {
    const auto stream = test::Layer2Stream(2);
    const auto second = static_cast<std::ptrdiff_t>(stream.frames[1].offset);
    EXPECT_EQ(ResultOf(Bytes(stream.bytes.begin(), stream.bytes.begin() + second)), kAnalysisFailed);
    EXPECT_EQ(ResultOf(Bytes(stream.bytes.begin(), stream.bytes.begin() + second + 3)), kAnalysisFailed);
    EXPECT_EQ(ResultOf(Bytes(stream.bytes.begin(), stream.bytes.begin() + second + 4)), kSuccess);
}

TEST_F(Open, CanBeTriedAgain) {
    const auto path = folder_.Add("stream.mp3", Bytes(stream_.bytes.begin(), stream_.bytes.begin() + 100));
    Engine engine;
    ASSERT_EQ(engine.Open(path), kOpenFailed);
    KW_MEDIA_BASE_INFO_ST info;
    EXPECT_EQ(engine->GetStreamInfo(&info), kOpenFailed);
    test::WriteFile(path, stream_.bytes);
    EXPECT_EQ(engine->GetStreamInfo(&info), kSuccess);
    EXPECT_EQ(engine.Read(0, kSomeSamples), expected_);
}

TEST_F(Open, AFirstFrameThatTheDecoderDoesNotFindFailsTheAnalysis) {
    const auto path = folder_.Add("stream.mp3", Bytes(stream_.bytes.begin(), stream_.bytes.begin() + 100));
    Engine engine;
    ASSERT_EQ(engine.Open(path), kOpenFailed);
    // The decoder now wants MPEG-1 layer III at 44100 Hz.
    test::WriteFile(path, test::Layer2Stream().bytes);
    KW_MEDIA_BASE_INFO_ST info;
    EXPECT_EQ(engine->GetStreamInfo(&info), kAnalysisFailed);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
}

TEST_F(Open, BytesBeforeTheFirstFrame) {
    for (const std::size_t garbage : {1u, 2u, 3u, 4u, 5u, 1000u, 4096u})
        EXPECT_EQ(FirstOf(test::Joined({Bytes(garbage, 0), stream_.bytes})), expected_) << garbage;
    EXPECT_EQ(ResultOf(test::Joined({Bytes(4100, 0), stream_.bytes})), kAnalysisFailed);
    EXPECT_EQ(FirstOf(test::Joined({Bytes(10, 0xFF), stream_.bytes})), expected_);
}

TEST_F(Open, FormatOfThePcm) {
    struct Case {
        test::bitstream::Version version;
        int layer;
        int mode;
        std::uint32_t rate;
    };
    using enum test::bitstream::Version;
    for (const Case& expected :
         {Case{kMpeg1, 3, 0, 44100}, Case{kMpeg1, 3, 3, 44100}, Case{kMpeg1, 2, 0, 44100},
          Case{kMpeg2, 3, 1, 22050}, Case{kMpeg25, 3, 3, 11025}}) {
        test::bitstream::StreamOptions options;
        options.version = expected.version;
        options.layer = expected.layer;
        options.mode = expected.mode;
        options.bitrateIndices = {8};
        Engine engine(folder_.Add("stream", test::bitstream::WriteStream(options).bytes));
        ASSERT_EQ(engine.Opened(), kSuccess);
        const WAVEFORMATEX& format = engine.Format();
        const std::uint32_t channels = expected.mode == 3 ? 1 : 2;
        EXPECT_EQ(format.wFormatTag, 1);
        EXPECT_EQ(format.nChannels, channels);
        EXPECT_EQ(format.nSamplesPerSec, expected.rate);
        EXPECT_EQ(format.nAvgBytesPerSec, expected.rate * channels * 2);
        EXPECT_EQ(format.nBlockAlign, channels * 2);
        EXPECT_EQ(format.wBitsPerSample, 16);
        EXPECT_EQ(format.cbSize, 0);
    }
}
