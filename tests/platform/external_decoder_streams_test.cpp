/// Real streams through the external decoder.

#include "decoder/stream_decode.h"
#include "platform/external_decode.h"
#include "real/real_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace {

using test::ExternalDecode;
using test::Pcm;
using test::PlacedFrame;
using test::RealStream;

Pcm Joined(const std::vector<Pcm>& frames) {
    Pcm pcm;
    for (const Pcm& frame : frames)
        pcm.insert(pcm.end(), frame.begin(), frame.end());
    return pcm;
}

int LargestDistance(std::span<const std::int16_t> left, std::span<const std::int16_t> right) {
    int largest = 0;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
        largest = std::max(largest, std::abs(left[i] - right[i]));
    return largest;
}

/// The frames to decode before a wanted one: as many as its main data can reach back into, and one, or two
/// where a frame is a single granule, for overlap and synthesis.
std::size_t Preroll(const RealStream& stream) {
    if (stream.layer != 3)
        return 1;
    const bool lowRate = stream.version != "1";
    const int side = lowRate ? (stream.channels == 1 ? 9 : 17) : (stream.channels == 1 ? 17 : 32);
    const int mainData = stream.smallestFrame - (side + 6);
    const int reach = lowRate ? 255 : 511;
    return static_cast<std::size_t>((mainData + reach - 1) / mainData + (lowRate ? 2 : 1));
}

/// What the built-in decoder gives, layer III raised to full scale as the engines do.
Pcm AtFullScale(const test::DecodedStream& decoded) {
    Pcm pcm = decoded.pcm;
    if (decoded.frames.front().layer == 3)
        for (std::int16_t& sample : pcm)
            sample = static_cast<std::int16_t>(std::clamp(sample * 2, -32767, 32767));
    return pcm;
}

template <typename Check>
void ForEachStream(std::size_t least, Check check) {
    std::size_t checked = 0;
    for (const RealStream& stream : test::RealStreams()) {
        if (stream.IsFreeFormat())
            continue;
        SCOPED_TRACE(stream.file);
        check(stream);
        ++checked;
    }
    EXPECT_GE(checked, least);
}

TEST(ExternalDecoderStreams, GiveWhatAnIndependentProgramGives) {
    ForEachStream(80, [](const RealStream& stream) {
        ExternalDecode decode(stream.Path());
        ASSERT_TRUE(decode.Start());
        const Pcm decoded = Joined(decode.Rest());
        Pcm expected = stream.Reference();
        if (stream.tag != "none")
            expected.insert(expected.begin(), static_cast<std::size_t>(stream.ValuesPerFrame()), 0);
        ASSERT_EQ(decoded.size(), expected.size());
        EXPECT_LE(LargestDistance(decoded, expected), 1);
    });
}

TEST(ExternalDecoderStreams, AgreeWithTheBuiltInDecoder) {
    std::size_t compared = 0;
    ForEachStream(80, [&compared](const RealStream& stream) {
        if (stream.shortBlocks > 0 || stream.IsLowRateLayer2())
            return;
        ExternalDecode decode(stream.Path());
        ASSERT_TRUE(decode.Start());
        const std::vector<Pcm> frames = decode.Rest();
        const Pcm builtIn = AtFullScale(test::DecodeStream(test::ReadFile(stream.Path())));
        ASSERT_EQ(builtIn.size(), frames.size() * frames[0].size());
        EXPECT_LE(LargestDistance(Joined(frames), builtIn), 2);
        ++compared;
    });
    EXPECT_GE(compared, 25U);
}

TEST(ExternalDecoderStreams, AreDescribedAsTheBuiltInDecoderDoes) {
    ForEachStream(80, [](const RealStream& stream) {
        ExternalDecode decode(stream.Path());
        Mp3StreamInfo info;
        ASSERT_EQ(decode->StartDec(), 1);
        ASSERT_EQ(decode->GetStreamInfo(&info), 1);
        const test::DecodedStream decoded = test::DecodeStream(test::ReadFile(stream.Path()));
        ASSERT_FALSE(decoded.frames.empty());
        const AMPFrameInfo& expected = decoded.frames.front();
        EXPECT_EQ(info.synced, expected.synced);
        EXPECT_EQ(info.layer, expected.layer);
        EXPECT_EQ(info.version, expected.version);
        EXPECT_EQ(info.frameBytes, expected.frameBytes);
        EXPECT_EQ(info.bitRate, expected.bitRate);
        EXPECT_EQ(info.sampleRate, expected.sampleRate);
        EXPECT_EQ(info.stereo, expected.stereo);
        EXPECT_EQ(info.bitsPerSample, expected.bitsPerSample);
        EXPECT_EQ(info.pcmBytes, expected.pcmBytes);
    });
}

TEST(ExternalDecoderStreams, AJumpBringsWhatReadingThroughBrings) {
    ForEachStream(80, [](const RealStream& stream) {
        ExternalDecode decode(stream.Path());
        ASSERT_TRUE(decode.Start());
        const std::vector<Pcm> whole = decode.Rest();
        const std::vector<PlacedFrame> places = test::PlaceFrames(test::ReadFile(stream.Path()));
        ASSERT_EQ(places.size(), whole.size());
        const std::size_t preroll = Preroll(stream);
        for (std::size_t start = 1; start + preroll + 4 < whole.size(); start += 3) {
            decode.GoTo(places[start].position, static_cast<std::int64_t>(start));
            for (std::size_t frame = start; frame < start + preroll + 4; ++frame) {
                const Pcm pcm = decode.Frame();
                ASSERT_EQ(pcm.size(), whole[frame].size());
                if (frame >= start + preroll) {
                    ASSERT_EQ(pcm, whole[frame]) << "from " << start << ", frame " << frame;
                }
            }
        }
        decode.GoTo(0, 0);
        EXPECT_EQ(decode.Rest(), whole);
    });
}

// Without the number single samples may differ, never by more than the last bit.
TEST(ExternalDecoderStreams, AJumpWithoutTheNumberIsNearlyTheSame) {
    const RealStream& stream = test::RealStreamNamed("cbr-44-128.mp3");
    ExternalDecode decode(stream.Path());
    ASSERT_TRUE(decode.Start());
    const std::vector<Pcm> whole = decode.Rest();
    const std::vector<PlacedFrame> places = test::PlaceFrames(test::ReadFile(stream.Path()));
    const std::size_t preroll = Preroll(stream);
    for (std::size_t start = 1; start + preroll < whole.size(); start += 11) {
        ASSERT_EQ(decode->SetNewFilePos(places[start].position), 1);
        ASSERT_EQ(decode->ResetDecodeBuf(), 1);
        for (std::size_t frame = start; frame < start + preroll; ++frame)
            decode.Frame();
        EXPECT_LE(LargestDistance(decode.Frame(), whole[start + preroll]), 1);
    }
}

} // namespace
