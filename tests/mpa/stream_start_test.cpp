#include "mpa/stream_start.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

using namespace trnmpa;
using test::Bytes;
using test::FrameSpec;
using test::MemorySource;

namespace {

std::optional<AudioStart> Locate(const Bytes& bytes) {
    MemorySource source(bytes);
    return LocateAudioStart(source);
}

Bytes StreamWithText(const FrameSpec& spec, std::size_t size, std::size_t offset, std::string_view text) {
    Bytes bytes = test::Frames(spec, size, 4);
    test::PutText(bytes, offset, text);
    return bytes;
}

} // namespace

TEST(StreamStart, PlainStreamStartsAtZero) {
    const auto start = Locate(test::Frames({}, 417, 3));
    ASSERT_TRUE(start);
    EXPECT_EQ(start->dataStart, 0);
    EXPECT_EQ(start->firstHeader.firstFrameOffset, 0);
    EXPECT_EQ(start->firstHeader.frameBytes, 417);
    EXPECT_FALSE(start->hasInfoFrame);
}

TEST(StreamStart, TagAndPaddingAreSkipped) {
    Bytes bytes = test::TagHeader(0, 0, 2, 1);
    bytes.resize(300, 0);
    test::Append(bytes, test::Frames({}, 417, 3));
    const auto start = Locate(bytes);
    ASSERT_TRUE(start);
    EXPECT_EQ(start->dataStart, 300);
}

TEST(StreamStart, TheSearchGoesOnBehindAFalseSyncAfterTheTag) {
    Bytes bytes = test::TagHeader(0, 0, 2, 1);
    bytes.resize(300, 0);
    bytes[280] = 0xFF;
    test::Append(bytes, test::Frames({}, 417, 3));
    const auto start = Locate(bytes);
    ASSERT_TRUE(start);
    EXPECT_EQ(start->dataStart, 300);
    EXPECT_EQ(start->firstHeader.firstFrameOffset, 300);
}

TEST(StreamStart, InfoFrameIsPassedOver) {
    const auto start = Locate(StreamWithText({}, 417, 36, "Info"));
    ASSERT_TRUE(start);
    EXPECT_TRUE(start->hasInfoFrame);
    EXPECT_EQ(start->dataStart, 417);
    EXPECT_EQ(start->firstHeader.firstFrameOffset, 0);
}

TEST(StreamStart, XingFrameIsAudio) {
    const auto start = Locate(StreamWithText({}, 417, 36, "Xing"));
    ASSERT_TRUE(start);
    EXPECT_FALSE(start->hasInfoFrame);
    EXPECT_EQ(start->dataStart, 0);
}

TEST(StreamStart, OnlyOffset36IsLookedAt) {
    const FrameSpec mono = {.mode = test::kMono};
    EXPECT_FALSE(Locate(StreamWithText(mono, 417, 21, "Info"))->hasInfoFrame);
    EXPECT_TRUE(Locate(StreamWithText(mono, 417, 36, "Info"))->hasInfoFrame);
}

TEST(StreamStart, TextBehindAShortFrameIsNotItsOwn) {
    const FrameSpec shortest = {.version = test::kMpeg2, .bitRateIndex = 1, .sampleRateIndex = 1};
    EXPECT_FALSE(Locate(StreamWithText(shortest, 24, 36, "Info"))->hasInfoFrame);
}

TEST(StreamStart, LayerTwoHasNoInfoFrame) {
    const auto start = Locate(StreamWithText({.layer = 2, .bitRateIndex = 8}, 417, 36, "Info"));
    ASSERT_TRUE(start);
    EXPECT_FALSE(start->hasInfoFrame);
}

TEST(StreamStart, NoFrameNoStart) {
    EXPECT_FALSE(Locate({}));
    EXPECT_FALSE(Locate(Bytes(5000, 0)));
    EXPECT_FALSE(Locate(Bytes(5000, 0xFF)));
    Bytes lyingTag = test::TagHeader(0x7F, 0x7F, 0x7F, 0x7F);
    test::Append(lyingTag, test::Frames({}, 417, 3));
    EXPECT_FALSE(Locate(lyingTag));
}

TEST(StreamStart, DelayOfTheBuiltInDecoder) {
    static_assert(BuiltInDecoderDelay(3) == 1100);
    static_assert(BuiltInDecoderDelay(2) == 0);
}
