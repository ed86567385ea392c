#include "mpa/first_frame_search.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <optional>
#include <random>

using namespace trnmpa;
using test::AppendFrame;
using test::Bytes;
using test::FrameSpec;
using test::MemorySource;

namespace {

constexpr FrameSpec kLayer2 = {.layer = 2, .bitRateIndex = 8}; // 128 kbit/s, 417 bytes

std::optional<std::int64_t> Find(const Bytes& bytes, std::int64_t start = 0) {
    MemorySource source(bytes);
    MpaFrameHeader header;
    header.firstFrameOffset = start;
    if (!FindFirstFrame(source, header))
        return std::nullopt;
    EXPECT_EQ(source.Position(), header.firstFrameOffset + 4);
    return header.firstFrameOffset;
}

Bytes ZerosThenFrame(std::size_t zeros) {
    Bytes bytes(zeros, 0);
    AppendFrame(bytes, {}, 417);
    return bytes;
}

/// The search as plain reads and moves of the source, byte for byte.
bool PlainSearch(MemorySource& source, MpaFrameHeader& header) {
    for (;;) {
        FrameHeaderBytes c = {};
        source.SetPosition(header.firstFrameOffset);
        if (source.Read(c) < 4)
            return false;
        int skipped = 0;
        while (!IsValidFrameHeader(c)) {
            if (skipped >= 4096)
                return false;
            int step = c[3] == 0xFF ? 3 : 4;
            if (c[1] == 0xFF && (c[2] & 0xF0) == 0xF0)
                step = 1;
            else if (c[2] == 0xFF && (c[3] & 0xF0) == 0xF0)
                step = 2;
            std::shift_left(c.begin(), c.end(), step);
            const auto refill = std::span(c).last(static_cast<std::size_t>(step));
            skipped += step;
            if (source.Read(refill) < refill.size())
                return false;
        }
        header.firstFrameOffset += skipped;
        DecodeFrameHeader(c, header);
        if (header.layer == 3)
            return true;
        FrameHeaderBytes next = {};
        const std::int64_t behind = source.Position();
        source.SetPosition(behind + header.frameBytes - 4);
        if (source.Read(next) < 4)
            return false;
        source.SetPosition(behind);
        if (IsValidFrameHeader(next))
            return true;
        ++header.firstFrameOffset;
    }
}

/// Bytes in which headers, false syncs and steps of every length are frequent. The layer II headers say 26 to
/// 78 bytes, and half of them are followed by another.
Bytes Noise(std::mt19937& random) {
    constexpr std::array<std::uint8_t, 8> kNearSync = {0xFF, 0xFF, 0xFB, 0xFD, 0xF5, 0xE3, 0xE0, 0x10};
    Bytes bytes(random() % 700);
    for (auto& byte : bytes)
        byte = random() % 3 == 0 ? kNearSync[random() % kNearSync.size()] : std::uint8_t{0};
    for (int i = 0; i < 6; ++i) {
        const FrameSpec spec = {
            .version = test::kMpeg2, .layer = 2, .bitRateIndex = 1 + static_cast<int>(random() % 3)};
        const FrameHeaderBytes header = test::HeaderOf(spec);
        MpaFrameHeader decoded;
        DecodeFrameHeader(header, decoded);
        std::size_t place = random() % 700;
        for (int copies = 1 + static_cast<int>(random() % 2); copies > 0; --copies) {
            if (place + header.size() <= bytes.size())
                std::ranges::copy(header, bytes.begin() + static_cast<std::ptrdiff_t>(place));
            place += static_cast<std::size_t>(decoded.frameBytes);
        }
    }
    return bytes;
}

} // namespace

TEST(FirstFrameSearch, FindsAFrameAtTheStart) {
    EXPECT_EQ(Find(ZerosThenFrame(0)), 0);
}

TEST(FirstFrameSearch, FindsUpToTheLimit) {
    EXPECT_EQ(Find(ZerosThenFrame(4096)), 4096);
    EXPECT_EQ(Find(ZerosThenFrame(4100)), std::nullopt);
}

TEST(FirstFrameSearch, TheLastStepMayPassTheLimit) {
    // From 4095 one step of 4 reaches 4099: the first step lands on 3, and all others are 4 long.
    Bytes bytes = ZerosThenFrame(4099);
    bytes[3] = 0xFF;
    EXPECT_EQ(Find(bytes), 4099);
}

TEST(FirstFrameSearch, StartsWhereItIsTold) {
    EXPECT_EQ(Find(ZerosThenFrame(1000), 900), 1000);
    EXPECT_EQ(Find(ZerosThenFrame(9000), 5000), 9000);
    EXPECT_EQ(Find(ZerosThenFrame(100), 101), std::nullopt);
    EXPECT_EQ(Find(ZerosThenFrame(100), std::int64_t{1} << 40), std::nullopt);
}

TEST(FirstFrameSearch, DecodesTheHeaderThatItFound) {
    Bytes bytes(10, 0);
    AppendFrame(bytes,
                {.version = test::kMpeg2, .bitRateIndex = 8, .sampleRateIndex = 1, .mode = test::kMono}, 192);
    MemorySource source(bytes);
    MpaFrameHeader header;
    ASSERT_TRUE(FindFirstFrame(source, header));
    EXPECT_EQ(header.firstFrameOffset, 10);
    EXPECT_EQ(header.frameBytes, 192);
    EXPECT_EQ(header.sampleRate, 24000);
    EXPECT_EQ(header.channels, 1);
}

TEST(FirstFrameSearch, NeverFindsLayerOne) {
    EXPECT_EQ(Find(test::Frames({.layer = 1}, 416, 30)), std::nullopt);
}

TEST(FirstFrameSearch, SkipsFreeFormat) {
    Bytes bytes = test::Frames({.bitRateIndex = 0}, 200, 3);
    AppendFrame(bytes, {}, 417);
    EXPECT_EQ(Find(bytes), 600);
}

TEST(FirstFrameSearch, StepsOverAnMpeg25HeaderThatFollowsAWrongByte) {
    // The step asks for twelve sync bits and takes all four bytes.
    Bytes bytes = {0};
    AppendFrame(bytes, {.version = test::kMpeg25}, 500);
    EXPECT_EQ(Find(bytes), std::nullopt);
    Bytes mpeg2 = {0};
    AppendFrame(mpeg2, {.version = test::kMpeg2}, 500);
    EXPECT_EQ(Find(mpeg2), 1);
}

TEST(FirstFrameSearch, LayerTwoNeedsAFrameBehind) {
    EXPECT_EQ(Find(test::Frames(kLayer2, 417, 2)), 0);
    Bytes bytes = test::Frames(kLayer2, 417, 1);
    EXPECT_EQ(Find(bytes), std::nullopt);
    bytes.insert(bytes.end(), {0xFF, 0xFD, 0x80});
    EXPECT_EQ(Find(bytes), std::nullopt);
    bytes.push_back(0x00);
    EXPECT_EQ(Find(bytes), 0);
}

TEST(FirstFrameSearch, LayerTwoIsConfirmedByAnyValidHeader) {
    Bytes bytes = test::Frames(kLayer2, 417, 1);
    AppendFrame(bytes, {}, 417);
    EXPECT_EQ(Find(bytes), 0);
}

TEST(FirstFrameSearch, UnconfirmedLayerTwoIsSkippedByOneByte) {
    Bytes bytes = test::Frames(kLayer2, 300, 1);
    test::Append(bytes, test::Frames(kLayer2, 417, 3));
    EXPECT_EQ(Find(bytes), 300);
}

TEST(FirstFrameSearch, TheLimitStartsAfreshBehindAnUnconfirmedHeader) {
    Bytes bytes(4000, 0);
    AppendFrame(bytes, kLayer2, 4000);
    test::Append(bytes, test::Frames(kLayer2, 417, 2));
    EXPECT_EQ(Find(bytes), 8000);
}

TEST(FirstFrameSearch, LayerTwoOfMpeg2IsConfirmedAtHalfLength) {
    const FrameSpec spec = {.version = test::kMpeg2, .layer = 2, .bitRateIndex = 8, .sampleRateIndex = 1};
    EXPECT_EQ(Find(test::Frames(spec, 192, 2)), 0);
    EXPECT_EQ(Find(test::Frames(spec, 384, 2)), std::nullopt);
}

TEST(FirstFrameSearch, ShortFilesHaveNoFrame) {
    const FrameHeaderBytes header = test::HeaderOf({});
    for (std::size_t size = 0; size < 4; ++size)
        EXPECT_EQ(Find(Bytes(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(size))),
                  std::nullopt);
    EXPECT_EQ(Find(Bytes(header.begin(), header.end())), 0);
}

TEST(FirstFrameSearch, FileOfOnesHasNoFrame) {
    EXPECT_EQ(Find(Bytes(100000, 0xFF)), std::nullopt);
}

TEST(FirstFrameSearch, ManyUnconfirmedHeadersAreReadOnce) {
    Bytes bytes;
    for (int i = 0; i < 1 << 20; ++i)
        bytes.insert(bytes.end(), {0xFF, 0xFD, 0xA0, 0x00}); // 522 bytes long: never followed by a header
    MemorySource source(bytes);
    MpaFrameHeader header;
    EXPECT_FALSE(FindFirstFrame(source, header));
    EXPECT_GT(header.firstFrameOffset, std::ssize(bytes) - 1000);
    EXPECT_LT(source.BytesRead(), bytes.size() + bytes.size() / 8);
}

TEST(FirstFrameSearch, EqualsThePlainSearchOnNoise) {
    std::mt19937 random(20240607);
    int found = 0;
    int foundLate = 0;
    constexpr int kRounds = 20000;
    for (int round = 0; round < kRounds; ++round) {
        const Bytes bytes = Noise(random);
        const auto start = static_cast<std::int64_t>(random() % 40);
        MemorySource plainSource(bytes);
        MpaFrameHeader plain;
        plain.firstFrameOffset = start;
        const bool plainFound = PlainSearch(plainSource, plain);
        const auto offset = Find(bytes, start);
        ASSERT_EQ(offset.has_value(), plainFound) << "round " << round;
        if (!plainFound)
            continue;
        ASSERT_EQ(*offset, plain.firstFrameOffset) << "round " << round;
        ++found;
        foundLate += *offset > start + 100;
    }
    EXPECT_GT(found, kRounds / 5);
    EXPECT_LT(found, kRounds * 4 / 5);
    EXPECT_GT(foundLate, kRounds / 20);
}
