#include "mpa/frame_walk.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <limits>

using namespace trnmpa;
using test::AppendFrame;
using test::Bytes;
using test::FrameSpec;
using test::MemorySource;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::int64_t> Offsets(FrameWalk walk) {
    std::vector<std::int64_t> offsets;
    while (const auto frame = walk.Next())
        offsets.push_back(frame->offset);
    EXPECT_FALSE(walk.Next()) << "the end must stay";
    return offsets;
}

std::vector<std::int64_t> Offsets(const Bytes& bytes, std::int64_t start = 0) {
    MemorySource source(bytes);
    return Offsets(FrameWalk(source, start));
}

MpaFrameHeader Header(const FrameSpec& spec) {
    MpaFrameHeader header;
    DecodeFrameHeader(test::HeaderOf(spec), header);
    return header;
}

constexpr FrameSpec kMonoFrame = {.mode = test::kMono};

} // namespace

TEST(FrameWalk, DescribesEachFrame) {
    Bytes bytes(5, 0);
    AppendFrame(bytes, {.isPadded = true, .mode = test::kJointStereo}, 418);
    MemorySource source(bytes);
    FrameWalk walk(source, 0);
    const auto frame = walk.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->offset, 5);
    EXPECT_EQ(frame->frameBytes, 418);
    EXPECT_EQ(frame->samplesPerFrame, 1152);
    EXPECT_EQ(frame->header.firstFrameOffset, 5);
    EXPECT_EQ(frame->header.channelMode, 1);
    EXPECT_EQ(frame->header.bitRate, 128);
    EXPECT_FALSE(walk.Next());
}

TEST(FrameWalk, FollowsPadding) {
    const auto offsets = Offsets(test::PaddedFrames(200));
    ASSERT_EQ(offsets.size(), 200u);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(offsets[static_cast<std::size_t>(i)], i * 20480 / 49);
}

TEST(FrameWalk, FollowsChangingBitRates) {
    Bytes bytes;
    AppendFrame(bytes, {.bitRateIndex = 1}, 104);
    AppendFrame(bytes, {.bitRateIndex = 14}, 1044);
    AppendFrame(bytes, {.bitRateIndex = 9}, 417);
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 104, 1148));
}

TEST(FrameWalk, StartsWhereItIsTold) {
    const Bytes bytes = test::Frames({}, 417, 4);
    EXPECT_THAT(Offsets(bytes, 417), ElementsAre(417, 834, 1251));
    EXPECT_THAT(Offsets(bytes, 418), ElementsAre(834, 1251));
    EXPECT_THAT(Offsets(bytes, 100000), IsEmpty());
    EXPECT_THAT(Offsets(bytes, std::numeric_limits<std::int64_t>::max()), IsEmpty());
    EXPECT_THAT(Offsets(bytes, -1), IsEmpty());
}

TEST(FrameWalk, StepsOverGarbageBetweenFrames) {
    Bytes bytes = test::Frames({}, 417, 2);
    bytes.insert(bytes.end(), 999, 0x55);
    test::Append(bytes, test::Frames({}, 417, 1));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 417, 1833));
}

TEST(FrameWalk, FindsAHeaderAtEveryDistanceFromTheFrameBefore) {
    for (std::size_t distance = 1; distance < 12; ++distance)
        for (const int filler : {0x00, 0xFF, 0xE0, 0x7F}) {
            Bytes bytes = test::Frames({}, 417, 1);
            bytes.insert(bytes.end(), distance, static_cast<std::uint8_t>(filler));
            AppendFrame(bytes, {.version = test::kMpeg1}, 417);
            const auto second = static_cast<std::int64_t>(417 + distance);
            EXPECT_THAT(Offsets(bytes), ElementsAre(0, second)) << distance << " times " << filler;
        }
}

TEST(FrameWalk, FindsMpeg25BehindAWrongByte) {
    Bytes bytes = {0};
    AppendFrame(bytes, {.version = test::kMpeg25, .bitRateIndex = 8}, 417);
    EXPECT_THAT(Offsets(bytes), ElementsAre(1));
}

TEST(FrameWalk, HeadersOfAnotherStreamInsideGarbageAreStepped) {
    Bytes bytes = test::Frames({}, 417, 1);
    AppendFrame(bytes, {.sampleRateIndex = 1}, 50);
    AppendFrame(bytes, {.layer = 2}, 50);
    AppendFrame(bytes, {.version = test::kMpeg2}, 50);
    AppendFrame(bytes, {.layer = 1}, 50);
    AppendFrame(bytes, {.bitRateIndex = 0}, 50);
    AppendFrame(bytes, {.bitRateIndex = 15}, 50);
    test::Append(bytes, test::Frames({}, 417, 1));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 717));
}

TEST(FrameWalk, AFalseSyncOfTheSameStreamIsTakenAsTheDecoderTakesIt) {
    Bytes bytes = test::Frames({}, 417, 1);
    AppendFrame(bytes, {}, 100); // says 417
    test::Append(bytes, test::Frames({}, 417, 2));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 417, 934));
}

TEST(FrameWalk, CutOffFramesEndTheWalk) {
    const Bytes whole = test::Frames({}, 417, 3);
    for (std::size_t missing = 1; missing <= 417; ++missing) {
        const Bytes bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing));
        ASSERT_THAT(Offsets(bytes), ElementsAre(0, 417)) << missing;
    }
    EXPECT_THAT(Offsets(whole), ElementsAre(0, 417, 834));
}

TEST(FrameWalk, ShortFilesHaveNoFrames) {
    const Bytes frame = test::Frames({}, 417, 1);
    for (std::ptrdiff_t size = 0; size <= 40; ++size)
        EXPECT_THAT(Offsets(Bytes(frame.begin(), frame.begin() + size)), IsEmpty());
    EXPECT_THAT(Offsets(Bytes(100000, 0xFF)), IsEmpty());
}

TEST(FrameWalk, AMonoFrameInAStereoStreamLosesItsHeadOnly) {
    Bytes bytes = test::Frames({}, 417, 1);
    AppendFrame(bytes, kMonoFrame, 417);
    test::Append(bytes, test::Frames({}, 417, 1));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 417 * 2));
    // A header in the body of the mono frame is found: at 21, behind header and side information, not before.
    test::PutText(bytes, 417 + 20, "\xFF\xFB\x90");
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 834));
    test::PutText(bytes, 417 + 20, std::string_view("\0\xFF\xFB\x90", 4));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 438));
}

TEST(FrameWalk, TheHeadOfAPassedFrameIncludesItsCrc) {
    Bytes bytes = test::Frames({}, 417, 1);
    AppendFrame(bytes, {.mode = test::kMono, .hasCrc = true}, 417);
    test::Append(bytes, test::Frames({}, 417, 1));
    test::PutText(bytes, 417 + 22, "\xFF\xFB\x90");
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 834));
    test::PutText(bytes, 417 + 22, std::string_view("\0\xFF\xFB\x90", 4));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 440));
}

TEST(FrameWalk, Mpeg25InAnMpeg2StreamIsPassedOver) {
    // Both have the version bit clear; the sample rates differ.
    Bytes bytes = test::Frames({.version = test::kMpeg2}, 261, 2);
    AppendFrame(bytes, {.version = test::kMpeg25}, 522);
    test::Append(bytes, test::Frames({.version = test::kMpeg2}, 261, 1));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 261, 1044));
}

TEST(FrameWalk, TheReservedVersionGoesWithMpeg1) {
    Bytes bytes = test::Frames({}, 417, 1);
    AppendFrame(bytes, {.version = test::kReservedVersion}, 417);
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 417));
}

TEST(FrameWalk, LayerTwoOfMpeg2HasTheStandardsLength) {
    const FrameSpec spec = {.version = test::kMpeg2, .layer = 2, .bitRateIndex = 8, .sampleRateIndex = 1};
    EXPECT_THAT(Offsets(test::Frames(spec, 384, 3)), ElementsAre(0, 384, 768));
    EXPECT_EQ(DecoderFrameBytes(Header(spec)), 384);
    const FrameSpec padded = {
        .version = test::kMpeg25, .layer = 2, .bitRateIndex = 14, .sampleRateIndex = 2, .isPadded = true};
    EXPECT_EQ(DecoderFrameBytes(Header(padded)), 2881);
    EXPECT_THAT(Offsets(test::Frames(padded, 2881, 40)), testing::SizeIs(40));
}

TEST(FrameWalk, OtherLengthsAreTheAnalysisLengths) {
    EXPECT_EQ(DecoderFrameBytes(Header({.isPadded = true})), 418);
    EXPECT_EQ(DecoderFrameBytes(Header({.layer = 2, .bitRateIndex = 10, .sampleRateIndex = 1})), 576);
    EXPECT_EQ(DecoderFrameBytes(Header({.version = test::kMpeg2, .bitRateIndex = 8})), 208);
}

TEST(FrameWalk, LayerThreeOfMpeg2HasHalfTheSamples) {
    MemorySource source(test::Frames({.version = test::kMpeg2}, 261, 1));
    FrameWalk walk(source, 0);
    const auto frame = walk.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->samplesPerFrame, 576);
}

TEST(FrameWalk, AReferenceFixesTheFormatBeforehand) {
    Bytes bytes = test::Frames(kMonoFrame, 417, 2);
    test::Append(bytes, test::Frames({}, 417, 1));
    EXPECT_THAT(Offsets(bytes), ElementsAre(0, 417));
    MemorySource source(bytes);
    EXPECT_THAT(Offsets(FrameWalk(source, 0, Header({}))), ElementsAre(834));
    EXPECT_THAT(Offsets(FrameWalk(source, 0, Header({.sampleRateIndex = 1}))), IsEmpty());
}

TEST(FrameWalk, AGigabyteStartIsReached) {
    constexpr std::int64_t kLength = std::int64_t{6} << 30;
    const FrameHeaderBytes header = test::HeaderOf({.sampleRateIndex = 1}); // 384 bytes, divides the length
    test::ComputedSource source(kLength, [&](std::int64_t position) {
        return position % 384 < 4 ? header[static_cast<std::size_t>(position % 384)] : std::uint8_t{0};
    });
    const auto offsets = Offsets(FrameWalk(source, kLength - 1000));
    EXPECT_THAT(offsets, ElementsAre(kLength - 768, kLength - 384));
}

TEST(FrameWalk, ReadsEachByteAboutOnce) {
    const Bytes bytes = test::PaddedFrames(5000);
    MemorySource source(bytes);
    EXPECT_EQ(Offsets(FrameWalk(source, 0)).size(), 5000u);
    EXPECT_LT(source.BytesRead(), bytes.size() + bytes.size() / 16);
}
