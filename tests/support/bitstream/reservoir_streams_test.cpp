/// Frame lengths, bit reservoir, CRC words and damage.
#include "support/bitstream/frame_head.h"
#include "support/bitstream/stream_checks.h"
#include "support/digest.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace test::bitstream;
namespace model = test::model;

/// Main data of each frame must lie between the reach of main_data_begin and the end of the frame.
void ExpectReservoirInBounds(const Stream& stream, int mostBack) {
    int slotStart = 0;
    int lastEnd = 0;
    for (const FrameRecord& frame : stream.frames) {
        const int slot = frame.length - 4 - (frame.header.crc ? 2 : 0) - frame.sideInfoBytes;
        const int start = slotStart - frame.mainDataBegin;
        EXPECT_LE(frame.mainDataBegin, mostBack);
        EXPECT_GE(start, lastEnd);
        lastEnd = start + frame.mainDataBytes;
        slotStart += slot;
        EXPECT_LE(lastEnd, slotStart);
    }
}

int LargestReach(const Stream& stream) {
    int reach = 0;
    for (const FrameRecord& frame : stream.frames)
        reach = std::max(reach, frame.mainDataBegin);
    return reach;
}

TEST(ReservoirStreams, UseIsAsAsked) {
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25}) {
        const int mostBack = version == Version::kMpeg1 ? 511 : 255;
        StreamOptions options;
        options.version = version;
        options.frames = 40;
        options.layer3.reservoir = ReservoirUse::kNone;
        Stream stream = WriteChecked(options, "none");
        EXPECT_EQ(LargestReach(stream), 0);
        ExpectReservoirInBounds(stream, 0);

        options.layer3.reservoir = ReservoirUse::kFull;
        stream = WriteChecked(options, "full");
        ExpectReservoirInBounds(stream, mostBack);
        EXPECT_EQ(LargestReach(stream), mostBack);

        options.layer3.reservoir = ReservoirUse::kRandom;
        stream = WriteChecked(options, "random");
        ExpectReservoirInBounds(stream, mostBack);
        EXPECT_GT(LargestReach(stream), 0);
    }
}

TEST(ReservoirStreams, BitRateMayJumpFromLeastToMostWithAFullReservoir) {
    StreamOptions options;
    options.frames = 200;
    options.mode = model::kJointStereo;
    options.modeExtensions = {0, 2};
    options.bitrateIndices = {1, 14};
    options.layer3.blocks = {{0, false}, {1, false}, {2, false}, {3, false}};
    const Stream stream = WriteChecked(options, "32 to 320 kbit/s");
    ExpectReservoirInBounds(stream, 511);
    const auto full = std::count_if(stream.frames.begin(), stream.frames.end(),
                                    [](const FrameRecord& frame) { return frame.mainDataBegin == 511; });
    EXPECT_GT(full, 100);
    // The bytes that a small frame reaches back to lie up to eight frames before it.
    const auto small = std::count_if(stream.frames.begin(), stream.frames.end(),
                                     [](const FrameRecord& frame) { return frame.kbps == 32; });
    EXPECT_GT(small, 50);
    EXPECT_LT(small, 150);
}

TEST(ReservoirStreams, FramesFollowEachOtherAndPaddingHoldsTheRate) {
    for (const int layer : {2, 3}) {
        StreamOptions options;
        options.layer = layer;
        options.frames = 100;
        options.layer3.fillPercent = 20;
        const Stream stream = WriteStream(options);
        std::size_t offset = 0;
        for (const FrameRecord& frame : stream.frames) {
            EXPECT_EQ(frame.offset, offset);
            offset += static_cast<std::size_t>(frame.length);
        }
        EXPECT_EQ(offset, stream.bytes.size());
        const double nominal = 100.0 * 1152.0 / 44100.0 * stream.frames[0].kbps * 1000.0 / 8.0;
        EXPECT_NEAR(static_cast<double>(offset), nominal, 2.0);
    }
}

/// Remainder of the division by x^16 + x^15 + x^2 + 1 that the standard describes: header bits, protected
/// bits and the CRC word itself leave 0.
unsigned Remainder(std::span<const std::uint8_t> frame, std::size_t protectedBits) {
    std::vector<int> bits;
    const auto add = [&](std::size_t firstByte, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            bits.push_back((frame[firstByte + i / 8] >> (7 - i % 8)) & 1);
    };
    add(2, 16);
    add(6, protectedBits);
    add(4, 16);
    for (std::size_t i = 0; i < 16; ++i)
        bits[i] ^= 1; // the register starts with ones
    for (std::size_t i = 0; i + 16 < bits.size(); ++i)
        if (bits[i] == 1)
            for (const std::size_t term : {0U, 1U, 14U, 16U})
                bits[i + term] ^= 1;
    unsigned remainder = 0;
    for (std::size_t i = bits.size() - 16; i < bits.size(); ++i)
        remainder = 2 * remainder + static_cast<unsigned>(bits[i]);
    return remainder;
}

TEST(CrcWords, LeaveNoRemainder) {
    for (const Version version : {Version::kMpeg1, Version::kMpeg2})
        for (const int mode : {model::kStereo, model::kSingleChannel}) {
            StreamOptions options;
            options.version = version;
            options.mode = mode;
            options.crc = true;
            const Stream stream = WriteChecked(options, "crc");
            for (const FrameRecord& frame : stream.frames)
                EXPECT_EQ(Remainder(std::span(stream.bytes).subspan(frame.offset),
                                    8 * static_cast<std::size_t>(frame.sideInfoBytes)),
                          0U);
        }
}

TEST(CrcWords, OfAKnownStreamAreTheSame) {
    const auto folder = test::VectorsFolder();
    if (!folder)
        GTEST_SKIP()
            << "SKIPPED: the streams with known answers are absent; set TRN_TEST_VECTORS to their folder";
    const test::Bytes bytes = test::ReadFile(*folder / "g-m1-vbr-crc.bit");
    model::Decoder decoder(bytes);
    int frames = 0;
    while (decoder.ReadHeader() == model::Outcome::kDone && decoder.SkipBody() == model::Outcome::kDone) {
        const model::Frame& frame = decoder.CurrentFrame();
        const auto at = std::span(bytes).subspan(frame.offset);
        const auto bits = 8 * static_cast<std::size_t>(frame.header.SideInfoBytes());
        ASSERT_TRUE(frame.header.crc);
        EXPECT_EQ(Crc({at[0], at[1], at[2], at[3]}, at.subspan(6), bits), (at[4] << 8) | at[5]);
        ++frames;
    }
    EXPECT_EQ(frames, 60);
}

TEST(SpoiledStreams, KeepTheirHeadersAndAlwaysDecode) {
    for (const int layer : {2, 3}) {
        StreamOptions options;
        options.layer = layer;
        options.frames = 60;
        options.mode = model::kJointStereo;
        options.modeExtensions = {0, 1, 2, 3};
        const Stream stream = WriteStream(options);
        const auto spoiled = Spoil(stream, {15, 40}, 7);
        ASSERT_EQ(spoiled.size(), stream.bytes.size());
        int changed = 0;
        for (const FrameRecord& frame : stream.frames) {
            const auto begin = static_cast<std::ptrdiff_t>(frame.offset);
            EXPECT_TRUE(std::equal(spoiled.begin() + begin, spoiled.begin() + begin + 4,
                                   stream.bytes.begin() + begin));
            changed += std::equal(spoiled.begin() + begin, spoiled.begin() + begin + frame.length,
                                  stream.bytes.begin() + begin)
                           ? 0
                           : 1;
        }
        EXPECT_GT(changed, 50);
        EXPECT_EQ(test::model::DecodeStream(spoiled).size(), 60U * 2304U);
    }
}

TEST(Streams, AreTheSameOnEverySystem) {
    StreamOptions options;
    options.seed = 42;
    options.mode = model::kJointStereo;
    options.modeExtensions = {0, 1, 2, 3};
    options.bitrateIndices = {1, 5, 14};
    options.frames = 100;
    options.layer3.blocks = {{0, false}, {2, false}, {2, true}};
    const Stream first = WriteStream(options);
    EXPECT_EQ(first.bytes, WriteStream(options).bytes);
    EXPECT_EQ(test::Digest(first.bytes), "757fc6eb44a10f25");
    options.layer = 2;
    options.bitrateIndices = {8, 14};
    EXPECT_EQ(test::Digest(WriteStream(options).bytes), "73d814857695464e");
    options.layer = 3;
    options.bitrateIndices = {1, 5, 14};
    options.seed = 43;
    EXPECT_NE(first.bytes, WriteStream(options).bytes);
}

} // namespace
