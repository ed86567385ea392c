#include "reader/preroll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

using namespace trnmpa;

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

AMPFrameInfo Stream(int layer, int version, bool stereo, std::int32_t frameBytes = 417) {
    AMPFrameInfo info;
    info.synced = 1;
    info.layer = static_cast<std::uint8_t>(layer);
    info.version = static_cast<std::uint8_t>(version);
    info.stereo = stereo ? 1 : 0;
    info.frameBytes = frameBytes;
    return info;
}

std::vector<MpaIndexEntry> Entries(std::size_t count, std::uint32_t frameBytes) {
    return std::vector<MpaIndexEntry>(count, MpaIndexEntry{0, frameBytes});
}

const std::int32_t kHostileLengths[] = {
    std::numeric_limits<std::int32_t>::min(), -1, 0, 1, 22, 23, 24, 38, 39,
    std::numeric_limits<std::int32_t>::max()};

} // namespace

TEST(Preroll, MainDataIsWhatHeaderCrcAndSideInformationLeave) {
    EXPECT_EQ(MainDataBytes(Stream(3, 1, true), 417), 417 - 38);
    EXPECT_EQ(MainDataBytes(Stream(3, 1, false), 417), 417 - 23);
    EXPECT_EQ(MainDataBytes(Stream(3, 2, true), 208), 208 - 23);
    EXPECT_EQ(MainDataBytes(Stream(3, 2, false), 208), 208 - 15);
}

TEST(Preroll, FramesOfAStream) {
    const auto expect = [](const AMPFrameInfo& stream, int reservoir, int decoded) {
        const Preroll preroll = PrerollFor(stream, stream.frameBytes);
        EXPECT_EQ(preroll.reservoirFrames, reservoir);
        EXPECT_EQ(preroll.decodedFrames, decoded);
    };
    expect(Stream(3, 1, true, 417), (379 + 510) / 379, 1);
    expect(Stream(3, 1, true, 549), 1, 1);
    expect(Stream(3, 1, true, 548), (510 + 510) / 510, 1);
    expect(Stream(3, 1, false, 104), (81 + 510) / 81, 1);
    expect(Stream(3, 2, true, 208), (185 + 254) / 185, 2);
    expect(Stream(3, 2, false, 24), (9 + 254) / 9, 2);
    expect(Stream(2, 1, true, 417), 0, 1);
    expect(Stream(2, 2, false, 24), 0, 1);
}

TEST(Preroll, LengthsThatNoFrameHasAreBounded) {
    for (const std::int32_t length : kHostileLengths)
        for (const int version : {0, 1, 2, 255})
            for (const bool stereo : {false, true}) {
                const Preroll preroll = PrerollFor(Stream(3, version, stereo), length);
                EXPECT_GE(preroll.reservoirFrames, 1) << length;
                EXPECT_LE(preroll.reservoirFrames, version == 1 ? 511 : 255) << length;
                EXPECT_EQ(preroll.decodedFrames, version == 1 ? 1 : 2);
            }
}

TEST(Preroll, StartWithoutIndex) {
    const AMPFrameInfo stream = Stream(3, 1, true, 417);
    const Preroll preroll = PrerollFor(stream, stream.frameBytes);
    for (const std::int64_t target : {0, 1, 2, 3})
        EXPECT_EQ(PrerollStart(stream, preroll, target), 0) << target;
    EXPECT_EQ(PrerollStart(stream, preroll, 4), 1);
    EXPECT_EQ(PrerollStart(stream, preroll, 1000), 997);
    constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(PrerollStart(stream, preroll, kFar), kFar - 3);
    const AMPFrameInfo layer2 = Stream(2, 1, true);
    EXPECT_EQ(PrerollStart(layer2, PrerollFor(layer2, 417), 10), 9);
}

TEST(Preroll, StartWithoutIndexReachesFarEnoughForShorterFrames) {
    for (std::int32_t length = 40; length < 1500; ++length) {
        const AMPFrameInfo stream = Stream(3, 1, true, length);
        const Preroll preroll = PrerollFor(stream, length);
        const std::int64_t start = PrerollStart(stream, preroll, 10000);
        const std::int64_t reservoirFrames = 10000 - preroll.decodedFrames - start;
        EXPECT_GE(reservoirFrames * (length - 1 - 38), 511) << length;
        EXPECT_GE(reservoirFrames, preroll.reservoirFrames) << length;
    }
}

TEST(Preroll, StartWithoutIndexOfLengthsThatNoFrameHas) {
    for (const std::int32_t length : kHostileLengths)
        for (const int version : {1, 2}) {
            const AMPFrameInfo stream = Stream(3, version, true, length);
            const Preroll preroll = PrerollFor(stream, length);
            for (const std::int64_t target : {std::int64_t{0}, std::int64_t{5}, std::int64_t{1} << 40}) {
                const std::int64_t start = PrerollStart(stream, preroll, target);
                EXPECT_GE(start, std::max<std::int64_t>(target - 513, 0));
                EXPECT_LE(start, std::max<std::int64_t>(target - preroll.Frames(), 0));
            }
        }
}

TEST(Preroll, StartWithIndexCollectsTheReservoirsReach) {
    const AMPFrameInfo stream = Stream(3, 1, true, 1044);
    // Long frames, short ones, and a long one that gives the count.
    auto frames = Entries(100, 1044);
    for (std::size_t i = 40; i < 60; ++i)
        frames[i].frameBytes = 104;
    Preroll preroll;
    const std::int64_t start = PrerollStart(stream, frames, 61, preroll);
    EXPECT_EQ(preroll.reservoirFrames, 1);
    EXPECT_EQ(preroll.decodedFrames, 1);
    EXPECT_EQ(start, 60 - 8) << "eight frames of 66 bytes hold 511";
    EXPECT_EQ(PrerollStart(stream, frames, 45, preroll), 36) << "never fewer frames than the count";
    EXPECT_EQ(preroll.reservoirFrames, (66 + 510) / 66);
}

TEST(Preroll, StartWithIndexAtTheBeginning) {
    const AMPFrameInfo stream = Stream(3, 1, true, 417);
    const auto frames = Entries(10, 417);
    Preroll preroll;
    for (const std::int64_t target : {0, 1, 2, 3})
        EXPECT_EQ(PrerollStart(stream, frames, target, preroll), 0) << target;
    EXPECT_EQ(PrerollStart(stream, frames, 4, preroll), 1);
    const auto one = Entries(1, 417);
    EXPECT_EQ(PrerollStart(stream, one, 0, preroll), 0);
}

TEST(Preroll, StartWithIndexOfHostileLengthsIsBounded) {
    for (const std::uint32_t length : {0u, 1u, 37u, 38u, 39u, 0x7FFFFFFFu, 0x80000000u, kLargest})
        for (const int version : {0, 1, 2}) {
            const AMPFrameInfo stream = Stream(3, version, true, 417);
            const auto frames = Entries(5000, length);
            const std::int64_t reach = version == 1 ? 511 : 255;
            for (const std::int64_t target : {0, 1, 2, 3, 255, 600, 4999}) {
                Preroll preroll;
                const std::int64_t start = PrerollStart(stream, frames, target, preroll);
                EXPECT_GE(start, std::max<std::int64_t>(target - preroll.Frames() - reach, 0)) << length;
                EXPECT_LE(start, std::max<std::int64_t>(target - preroll.Frames(), 0)) << length;
            }
        }
}

TEST(Preroll, StartWithIndexAcrossFramesWithoutMainDataGoesOn) {
    const AMPFrameInfo stream = Stream(3, 1, true, 417);
    auto frames = Entries(400, 417);
    for (std::size_t i = 100; i < 300; ++i)
        frames[i].frameBytes = 0;
    frames[300].frameBytes = 1044;
    Preroll preroll;
    EXPECT_EQ(PrerollStart(stream, frames, 301, preroll), 98) << "two frames of 379 bytes hold 511";
}

TEST(Preroll, LayerTwoNeedsTheFrameBefore) {
    const AMPFrameInfo stream = Stream(2, 1, true, 417);
    for (const std::uint32_t length : {0u, 417u, kLargest}) {
        const auto frames = Entries(100, length);
        Preroll preroll;
        EXPECT_EQ(PrerollStart(stream, frames, 0, preroll), 0);
        EXPECT_EQ(PrerollStart(stream, frames, 1, preroll), 0);
        EXPECT_EQ(PrerollStart(stream, frames, 50, preroll), 49);
    }
}
