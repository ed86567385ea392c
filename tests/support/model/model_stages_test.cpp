/// Single stages of the model whose answers can be worked out by hand.
#include "support/bitstream/bit_writer.h"
#include "support/model/decoder_model.h"
#include "support/model/stereo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace test::model;
using test::bitstream::BitWriter;

constexpr std::array<std::uint8_t, 4> kLayer3Header{0xFF, 0xFB, 0x90, 0x00}; // 44100 Hz, 128 kbit/s, stereo

TEST(ModelOutput, RoundsHalvesToEvenAndClips) {
    EXPECT_EQ(ToPcm(0.5), 0);
    EXPECT_EQ(ToPcm(1.5), 2);
    EXPECT_EQ(ToPcm(-0.5), 0);
    EXPECT_EQ(ToPcm(-1.5), -2);
    EXPECT_EQ(ToPcm(40000.0), 32767);
    EXPECT_EQ(ToPcm(-40000.0), -32768);
    EXPECT_EQ(ToPcm(32767.5), 32767);
    EXPECT_EQ(ToPcm(-32768.5), -32768);
    EXPECT_EQ(ToPcm(3e9), 32767) << "a negative number in 32 bits";
    EXPECT_EQ(ToPcm(-3e9), -32768) << "a positive number in 32 bits";
}

TEST(ModelHeader, TakesWhatTheDecoderTakes) {
    EXPECT_EQ(ParseHeader(kLayer3Header, {})->frameBytes, 417);
    EXPECT_EQ(ParseHeader({0xFF, 0xFD, 0xA4, 0x00}, {})->frameBytes, 576);   // layer II, 192 kbit/s, 48000 Hz
    EXPECT_EQ(ParseHeader({0xFF, 0xF3, 0x80, 0x00}, {})->frameBytes, 208);   // layer III, 64 kbit/s, 22050 Hz
    EXPECT_EQ(ParseHeader({0xFF, 0xE3, 0x80, 0x00}, {})->sampleRate, 11025); // MPEG 2.5
    EXPECT_FALSE(ParseHeader({0xFF, 0xEB, 0x90, 0x00}, {})->lsf);            // the reserved version
    EXPECT_FALSE(ParseHeader({0xFF, 0xFF, 0x90, 0x00}, {}));                 // layer I
    EXPECT_FALSE(ParseHeader({0xFF, 0xFB, 0x00, 0x00}, {}));                 // free format
    EXPECT_FALSE(ParseHeader({0xFF, 0xFB, 0x94, 0x00}, ParseHeader(kLayer3Header, {}))); // other sample rate
}

TEST(ModelSearch, PassesJunkBeforeTheHeader) {
    for (std::size_t junk = 0; junk < 9; ++junk) {
        std::vector<std::uint8_t> stream(junk, 0x11);
        stream.insert(stream.end(), kLayer3Header.begin(), kLayer3Header.end());
        stream.resize(stream.size() + 413);
        Decoder decoder(stream);
        ASSERT_EQ(decoder.ReadHeader(), Outcome::kDone) << junk;
        EXPECT_EQ(decoder.CurrentFrame().offset, junk);
        EXPECT_EQ(decoder.DecodeBody(), Outcome::kDone);
        EXPECT_EQ(decoder.CurrentFrame().pcm, std::vector<std::int16_t>(2304, 0));
    }
}

TEST(ModelSearch, SaysHowTheDataEnded) {
    const std::vector<std::uint8_t> junk(50, 0x11);
    EXPECT_EQ(Decoder(junk).ReadHeader(), Outcome::kNotSynced);
    EXPECT_EQ(Decoder(std::span(junk).first(3)).ReadHeader(), Outcome::kEndOfStream);
    const std::vector<std::uint8_t> crcCut{0xFF, 0xFA, 0x90, 0x00, 0x12};
    EXPECT_EQ(Decoder(crcCut).ReadHeader(), Outcome::kCrcCut);
    const std::vector<std::uint8_t> sideInfoCut{0xFF, 0xFB, 0x90, 0x00, 0x12};
    EXPECT_EQ(Decoder(sideInfoCut).ReadHeader(), Outcome::kEndOfStream);
}

TEST(ModelReservoir, GivesZerosBeforeTheFirstByteAndOldBytesAfterAWrap) {
    Reservoir reservoir;
    const std::vector<std::uint8_t> bytes{1, 2, 3};
    reservoir.Append(bytes);
    EXPECT_EQ(reservoir.Last(5), (std::vector<std::uint8_t>{0, 0, 1, 2, 3}));
    reservoir.Append(std::vector<std::uint8_t>(2047, 9));
    EXPECT_EQ(reservoir.Last(2048).front(), 3);
}

TEST(ModelLayer1, ScalesByTheClassOfTheAllocation) {
    BitWriter bits;
    for (int subband = 0; subband < 32; ++subband)
        bits.Write(subband == 1 ? 2 : 0, 4);
    bits.Write(3, 6); // multiplier 2 * 2^-1
    for (int row = 0; row < 12; ++row)
        bits.Write(row % 7, 3);
    Header header;
    header.layer = 1;
    header.mode = kSingleChannel;
    header.channels = 1;
    const std::vector<SampleRow> rows = DecodeLayer1(header, bits.Bytes());
    ASSERT_EQ(rows.size(), 12U);
    for (int row = 0; row < 12; ++row) {
        const auto& samples = rows[static_cast<std::size_t>(row)][0];
        EXPECT_NEAR(samples[1], (row % 7 - 3) * 65534.0 / 5.0, 1e-9); // class 2 has 5 levels
        EXPECT_EQ(samples[0], 0.0);
    }
}

TEST(ModelLayer1, SharesSamplesFromTheBoundOn) {
    BitWriter bits;
    for (int field = 0; field < 4 * 2 + 28; ++field)
        bits.Write(field == 8 ? 1 : 0, 4); // subband 4, the first shared one
    bits.Write(3, 6);
    bits.Write(6, 6);
    for (int row = 0; row < 12; ++row)
        bits.Write(2, 2);
    Header header;
    header.layer = 1;
    header.mode = kJointStereo;
    header.channels = 2;
    for (const SampleRow& row : DecodeLayer1(header, bits.Bytes())) {
        EXPECT_NEAR(row[0][4], 65534.0 / 3.0, 1e-9);
        EXPECT_NEAR(row[1][4], 65534.0 / 6.0, 1e-9);
    }
}

/// Long blocks at 44100 Hz, joint stereo with intensity.
struct IntensityCase {
    Header header = *ParseHeader({0xFF, 0xFB, 0x90, 0x50}, {});
    GranuleInfo info;
    ScaleFactors factors;
    Spectrum right{};
};

TEST(ModelIntensity, LastBandTakesThePositionBelowOrTheMiddle) {
    IntensityCase with;
    with.factors.longBand[20] = 5;
    auto positions = IntensityPositions(with.header, with.info, with.factors, with.right);
    EXPECT_EQ(positions[0], 0);
    EXPECT_EQ(positions[400], 5);
    EXPECT_EQ(positions[500], 5);
    with.right[417] = 1.0; // the last line of band 20
    positions = IntensityPositions(with.header, with.info, with.factors, with.right);
    EXPECT_EQ(positions[417], kNoIntensity);
    EXPECT_EQ(positions[418], 3);
    with.right[575] = 1.0;
    positions = IntensityPositions(with.header, with.info, with.factors, with.right);
    EXPECT_EQ(positions[575], kNoIntensity);
}

TEST(ModelIntensity, PositionsFromSevenOnMeanNone) {
    IntensityCase with;
    with.factors.longBand[2] = 7;
    with.factors.longBand[3] = 8;
    const auto positions = IntensityPositions(with.header, with.info, with.factors, with.right);
    EXPECT_EQ(positions[8], kNoIntensity);
    EXPECT_EQ(positions[12], kNoIntensity);
    EXPECT_EQ(positions[4], 0);
}

TEST(ModelIntensity, LargestValueOfAFieldMeansNoneAtLowerSamplingFrequencies) {
    IntensityCase with;
    with.header = *ParseHeader({0xFF, 0xF3, 0x90, 0x50}, {});
    with.factors.longBand = {3, 3, 7, 0};
    with.factors.longLength = {2, 3, 4, 0};
    const auto positions = IntensityPositions(with.header, with.info, with.factors, with.right);
    EXPECT_EQ(positions[0], kNoIntensity);
    EXPECT_EQ(positions[6], 3);
    EXPECT_EQ(positions[12], kNoIntensity);
    EXPECT_EQ(positions[18], 0);
}

TEST(ModelAliasReduction, LeavesMixedShortBlocksAloneAboveTheFirstBoundary) {
    Spectrum spectrum{};
    spectrum[17] = 1.0;
    spectrum[53] = 1.0;
    GranuleInfo info;
    info.windowSwitching = true;
    info.blockType = 2;
    EXPECT_NEAR(ReduceAliases(info, spectrum)[53], 1.0 / std::sqrt(1.36), 1e-12);
    info.mixed = true;
    EXPECT_EQ(ReduceAliases(info, spectrum)[53], 1.0);
    EXPECT_NEAR(ReduceAliases(info, spectrum)[17], 1.0 / std::sqrt(1.36), 1e-12);
}

} // namespace
