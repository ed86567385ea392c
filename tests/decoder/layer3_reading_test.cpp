// Side information, Huffman data and scale factors at their edges.

#include "decoder/bitstream.h"
#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/requantise.h"
#include "decoder/layer3/scale_factors.h"
#include "decoder/layer3/side_info.h"
#include "decoder/layer3/spectrum.h"
#include "decoder/layer3/stereo.h"
#include "decoder/stream_decode.h"
#include "support/bitstream/bit_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using test::bitstream::BitWriter;
using trnmpa::GranuleInfo;

trnmpa::DecoderHeader Header(int row, int rate, int channels = 1) {
    trnmpa::DecoderHeader header;
    header.layer = 3;
    header.lowSamplingFrequency = row > 0 ? 1 : 0;
    header.mpeg25 = row > 1 ? 1 : 0;
    header.sampleRateIndex = rate;
    header.channels = channels;
    header.mode = channels == 1 ? 3 : 1;
    return header;
}

/// A reservoir that holds these bits, zeros behind them.
class Bits {
public:
    explicit Bits(const BitWriter& writer) : bytes_(writer.Bytes()), source_(bytes_) {
        stream_.SetSource(&source_);
        stream_.AppendToReservoir(static_cast<int>(bytes_.size()));
        stream_.RewindToFrameStart(static_cast<int>(bytes_.size()));
    }

    trnmpa::BitReader& Reader() { return stream_.Reader(); }
    int Remaining() { return Reader().SizeInBits() - Reader().Position(); }

private:
    std::vector<std::uint8_t> bytes_;
    test::MemorySource source_;
    trnmpa::AMPBitstream stream_;
};

struct Spectrum {
    std::array<std::int32_t, 576> lines = {}; ///< quantised
    int count = 0;
    int remaining = 0;
};

/// The global gain that multiplies by 1 where scale factors are 0.
constexpr std::uint32_t kUnitGain = 154;

/// -sign(n) |n|^(4/3) turned back to n.
std::int32_t Quantised(float value) {
    const double magnitude = std::round(std::pow(std::abs(static_cast<double>(value)), 0.75));
    return static_cast<std::int32_t>(value > 0 ? -magnitude : magnitude);
}

Spectrum Decode(const trnmpa::DecoderHeader& header, GranuleInfo info, const BitWriter& writer, int length) {
    Bits bits(writer);
    info.globalGain = kUnitGain;
    const trnmpa::LineGains gains(info, trnmpa::LayoutOf(header, info), trnmpa::ScaleFactors());
    std::array<float, 576> spectrum;
    spectrum.fill(99.0f);
    Spectrum result;
    result.count = trnmpa::ReadSpectrum(bits.Reader(), header, info, gains, length, spectrum);
    std::ranges::transform(spectrum, result.lines.begin(), Quantised);
    result.remaining = bits.Remaining();
    return result;
}

TEST(SideInformation, BigValuesAreClampedTo288) {
    for (const int bigValues : {0, 287, 288, 289, 300, 511}) {
        BitWriter writer;
        writer.Write(0, 9 + 5 + 4); // main_data_begin, private bits, selection
        writer.Write(0, 12);
        writer.Write(bigValues, 9);
        std::vector<std::uint8_t> bytes = writer.Bytes();
        bytes.resize(trnmpa::SideInfo::kMaximumBytes);
        const trnmpa::SideInfo info = trnmpa::ParseSideInfo(
            Header(0, 0), std::span<const std::uint8_t, trnmpa::SideInfo::kMaximumBytes>(bytes));
        EXPECT_EQ(info.granule[0][0].bigValues, static_cast<std::uint32_t>(std::min(bigValues, 288)));
    }
}

TEST(SideInformation, WindowSwitchingFixesTheRegions) {
    for (const int blockType : {0, 1, 2, 3}) {
        for (const int mixed : {0, 1}) {
            BitWriter writer;
            writer.Write(0, 9 + 5 + 4); // main_data_begin, private bits, selection
            writer.Write(0, 12 + 9 + 8 + 4 - 1);
            writer.Write(0, 1);
            writer.Write(1, 1);
            writer.Write(blockType, 2);
            writer.Write(mixed, 1);
            std::vector<std::uint8_t> bytes = writer.Bytes();
            bytes.resize(trnmpa::SideInfo::kMaximumBytes);
            const GranuleInfo info =
                trnmpa::ParseSideInfo(Header(0, 0),
                                      std::span<const std::uint8_t, trnmpa::SideInfo::kMaximumBytes>(bytes))
                    .granule[0][0];
            EXPECT_EQ(info.region0Count, blockType == 2 && mixed == 0 ? 8u : 7u);
            EXPECT_EQ(info.region0Count + info.region1Count, 20u);
            EXPECT_EQ(info.tableSelect[2], 0u);
        }
    }
}

/// With table 1 in region 0, 0 in region 1 and 2, all pairs (1, 1) coded "000" and signs: where zeros begin
/// shows the region start.
int Region1Start(const trnmpa::DecoderHeader& header, GranuleInfo info) {
    info.bigValues = 288;
    info.tableSelect[0] = 1;
    BitWriter writer;
    for (int i = 0; i < 288; ++i)
        writer.Write(0, 5);
    const Spectrum spectrum = Decode(header, info, writer, 288 * 5);
    const auto zero = std::ranges::find(spectrum.lines, 0);
    return static_cast<int>(zero - spectrum.lines.begin());
}

TEST(HuffmanRegions, WindowSwitchedStarts) {
    GranuleInfo switched;
    switched.windowSwitching = 1;
    switched.blockType = 1;
    switched.region0Count = 7;
    switched.region1Count = 13;
    EXPECT_EQ(Region1Start(Header(2, 2), switched), 108) << "8 kHz: long band start 8";
    EXPECT_EQ(Region1Start(Header(2, 0), switched), 54);
    EXPECT_EQ(Region1Start(Header(1, 0), switched), 54);
    EXPECT_EQ(Region1Start(Header(0, 0), switched), 36);
    GranuleInfo shortBlock = switched;
    shortBlock.blockType = 2;
    EXPECT_EQ(Region1Start(Header(2, 2), shortBlock), 72) << "8 kHz: 3 x short band start 3";
    EXPECT_EQ(Region1Start(Header(2, 0), shortBlock), 36);
    EXPECT_EQ(Region1Start(Header(1, 1), shortBlock), 36);
    EXPECT_EQ(Region1Start(Header(0, 2), shortBlock), 36);
}

TEST(HuffmanRegions, BoundariesPastTheLastBandAre576) {
    GranuleInfo info;
    info.region0Count = 15;
    info.region1Count = 5;
    EXPECT_EQ(Region1Start(Header(0, 0), info), 162) << "long band start 16";
    info.tableSelect[1] = 1;
    EXPECT_EQ(Region1Start(Header(0, 0), info), 576) << "long band start 22";
    info.region1Count = 7;
    EXPECT_EQ(Region1Start(Header(0, 0), info), 576) << "24 would be the index";
}

TEST(HuffmanData, Tables4And14GiveZerosAndReadNothing) {
    for (const std::uint32_t table : {0u, 4u, 14u}) {
        GranuleInfo info;
        info.bigValues = 10;
        std::ranges::fill(info.tableSelect, table);
        BitWriter writer;
        writer.Write(0xFFFF, 16);
        const Spectrum spectrum = Decode(Header(0, 0), info, writer, 0);
        EXPECT_EQ(spectrum.remaining, 16);
        EXPECT_EQ(spectrum.count, 0);
        EXPECT_EQ(spectrum.lines, (std::array<std::int32_t, 576>{}));
    }
}

TEST(HuffmanData, BigValuesAreReadPastTheGranulesEnd) {
    GranuleInfo info;
    info.bigValues = 4;
    info.tableSelect[0] = 1;
    info.region0Count = 15;
    BitWriter writer;
    for (int i = 0; i < 4; ++i)
        writer.Write(0, 5);
    const Spectrum spectrum = Decode(Header(0, 0), info, writer, 6);
    EXPECT_EQ(spectrum.count, 8) << "nothing is dropped: no quadruple was read";
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(spectrum.lines[static_cast<std::size_t>(i)], 1);
}

TEST(HuffmanData, AQuadrupleThatOverrunsTheEndIsDropped) {
    for (const std::uint32_t table : {0u, 1u}) {
        GranuleInfo info;
        info.count1TableSelect = table;
        BitWriter writer;
        // v w x y all set: table A "000001", table B "0000", then four signs.
        for (int i = 0; i < 3; ++i) {
            writer.Write(table == 0 ? 1 : 0, table == 0 ? 6 : 4);
            writer.Write(0b0101, 4);
        }
        const int length = table == 0 ? 10 : 8;
        EXPECT_EQ(Decode(Header(0, 0), info, writer, 3 * length).count, 12);
        EXPECT_EQ(Decode(Header(0, 0), info, writer, 2 * length).count, 8);
        EXPECT_EQ(Decode(Header(0, 0), info, writer, 2 * length + 1).count, 8);
        EXPECT_EQ(Decode(Header(0, 0), info, writer, 0).count, 0);
        const Spectrum whole = Decode(Header(0, 0), info, writer, 3 * length);
        EXPECT_EQ(whole.lines[0], 1);
        EXPECT_EQ(whole.lines[1], -1);
        EXPECT_EQ(whole.lines[2], 1);
        EXPECT_EQ(whole.lines[3], -1);
    }
}

TEST(HuffmanData, QuadruplesStopAt576) {
    for (const std::uint32_t bigValues : {0u, 1u, 286u, 287u, 288u}) {
        GranuleInfo info;
        info.bigValues = bigValues;
        info.count1TableSelect = 1;
        BitWriter writer;
        for (int i = 0; i < 200; ++i)
            writer.Write(0, 8); // table B: four ones
        const Spectrum spectrum = Decode(Header(0, 0), info, writer, 1600);
        const int lines = 576 - static_cast<int>(2 * bigValues);
        EXPECT_EQ(spectrum.remaining, 1600 - lines / 4 * 8) << bigValues;
        EXPECT_EQ(spectrum.count, lines / 4 == 0 ? 0 : 576 - lines % 4) << bigValues;
    }
}

TEST(HuffmanData, EveryMagnitudeThatLinbitsCanGive) {
    GranuleInfo info;
    std::ranges::fill(info.tableSelect, 31u); // 13 linbits
    for (int first = 15; first <= 8206; first += 150) {
        BitWriter writer;
        for (int magnitude = first; magnitude < first + 150; ++magnitude) {
            writer.Write(0b0011, 4); // (15, 15)
            writer.Write(std::min(magnitude, 8206) - 15, 13);
            writer.Write(0, 1);
            writer.Write(std::min(magnitude, 8206) - 15, 13);
            writer.Write(1, 1);
        }
        info.bigValues = 150;
        const Spectrum spectrum = Decode(Header(0, 0), info, writer, static_cast<int>(writer.Bits()));
        for (int i = 0; i < 150; ++i) {
            const int magnitude = std::min(first + i, 8206);
            ASSERT_EQ(spectrum.lines[static_cast<std::size_t>(2 * i)], magnitude);
            ASSERT_EQ(spectrum.lines[static_cast<std::size_t>(2 * i + 1)], -magnitude);
        }
    }
}

TEST(ScaleFactors, IntensityRightCompress510And511ReadNothing) {
    for (const std::uint32_t compress : {510u, 511u}) {
        trnmpa::DecoderHeader header = Header(1, 0, 2);
        header.modeExtension = 1;
        GranuleInfo info;
        info.scaleFactorCompress = compress;
        info.preflag = 1;
        BitWriter writer;
        writer.Write(0xFFFF, 16);
        Bits bits(writer);
        trnmpa::ScaleFactors factors;
        trnmpa::ReadScaleFactorsLsf(bits.Reader(), header, 1, info, factors);
        EXPECT_EQ(bits.Remaining(), 16);
        EXPECT_EQ(info.preflag, 0u);
        EXPECT_EQ(factors.longBand[0], 0);
    }
}

TEST(ScaleFactors, TheModeExtensionCountsWhateverTheMode) {
    trnmpa::DecoderHeader header = Header(1, 0, 2);
    header.mode = 0;
    header.modeExtension = 1;
    GranuleInfo info;
    info.scaleFactorCompress = 500; // 250 as intensity right channel: lengths 2 0 0 0
    BitWriter writer;
    writer.Write(0xFFFF, 16);
    Bits bits(writer);
    trnmpa::ScaleFactors factors;
    trnmpa::ReadScaleFactorsLsf(bits.Reader(), header, 1, info, factors);
    EXPECT_EQ(factors.longBand[0], 3);
    EXPECT_EQ(info.preflag, 0u);
}

TEST(Requantisation, GainSpansTheWholeTableAndStaysInIt) {
    const trnmpa::DecoderHeader header = Header(1, 0, 2);
    GranuleInfo info;
    info.windowSwitching = 1;
    info.blockType = 2;
    info.scaleFactorScale = 1;
    std::ranges::fill(info.subblockGain, 7u);
    trnmpa::ScaleFactors factors;
    for (auto& window : factors.shortBand)
        std::ranges::fill(window, std::uint8_t{31});
    const trnmpa::LineGains quiet(info, trnmpa::LayoutOf(header, info), factors);
    EXPECT_FLOAT_EQ(static_cast<float>(quiet.OfPair(0)[1]), 16384.0f * std::exp2(-326.0f / 4));
    EXPECT_EQ(quiet.OfPair(0)[0], -quiet.OfPair(0)[1]);

    GranuleInfo loud;
    loud.globalGain = 255;
    const trnmpa::LineGains gains(loud, trnmpa::LayoutOf(header, loud), trnmpa::ScaleFactors());
    EXPECT_FLOAT_EQ(static_cast<float>(gains.OfPair(287)[1]), 16384.0f * std::exp2(45.0f / 4));
}

TEST(Requantisation, CountEndsBehindTheLastNonZeroValue) {
    GranuleInfo info;
    info.bigValues = 150;
    std::ranges::fill(info.tableSelect, 1u);
    info.region0Count = 15;
    BitWriter writer;
    for (int i = 0; i < 150; ++i)
        writer.Write(i == 50 ? 0b011 : 1, i == 50 ? 3 : 1); // (1, 0) negative among (0, 0)
    const Spectrum spectrum = Decode(Header(0, 0), info, writer, static_cast<int>(writer.Bits()));
    EXPECT_EQ(spectrum.remaining, 0);
    EXPECT_EQ(spectrum.count, 101);
    EXPECT_EQ(spectrum.lines[100], -1);
    EXPECT_EQ(spectrum.lines[101], 0);
    EXPECT_EQ(spectrum.lines[575], 0) << "cleared, whatever was there";
}

TEST(BandLayouts, CoverEveryLineOnce) {
    for (int row = 0; row < 3; ++row) {
        for (int rate = 0; rate < 3; ++rate) {
            for (const auto& [blockType, mixed] : {std::pair{0u, 0u}, {2u, 0u}, {2u, 1u}}) {
                GranuleInfo info;
                info.blockType = blockType;
                info.mixedBlock = mixed;
                int line = 0;
                for (const trnmpa::BandSegment& segment :
                     trnmpa::LayoutOf(Header(row, rate), info).Segments()) {
                    EXPECT_EQ(segment.start, line);
                    EXPECT_GT(segment.width, 0);
                    line = segment.End();
                }
                EXPECT_EQ(line, 576) << row << ' ' << rate << ' ' << blockType << ' ' << mixed;
            }
        }
    }
}

/// Positions of a right channel that is zero from `firstZero` on.
std::array<std::uint8_t, 576> Positions(const trnmpa::DecoderHeader& header, const GranuleInfo& info,
                                        const trnmpa::ScaleFactors& factors, int firstZero) {
    std::array<float, 576> right = {};
    for (int i = 0; i < firstZero; ++i)
        right[static_cast<std::size_t>(i)] = 1;
    std::array<std::uint8_t, 576> positions = {};
    trnmpa::FindIntensityPositions(header, {info, trnmpa::LayoutOf(header, info), factors}, right, positions);
    return positions;
}

TEST(IntensityPositions, TheLastBandFollowsTheOneBelowIt) {
    const trnmpa::DecoderHeader mpeg1 = Header(0, 0, 2);
    trnmpa::ScaleFactors factors;
    factors.longBand[20] = 5;
    const GranuleInfo info;
    auto positions = Positions(mpeg1, info, factors, 342);
    EXPECT_EQ(positions[341], trnmpa::kNoIntensity);
    EXPECT_EQ(positions[342], 5);
    EXPECT_EQ(positions[418], 5);
    positions = Positions(mpeg1, info, factors, 400);
    EXPECT_EQ(positions[417], trnmpa::kNoIntensity);
    EXPECT_EQ(positions[418], 3) << "the band below is not zero: MPEG-1";
    positions = Positions(Header(1, 0, 2), info, factors, 500);
    EXPECT_EQ(positions[575], 0) << "the band below is not zero: lower sampling frequencies";
    EXPECT_EQ(Positions(mpeg1, info, factors, 419)[500], trnmpa::kNoIntensity);
}

TEST(IntensityPositions, PositionsThatMeanNone) {
    trnmpa::ScaleFactors factors;
    std::ranges::fill(factors.longBand, std::uint8_t{9});
    const GranuleInfo info;
    EXPECT_EQ(Positions(Header(0, 0, 2), info, factors, 0)[0], trnmpa::kNoIntensity);
    EXPECT_EQ(Positions(Header(1, 0, 2), info, factors, 0)[0], 9);
    std::ranges::fill(factors.longBand, std::uint8_t{15});
    std::ranges::fill(factors.longBits, std::uint8_t{4});
    EXPECT_EQ(Positions(Header(1, 0, 2), info, factors, 0)[0], trnmpa::kNoIntensity);
    std::ranges::fill(factors.longBits, std::uint8_t{5});
    EXPECT_EQ(Positions(Header(1, 0, 2), info, factors, 0)[0], 15);
}

TEST(IntensityPositions, MixedLongBandsFollowOnlyBehindZeroWindows) {
    const trnmpa::DecoderHeader header = Header(0, 0, 2);
    GranuleInfo info;
    info.windowSwitching = 1;
    info.blockType = 2;
    info.mixedBlock = 1;
    trnmpa::ScaleFactors factors;
    std::ranges::fill(factors.longBand, std::uint8_t{2});
    EXPECT_EQ(Positions(header, info, factors, 0)[0], 2);
    EXPECT_EQ(Positions(header, info, factors, 37)[0], trnmpa::kNoIntensity);
}

} // namespace
