#include "mpatool/waveform/frame_columns.h"
#include "mpatool/waveform/peak_columns.h"

#include <gmock/gmock.h>

#include <random>

namespace {

using namespace mpatool;

std::vector<std::int16_t> Noise(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::int16_t> values(count);
    for (std::int16_t& value : values)
        value = static_cast<std::int16_t>(static_cast<std::uint16_t>(random()));
    return values;
}

/// By the plain loop.
Extent ExtentOf(std::span<const std::int16_t> values, std::size_t channel, std::size_t channels) {
    Extent extent;
    for (std::size_t i = channel; i < values.size(); i += channels) {
        const std::int16_t value = values[i];
        extent.lowest = std::min(extent.lowest, value);
        extent.highest = std::max(extent.highest, value);
        extent.squares += double{static_cast<double>(value)} * value;
        extent.fullScale += value == 32767 || value <= -32767 ? 1 : 0;
        ++extent.samples;
    }
    return extent;
}

void ExpectEqual(const Extent& actual, const Extent& expected) {
    EXPECT_EQ(actual.lowest, expected.lowest);
    EXPECT_EQ(actual.highest, expected.highest);
    EXPECT_EQ(actual.squares, expected.squares);
    EXPECT_EQ(actual.samples, expected.samples);
    EXPECT_EQ(actual.fullScale, expected.fullScale);
}

std::span<const std::uint8_t> AsBytes(std::span<const std::int16_t> values) {
    return {reinterpret_cast<const std::uint8_t*>(values.data()), values.size_bytes()};
}

TEST(WaveformColumnsTest, ColumnsShareOutTheSamples) {
    const Columns columns({7, 1007}, 300);
    ASSERT_EQ(columns.Count(), 300u);
    EXPECT_EQ(columns.Begin(0), 7);
    EXPECT_EQ(columns.Begin(300), 1007);
    for (std::size_t column = 0; column < 300; ++column) {
        const std::int64_t samples = columns.Begin(column + 1) - columns.Begin(column);
        EXPECT_TRUE(samples == 3 || samples == 4) << column;
        EXPECT_EQ(columns.Left(column), static_cast<std::int32_t>(column));
        for (std::int64_t sample = columns.Begin(column); sample < columns.Begin(column + 1); ++sample)
            ASSERT_EQ(columns.At(sample), column);
    }
}

TEST(WaveformColumnsTest, FewSamplesMakeWideColumns) {
    const Columns columns({100, 110}, 104);
    ASSERT_EQ(columns.Count(), 10u);
    EXPECT_TRUE(columns.IsOneSampleEach());
    EXPECT_EQ(columns.Left(1), 10);
    EXPECT_EQ(columns.Left(5), 52);
    EXPECT_EQ(columns.Left(10), 104);
}

TEST(WaveformColumnsTest, LongestStreams) {
    constexpr std::int64_t kSamples = std::int64_t{1} << 62;
    const Columns columns({kSamples - 1, 2 * (kSamples - 1)}, 20000);
    for (std::size_t column = 0; column < columns.Count(); ++column) {
        ASSERT_LT(columns.Begin(column), columns.Begin(column + 1));
        ASSERT_EQ(columns.At(columns.Begin(column)), column);
        ASSERT_EQ(columns.At(columns.Begin(column + 1) - 1), column);
    }
}

TEST(WaveformColumnsTest, MeasuringIsThePlainLoops) {
    for (const std::size_t channels : {1u, 2u})
        for (const std::size_t samples : {0u, 1u, 7u, 8u, 9u, 100u, 70001u}) {
            SCOPED_TRACE(testing::Message() << channels << " channels, " << samples << " samples");
            std::vector<std::int16_t> values = Noise(samples * channels, 1);
            std::vector<Extent> extents(channels);
            Measure(values, extents);
            for (std::size_t channel = 0; channel < channels; ++channel)
                ExpectEqual(extents[channel], ExtentOf(values, channel, channels));
        }
}

TEST(WaveformColumnsTest, EndsOfTheRangeAreFullScale) {
    for (const std::size_t place : {0u, 20u, 31u, 33u}) {
        for (const auto& [value, isFull] :
             {std::pair{32767, true}, {32766, false}, {-32768, true}, {-32767, true}, {-32766, false}}) {
            std::vector<std::int16_t> values(34);
            values[place] = static_cast<std::int16_t>(value);
            std::vector<Extent> extents(2);
            Measure(values, extents);
            EXPECT_EQ(extents[place % 2].fullScale, isFull ? 1 : 0) << value;
            EXPECT_EQ(extents[place % 2].ReachesTop(), isFull && value > 0);
            EXPECT_EQ(extents[place % 2].ReachesBottom(), isFull && value < 0);
            EXPECT_EQ(extents[1 - place % 2].fullScale, 0);
        }
    }
}

TEST(WaveformColumnsTest, RmsOfASquareWave) {
    const std::vector<std::int16_t> values = {1000, -1000, 1000, -1000};
    std::vector<Extent> extents(1);
    Measure(values, extents);
    EXPECT_EQ(extents[0].Rms(), 1000);
    EXPECT_EQ(Extent().Rms(), 0);
}

TEST(WaveformColumnsTest, PiecesOfAnySizeGiveTheSameColumns) {
    constexpr std::int64_t kBegin = 12345;
    const std::vector<std::int16_t> values = Noise(2 * 5003, 2);
    const Columns columns({kBegin, kBegin + 5003}, 97);
    PeakColumns peaks(columns, 2);
    std::span<const std::int16_t> rest = values;
    for (std::size_t samples = 1; !rest.empty(); samples = samples * 3 % 500 + 1) {
        const auto piece = rest.first(std::min(rest.size(), 2 * samples));
        peaks.Add(AsBytes(piece));
        rest = rest.subspan(piece.size());
    }
    std::int64_t fullScale = 0;
    for (std::size_t column = 0; column < columns.Count(); ++column) {
        const auto first = static_cast<std::size_t>(columns.Begin(column) - kBegin);
        const auto end = static_cast<std::size_t>(columns.Begin(column + 1) - kBegin);
        const auto stretch = std::span(values).subspan(2 * first, 2 * (end - first));
        for (const std::size_t channel : {0u, 1u})
            ExpectEqual(peaks.At(channel, column), ExtentOf(stretch, channel, 2));
        fullScale += ExtentOf(stretch, 1, 2).fullScale;
    }
    EXPECT_EQ(peaks.FullScale(1), fullScale);
}

TEST(WaveformColumnsTest, KindsOfGranules) {
    const auto kind = [](std::uint32_t switching, std::uint32_t type, std::uint32_t mixed) {
        trnmpa::GranuleInfo granule;
        granule.windowSwitching = switching;
        granule.blockType = type;
        granule.mixedBlock = mixed;
        return KindOf(granule);
    };
    EXPECT_EQ(kind(0, 0, 0), BlockKind::kLong);
    EXPECT_EQ(kind(1, 0, 0), BlockKind::kLong); // reserved
    EXPECT_EQ(kind(1, 1, 0), BlockKind::kStart);
    EXPECT_EQ(kind(1, 2, 0), BlockKind::kShort);
    EXPECT_EQ(kind(1, 2, 1), BlockKind::kMixed);
    EXPECT_EQ(kind(1, 3, 0), BlockKind::kStop);
}

TEST(WaveformColumnsTest, FramesCountByTheirShareOfAColumn) {
    FrameColumns frames(Columns({0, 4000}, 4));
    frames.AddBitRate({-500, 500}, 64);
    frames.AddBitRate({500, 1500}, 128);
    frames.AddBitRate({1500, 9000}, 320);
    EXPECT_EQ(frames.At(0).bitRate.Lowest(), 64);
    EXPECT_EQ(frames.At(0).bitRate.Highest(), 128);
    EXPECT_EQ(frames.At(0).bitRate.Mean(), 96);
    EXPECT_EQ(frames.At(1).bitRate.Mean(), 224);
    EXPECT_EQ(frames.At(3).bitRate.Lowest(), 320);
    EXPECT_TRUE(frames.At(0).reservoir.IsEmpty());
}

TEST(WaveformColumnsTest, GranulesLieOneBehindTheOther) {
    FrameColumns frames(Columns({0, 1152}, 4));
    trnmpa::SideInfo sideInfo;
    sideInfo.mainDataBegin = 300;
    sideInfo.granule[1][0].windowSwitching = 1;
    sideInfo.granule[1][0].blockType = 2;
    const trnmpa::DecoderHeader header = trnmpa::ParseHeader({0xFF, 0xFB, 0x90, 0x00});
    frames.AddSideInfo({0, 1152}, header, sideInfo);
    EXPECT_THAT(frames.At(1).blocks, testing::ElementsAre(2 * 288, 0, 0, 0, 0));
    EXPECT_THAT(frames.At(2).blocks, testing::ElementsAre(288, 0, 288, 0, 0));
    EXPECT_EQ(frames.At(3).reservoir.Mean(), 300);
    EXPECT_EQ(frames.ReservoirLimit(), 511);
}

} // namespace
