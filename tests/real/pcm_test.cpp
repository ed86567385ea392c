/// PCM of real files against an independent decoder's.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"

#include "trnmediadet/media_info.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace test;

constexpr std::uint32_t kChunk = 10'007;

class RealPcm : public testing::Test {
protected:
    LoadedModule module_;

    /// All that the module delivers of a stream, and its distance from the independent decode.
    PcmDistance DistanceFromReference(const RealStream& stream) {
        const auto reader = module_.OpenForReading(stream.Path());
        if (reader == nullptr) {
            ADD_FAILURE() << "cannot be opened";
            return {};
        }
        const Pcm expected = stream.ExpectedDelivery();
        const Pcm delivered = ReadThrough(*reader, stream.DeliveredSamples(), kChunk);
        EXPECT_EQ(delivered.size(), expected.size());
        if (delivered.size() != expected.size())
            return {};
        return Distance(expected, delivered);
    }
};

bool CanBeRead(const RealStream& stream) {
    return !stream.IsFreeFormat() && !stream.IsLowRateLayer2();
}

TEST_F(RealPcm, FormatIsThatOfTheStream) {
    for (const RealStream& stream : RealStreams()) {
        if (!CanBeRead(stream))
            continue;
        SCOPED_TRACE(stream.file);
        const auto reader = module_.OpenForReading(stream.Path());
        ASSERT_NE(reader, nullptr);
        KW_MEDIA_BASE_INFO_ST info;
        ASSERT_EQ(reader->GetFileInfo(TRN_FILE_INFO_SAMPLE_READER, &info), 1);
        EXPECT_EQ(info.audioFormat.wFormatTag, 1);
        EXPECT_EQ(static_cast<int>(info.audioFormat.nSamplesPerSec), stream.rate);
        EXPECT_EQ(info.audioFormat.nChannels, stream.channels);
        EXPECT_EQ(info.audioFormat.wBitsPerSample, 16);
        EXPECT_EQ(info.audioFormat.nBlockAlign, 2 * stream.channels);
    }
}

TEST_F(RealPcm, EqualsTheReferenceWithoutShortBlocks) {
    int compared = 0;
    for (const RealStream& stream : RealStreams()) {
        if (!CanBeRead(stream) || stream.shortBlocks > 0)
            continue;
        SCOPED_TRACE(stream.file);
        const PcmDistance distance = DistanceFromReference(stream);
        EXPECT_LE(distance.largest, 2);
        EXPECT_LT(distance.rms, 0.8);
        ++compared;
    }
    EXPECT_GE(compared, 25);
}

// Alias reduction on short blocks sets this decoder apart from the standard, on purpose; the difference stays
// small against the sound (a misplaced or mistaken decode is as loud as the sound).
TEST_F(RealPcm, StaysNearTheReferenceWithShortBlocks) {
    constexpr double kLeastSignalToNoise = 12.0;
    int compared = 0;
    for (const RealStream& stream : RealStreams()) {
        if (!CanBeRead(stream) || stream.shortBlocks == 0)
            continue;
        SCOPED_TRACE(stream.file);
        const PcmDistance distance = DistanceFromReference(stream);
        EXPECT_GT(distance.signalToNoise, kLeastSignalToNoise);
        EXPECT_GT(distance.largest, 2) << "the deliberate difference is missing";
        ++compared;
    }
    EXPECT_GE(compared, 50);
}

TEST_F(RealPcm, EndsBehindTheLastFrame) {
    for (const char* file : {"cbr-44-128.mp3", "mono-44-64.mp3", "low-22-64.mp3", "l2-44-192.mp2"}) {
        SCOPED_TRACE(file);
        const RealStream& stream = RealStreamNamed(file);
        const auto reader = module_.OpenForReading(stream.Path());
        ASSERT_NE(reader, nullptr);
        const std::int64_t end = stream.DeliveredSamples();
        const auto last = ReadPcm(*reader, end - 4000, 4000);
        const auto beyond = ReadPcm(*reader, end - 4000, 4001);
        ASSERT_TRUE(last && beyond);
        EXPECT_TRUE(std::ranges::any_of(*last, [](std::int16_t sample) { return sample != 0; }));
        EXPECT_EQ(*beyond, Pcm(static_cast<std::size_t>(4001 * stream.channels), 0));
    }
}

} // namespace
