/// Where the audio of a file without index begins: tags, "Info" frames, constant or variable rate.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace trnmpa;
using test::Bytes;
using test::Engine;

namespace {

constexpr std::uint32_t kSomeSamples = 5000;

class StartOfAudio : public testing::Test {
protected:
    std::int32_t ResultOf(const Bytes& file) {
        Engine engine;
        return engine.Open(folder_.Add("stream.mp3", file));
    }
    test::Pcm FirstOf(const Bytes& file, std::uint32_t samples = kSomeSamples) {
        Engine engine(folder_.Add("stream.mp3", file));
        EXPECT_EQ(engine.Opened(), kSuccess);
        return engine.Read(0, samples);
    }
    static test::Pcm First(test::Pcm pcm, std::size_t values = 2 * kSomeSamples) {
        pcm.resize(values);
        return pcm;
    }

    /// A tag with these size bytes and `body` bytes behind its header.
    static Bytes Tag(std::initializer_list<std::uint8_t> size, const Bytes& body) {
        return test::Joined({{'I', 'D', '3', 4, 0, 0}, Bytes(size), body});
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const test::Pcm expected_ = First(test::DeliveredFrom(stream_, 0, test::kDecoderDelay));
};

using Tags = StartOfAudio;
using InfoFrames = StartOfAudio;

} // namespace

TEST_F(Tags, AreSkipped) {
    const Bytes body(257, 0);
    EXPECT_EQ(FirstOf(test::Joined({Tag({0, 0, 2, 1}, body), stream_.bytes})), expected_);
    EXPECT_EQ(FirstOf(test::Joined({Tag({0, 0, 0, 0}, {}), stream_.bytes})), expected_);
    EXPECT_EQ(FirstOf(test::Joined({{'i', 'd', '3', 0x33, 0, 0, 0, 0, 2, 1}, body, stream_.bytes})),
              expected_);
    EXPECT_EQ(FirstOf(test::Joined({Tag({0x80, 0x80, 0x82, 0x81}, body), stream_.bytes})), expected_)
        << "the high bits of the size do not count";
}

TEST_F(Tags, PaddingBehindThemIsSkipped) {
    EXPECT_EQ(FirstOf(test::Joined({Tag({0, 0, 2, 1}, Bytes(257 + 100000, 0xFE)), stream_.bytes})),
              expected_);
    EXPECT_EQ(FirstOf(test::Joined({Tag({0, 0, 0, 0}, {0, 0xFF, 0, 0xFF}), stream_.bytes})), expected_)
        << "0xFF alone is no frame, the search goes on";
}

TEST_F(Tags, FramesInsideOneAreNotSeen) {
    Bytes body(257, 0);
    std::copy_n(stream_.bytes.begin(), 200, body.begin() + 10);
    body[10 + 2] = 0xA4; // 160 kbit/s, 48000 Hz
    EXPECT_EQ(FirstOf(test::Joined({Tag({0, 0, 2, 1}, body), stream_.bytes})), expected_);
}

TEST_F(Tags, OfWrongSizeFail) {
    EXPECT_EQ(ResultOf(test::Joined({Tag({0x7F, 0x7F, 0x7F, 0x7F}, Bytes(1000, 0)), stream_.bytes})),
              kAnalysisFailed);
    EXPECT_EQ(ResultOf(Tag({0, 0, 2, 1}, Bytes(257, 0))), kAnalysisFailed) << "nothing behind it";
    EXPECT_EQ(ResultOf(Tag({0, 0, 2, 1}, Bytes(300, 0))), kAnalysisFailed) << "no byte 0xFF behind it";
    EXPECT_EQ(ResultOf(Tag({0, 0, 2, 1}, Bytes(100, 0xFF))), kAnalysisFailed) << "it ends behind the file";
    for (std::size_t length = 3; length < 10; ++length) {
        Bytes file = Tag({0, 0, 2, 1}, {});
        file.resize(length);
        EXPECT_EQ(ResultOf(file), kAnalysisFailed) << length;
    }
}

TEST_F(InfoFrames, AreNotDecoded) {
    EXPECT_EQ(FirstOf(test::Joined({test::DescribingFrame(stream_, "Info"), stream_.bytes})), expected_);
    EXPECT_EQ(FirstOf(test::Joined(
                  {Tag({0, 0, 2, 1}, Bytes(300, 0)), test::DescribingFrame(stream_, "Info"), stream_.bytes})),
              expected_);
}

TEST_F(InfoFrames, OtherTextsAreAudio) {
    for (const char* text : {"Xing", "VBRI", "info", "INFO", "LAME"}) {
        const Bytes file = test::Joined({test::DescribingFrame(stream_, text), stream_.bytes});
        const test::Pcm pcm = FirstOf(file);
        EXPECT_EQ(pcm, First(test::Delivered(file, test::kDecoderDelay))) << text;
        EXPECT_NE(pcm, expected_) << text;
    }
}

TEST_F(InfoFrames, CountOnlyAtThisOnePlace) {
    Bytes shifted = test::DescribingFrame(stream_, "");
    std::ranges::copy(std::string_view("Info"), shifted.begin() + 21);
    const Bytes file = test::Joined({shifted, stream_.bytes});
    EXPECT_EQ(FirstOf(file), First(test::Delivered(file, test::kDecoderDelay)));
}

TEST_F(InfoFrames, CountAlsoInSingleChannelStreams) {
    test::bitstream::StreamOptions options = test::SteadyOptions();
    options.mode = test::model::kSingleChannel;
    const auto mono = test::bitstream::WriteStream(options);
    EXPECT_EQ(FirstOf(test::Joined({test::DescribingFrame(mono, "Info"), mono.bytes})),
              First(test::DeliveredFrom(mono, 0, test::kDecoderDelay), kSomeSamples));
}

TEST_F(InfoFrames, DoNotExistInLayerTwo) {
    const auto layer2 = test::Layer2Stream();
    const Bytes file = test::Joined({test::DescribingFrame(layer2, "Info"), layer2.bytes});
    EXPECT_EQ(FirstOf(file), First(test::Delivered(file, 0)));
}

TEST_F(InfoFrames, AloneLeaveNothingToDecode) {
    EXPECT_EQ(FirstOf(test::DescribingFrame(stream_, "Info"), 100), test::Pcm(200, 0));
}

TEST_F(InfoFrames, OfAFrameShorterThanTheText) {
    test::bitstream::StreamOptions options;
    options.version = test::bitstream::Version::kMpeg2;
    options.sampleRateIndex = 1;
    options.bitrateIndices = {1};
    options.mode = test::model::kSingleChannel;
    options.frames = 30;
    const auto tiny = test::bitstream::WriteStream(options);
    ASSERT_EQ(tiny.frames.front().length, 24);
    EXPECT_EQ(FirstOf(tiny.bytes), First(test::DeliveredFrom(tiny, 0, test::kDecoderDelay), kSomeSamples));
}

TEST_F(StartOfAudio, SamplesToSkipDependOnTheLayer) {
    const auto layer2 = test::Layer2Stream();
    EXPECT_EQ(FirstOf(layer2.bytes), First(test::DeliveredFrom(layer2, 0, 0)));
    EXPECT_EQ(FirstOf(stream_.bytes), expected_);
}

/// Frames of one length, the second a byte before the place where a constant rate puts the third: a search
/// that begins exactly at that place misses a frame that one which begins a byte earlier finds.
class RateDetection : public StartOfAudio {
protected:
    /// The number of the frame in the file that a fresh engine delivers as number `target`.
    int Delivers(test::bitstream::StreamOptions options, std::int64_t target) {
        options.seed = 5;
        options.frames = 16;
        options.padding = test::bitstream::Padding::kNever;
        const auto stream = test::bitstream::WriteStream(options);
        const auto length = static_cast<std::ptrdiff_t>(stream.frames.front().length);
        Bytes file = stream.bytes;
        file.insert(file.begin() + length, static_cast<std::size_t>(length - 1), 0);
        const int perFrame = options.version == test::bitstream::Version::kMpeg1 ? 1152 : 576;
        const test::Pcm all = test::DeliveredFrom(stream, 0, 0);
        Engine engine(folder_.Add("stream.mp3", file));
        const test::Pcm pcm =
            engine.Read(target * perFrame - test::kDecoderDelay, static_cast<std::uint32_t>(perFrame));
        for (int frame = 0; frame < options.frames; ++frame)
            if (std::equal(pcm.begin(), pcm.end(), all.begin() + std::ptrdiff_t{2} * perFrame * frame))
                return frame;
        return -1;
    }
};

TEST_F(RateDetection, At48kHzTheRateIsTakenAsConstant) {
    test::bitstream::StreamOptions options;
    options.sampleRateIndex = 1;
    EXPECT_EQ(Delivers(options, 5), 5);
}

TEST_F(RateDetection, At24kHzTheRateIsTakenAsConstant) {
    test::bitstream::StreamOptions options;
    options.version = test::bitstream::Version::kMpeg2;
    options.sampleRateIndex = 1;
    options.bitrateIndices = {8};
    EXPECT_EQ(Delivers(options, 6), 6);
}

TEST_F(RateDetection, AtOtherRatesTheMiddleOfTheFileDecides) {
    test::bitstream::StreamOptions options;
    options.sampleRateIndex = 2;
    EXPECT_EQ(Delivers(options, 4), 3) << "variable: the estimate lies a byte before the exact place";
}
