#include "mpa/cbr_stream.h"

#include "mpa/saturate.h"
#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace trnmpa;
using test::Bytes;
using test::FrameSpec;
using test::MemorySource;

namespace {

constexpr FrameSpec kUnpadded = {.sampleRateIndex = 1}; // 48000 Hz, 384 bytes

CbrStream StreamOf(std::int64_t fileLength, const FrameSpec& spec, std::int64_t first = 0) {
    MpaFrameHeader header;
    DecodeFrameHeader(test::HeaderOf(spec), header);
    return {fileLength, first, FillFrameInfo(header)};
}

CbrKind Kind(const Bytes& bytes, const FrameSpec& spec, std::int64_t first = 0) {
    MemorySource source(bytes);
    return CheckCbr(source, StreamOf(std::ssize(bytes), spec, first));
}

std::optional<double> End(const Bytes& bytes, const FrameSpec& spec, CbrKind kind, std::int64_t first = 0) {
    MemorySource source(bytes);
    return FindCbrEnd(source, StreamOf(std::ssize(bytes), spec, first), kind);
}

Bytes Behind(std::size_t lead, const Bytes& frames, std::size_t trail = 0) {
    Bytes bytes(lead, 0);
    test::Append(bytes, frames);
    bytes.insert(bytes.end(), trail, 0);
    return bytes;
}

} // namespace

TEST(CbrCheck, FixedLength) {
    EXPECT_EQ(Kind(test::Frames(kUnpadded, 384, 100), kUnpadded), CbrKind::kFixedLength);
    EXPECT_EQ(Kind(Behind(267, test::Frames(kUnpadded, 384, 101), 100), kUnpadded, 267),
              CbrKind::kFixedLength);
}

TEST(CbrCheck, FixedLengthNeedsAllThreeQuarters) {
    for (const std::size_t quarter : {25u, 50u, 75u}) {
        Bytes bytes = test::Frames(kUnpadded, 384, 100);
        bytes[quarter * 384 + 2] = 0xA4; // another bit rate
        EXPECT_NE(Kind(bytes, kUnpadded), CbrKind::kFixedLength) << quarter;
    }
}

TEST(CbrCheck, ByRate) {
    EXPECT_EQ(Kind(test::PaddedFrames(200), {}), CbrKind::kByRate);
    EXPECT_EQ(Kind(test::PaddedFrames(200, test::kMono), {.mode = test::kMono}), CbrKind::kByRate);
    EXPECT_EQ(Kind(Behind(1000, test::PaddedFrames(331)), {}, 1000), CbrKind::kByRate);
}

TEST(CbrCheck, ByRateToleratesTwoBytes) {
    // 83591 bytes make 200 frames of 417, so frame 50 is looked at, which begins at 20897.
    constexpr std::ptrdiff_t kPlace = 50 * 20480 / 49;
    for (int shift = -3; shift <= 3; ++shift) {
        Bytes bytes = test::PaddedFrames(200);
        const Bytes header(bytes.begin() + kPlace, bytes.begin() + kPlace + 4);
        std::fill_n(bytes.begin() + kPlace, 4, std::uint8_t{0});
        std::copy(header.begin(), header.end(), bytes.begin() + kPlace + shift);
        const bool isNear = shift >= -1 && shift <= 1;
        EXPECT_EQ(Kind(bytes, {}), isNear ? CbrKind::kByRate : CbrKind::kUnknown) << shift;
    }
}

TEST(CbrCheck, PlacesBehindTheLongestFile) {
    // By rate, a frame of layer II at 24000 Hz is twice as long as its length: the last place is half a file
    // behind the end. The first of the equal lengths must not be there, or the rate is not asked.
    constexpr FrameSpec kLayer2 = {
        .version = test::kMpeg2, .layer = 2, .bitRateIndex = 14, .sampleRateIndex = 1};
    constexpr std::int64_t kLength = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kFirst = 2;
    const auto header = test::HeaderOf(kLayer2);
    test::ComputedSource source(kLength, [&](std::int64_t position) {
        const bool isHeader = position < 1000 || position > kLength / 5 * 2;
        return isHeader ? header[static_cast<std::size_t>((position - kFirst) & 3)] : std::uint8_t{0};
    });
    EXPECT_EQ(CheckCbr(source, StreamOf(kLength, kLayer2, kFirst)), CbrKind::kUnknown);
}

TEST(CbrCheck, ByRateNeedsTheThirdQuarterToo) {
    Bytes bytes = test::PaddedFrames(200);
    bytes[150 * 20480 / 49 + 2] ^= 0x10;
    EXPECT_EQ(Kind(bytes, {}), CbrKind::kUnknown);
}

TEST(CbrCheck, ChangingBitRatesAreVariable) {
    Bytes bytes;
    for (int i = 0; i < 100; ++i)
        test::AppendFrame(bytes, {.bitRateIndex = i % 2 == 0 ? 9 : 5}, i % 2 == 0 ? 417 : 208);
    EXPECT_EQ(Kind(bytes, {}), CbrKind::kUnknown);
}

TEST(CbrCheck, LessThanOneFrameLooksLikeOneLength) {
    EXPECT_EQ(Kind(Bytes(test::Frames({}, 100, 1)), {}), CbrKind::kFixedLength);
}

TEST(CbrCheck, FilesBeyond4GiB) {
    const FrameHeaderBytes header = test::HeaderOf(kUnpadded);
    constexpr std::int64_t kFrames = 20'000'000;
    test::ComputedSource source(kFrames * 384, [&](std::int64_t position) {
        return position % 384 < 4 ? header[static_cast<std::size_t>(position % 384)] : std::uint8_t{0};
    });
    const CbrStream stream = StreamOf(kFrames * 384, kUnpadded);
    EXPECT_EQ(CheckCbr(source, stream), CbrKind::kFixedLength);
    EXPECT_EQ(FindCbrEnd(source, stream, CbrKind::kFixedLength), kFrames * 1152 / 48000.0);
}

TEST(CbrEnd, FixedLengthCountsFrames) {
    EXPECT_EQ(End(test::Frames(kUnpadded, 384, 100), kUnpadded, CbrKind::kFixedLength), 100 * 1152 / 48000.0);
    EXPECT_EQ(End(Behind(267, test::Frames(kUnpadded, 384, 100)), kUnpadded, CbrKind::kFixedLength, 267),
              100 * 1152 / 48000.0);
}

TEST(CbrEnd, FixedLengthStepsBackOverATrailer) {
    EXPECT_EQ(End(Behind(0, test::Frames(kUnpadded, 384, 100), 1000), kUnpadded, CbrKind::kFixedLength),
              100 * 1152 / 48000.0);
}

TEST(CbrEnd, FixedLengthForgetsTheLeadAfterTheFirstStep) {
    const Bytes frames = test::Frames(kUnpadded, 384, 100);
    EXPECT_EQ(End(Behind(267, frames, 1000), kUnpadded, CbrKind::kFixedLength, 267), std::nullopt);
    // A lead of one frame's length: the first step that meets a frame meets the last one, one too late.
    EXPECT_EQ(End(Behind(384, frames, 1000), kUnpadded, CbrKind::kFixedLength, 384), 101 * 1152 / 48000.0);
}

TEST(CbrEnd, OnlyTheTailIsSearched) {
    const Bytes frames = test::Frames(kUnpadded, 384, 100);
    constexpr std::size_t kTail = 524288;
    EXPECT_EQ(End(Behind(0, frames, kTail - 384 - 1), kUnpadded, CbrKind::kFixedLength),
              100 * 1152 / 48000.0);
    EXPECT_EQ(End(Behind(0, frames, kTail), kUnpadded, CbrKind::kFixedLength), std::nullopt);
}

TEST(CbrEnd, ByRateFindsTheLastFrameThatTheRateCounts) {
    // 200 frames end 0.84 bytes short of their time, so the count says 199.
    constexpr int kLast = 198 * 20480 / 49;
    const auto end = End(test::PaddedFrames(200), {}, CbrKind::kByRate);
    ASSERT_TRUE(end);
    EXPECT_DOUBLE_EQ(*end, kLast / 16000.0 + 1152.0 / 44100);
}

TEST(CbrEnd, ByRateCountsFromTheFirstFrame) {
    constexpr int kLast = 198 * 20480 / 49;
    const auto end = End(Behind(5000, test::PaddedFrames(200)), {}, CbrKind::kByRate, 5000);
    ASSERT_TRUE(end);
    EXPECT_DOUBLE_EQ(*end, kLast / 16000.0 + 1152.0 / 44100);
}

TEST(CbrEnd, ByRateLooksAByteAround) {
    constexpr int kLast = 198 * 20480 / 49;
    constexpr int kBefore = 197 * 20480 / 49;
    for (int shift = -2; shift <= 2; ++shift) {
        Bytes bytes = test::PaddedFrames(200);
        const auto place = bytes.begin() + kLast;
        const Bytes header(place, place + 4);
        std::fill_n(place, 4, std::uint8_t{0});
        std::ranges::copy(header, place + shift);
        const auto end = End(bytes, {}, CbrKind::kByRate);
        ASSERT_TRUE(end);
        const int found = shift >= -1 && shift <= 1 ? kLast + shift : kBefore;
        EXPECT_DOUBLE_EQ(*end, found / 16000.0 + 1152.0 / 44100) << shift;
    }
}

TEST(CbrEnd, ByRateGivesUpBeforeTheTail) {
    EXPECT_EQ(End(Behind(0, test::PaddedFrames(200), 600000), {}, CbrKind::kByRate), std::nullopt);
}

TEST(CbrEnd, UnknownKindHasNoEnd) {
    EXPECT_EQ(End(test::Frames({}, 417, 10), {}, CbrKind::kUnknown), std::nullopt);
}

TEST(CbrEnd, HeadersCutOffByTheEndDoNotCount) {
    for (std::size_t kept = 0; kept < 4; ++kept) {
        Bytes bytes = test::Frames(kUnpadded, 384, 10);
        bytes.resize(9 * 384 + kept);
        EXPECT_EQ(End(bytes, kUnpadded, CbrKind::kFixedLength), 9 * 1152 / 48000.0);
        End(bytes, kUnpadded, CbrKind::kByRate);
    }
}

TEST(CbrEnd, LengthsThatTheFileDoesNotHaveAreHarmless) {
    const Bytes bytes = test::Frames(kUnpadded, 384, 3);
    for (const std::int64_t length :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{1} << 40, std::numeric_limits<std::int64_t>::max()})
        for (const CbrKind kind : {CbrKind::kFixedLength, CbrKind::kByRate}) {
            MemorySource source(bytes);
            EXPECT_EQ(FindCbrEnd(source, StreamOf(length, kUnpadded, 0), kind), std::nullopt) << length;
        }
}

TEST(Saturate, ConvertsWhatFitsAndClampsTheRest) {
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(SaturatingInt64(1.9), 1);
    EXPECT_EQ(SaturatingInt64(-1.9), -1);
    EXPECT_EQ(SaturatingInt64(std::ldexp(1.0, 62)), std::int64_t{1} << 62);
    EXPECT_EQ(SaturatingInt64(std::ldexp(1.0, 63)), kMost);
    EXPECT_EQ(SaturatingInt64(std::ldexp(-1.0, 63)), kLeast);
    EXPECT_EQ(SaturatingInt64(std::numeric_limits<double>::infinity()), kMost);
    EXPECT_EQ(SaturatingInt64(-std::numeric_limits<double>::infinity()), kLeast);
    EXPECT_EQ(SaturatingInt64(std::numeric_limits<double>::quiet_NaN()), 0);
}
