#include "mpa/frame_header.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>

using namespace trnmpa;
using test::FrameSpec;
using test::HeaderOf;

namespace {

MpaFrameHeader Decoded(const FrameSpec& spec) {
    MpaFrameHeader header;
    DecodeFrameHeader(HeaderOf(spec), header);
    return header;
}

/// The rows behind the heading of one of the decoder's tables, split at the commas.
std::vector<std::vector<std::string>> TableRows(const char* name) {
    std::ifstream file(test::SourceFolder() / "src" / "decoder" / "tables" / name);
    std::vector<std::vector<std::string>> rows;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::istringstream text(line);
        rows.emplace_back();
        for (std::string cell; std::getline(text, cell, ',');)
            rows.back().push_back(cell);
    }
    return rows;
}

const std::map<std::string, int> kVersionBits = {
    {"1", test::kMpeg1}, {"2", test::kMpeg2}, {"2.5", test::kMpeg25}};

} // namespace

TEST(FrameHeader, BitRatesAreTheStandards) {
    const auto rows = TableRows("bitrates.csv");
    ASSERT_EQ(rows.size(), 90u);
    for (const auto& row : rows) {
        const int layer = static_cast<int>(row.at(1).size());
        const int index = std::stoi(row.at(2));
        const int kbps = std::stoi(row.at(3));
        const FrameSpec spec = {.version = kVersionBits.at(row.at(0)), .layer = layer, .bitRateIndex = index};
        EXPECT_EQ(Decoded(spec).bitRate, kbps) << row.at(0) << " layer " << row.at(1) << " index " << index;
        if (spec.version == test::kMpeg2) {
            const FrameSpec mpeg25 = {.version = test::kMpeg25, .layer = layer, .bitRateIndex = index};
            EXPECT_EQ(Decoded(mpeg25).bitRate, kbps);
        }
    }
}

TEST(FrameHeader, SampleRatesAreTheStandards) {
    const auto rows = TableRows("samplerates.csv");
    ASSERT_EQ(rows.size(), 9u);
    for (const auto& row : rows) {
        const FrameSpec spec = {.version = kVersionBits.at(row.at(0)),
                                .sampleRateIndex = std::stoi(row.at(1))};
        EXPECT_EQ(Decoded(spec).sampleRate, std::stoi(row.at(2))) << row.at(0) << " index " << row.at(1);
    }
}

TEST(FrameHeader, ReservedVersionReadsAsMpeg1) {
    const MpaFrameHeader header = Decoded({.version = test::kReservedVersion});
    EXPECT_EQ(header.lsf, 0);
    EXPECT_EQ(header.sampleRate, 44100);
    EXPECT_EQ(header.bitRate, 128);
    EXPECT_TRUE(IsValidFrameHeader(HeaderOf({.version = test::kReservedVersion})));
}

TEST(FrameHeader, FieldsAreTheBits) {
    MpaFrameHeader header;
    header.firstFrameOffset = 77;
    DecodeFrameHeader({0xFF, 0xF3, 0xA6, 0xC4}, header);
    EXPECT_EQ(header.firstFrameOffset, 77);
    EXPECT_EQ(header.bitRateIndex, 10);
    EXPECT_EQ(header.sampleRateIndex, 1);
    EXPECT_EQ(header.lsf, 1);
    EXPECT_EQ(header.padding, 1);
    EXPECT_EQ(header.layer, 3);
    EXPECT_EQ(header.channelMode, 3);
    EXPECT_EQ(header.channels, 1);
    EXPECT_EQ(header.bitRate, 96);
    EXPECT_EQ(header.sampleRate, 24000);
    EXPECT_EQ(header.frameBytes, 96 * 72000 / 24000 + 1);
    EXPECT_FALSE(IsProtected({0xFF, 0xF3, 0xA6, 0xC4}));
    EXPECT_TRUE(IsProtected({0xFF, 0xF2, 0xA6, 0xC4}));
}

TEST(FrameHeader, ModesOtherThanSingleChannelHaveTwo) {
    for (int mode = 0; mode < 3; ++mode)
        EXPECT_EQ(Decoded({.mode = mode}).channels, 2);
    EXPECT_EQ(Decoded({.mode = 3}).channels, 1);
}

TEST(FrameHeader, Lengths) {
    EXPECT_EQ(Decoded({}).frameBytes, 417);
    EXPECT_EQ(Decoded({.isPadded = true}).frameBytes, 418);
    EXPECT_EQ(Decoded({.version = test::kMpeg2, .bitRateIndex = 8, .sampleRateIndex = 1}).frameBytes, 192);
    EXPECT_EQ(Decoded({.layer = 2, .bitRateIndex = 10, .sampleRateIndex = 1}).frameBytes, 576);
    // Layer I counts in slots of 4 bytes.
    EXPECT_EQ(Decoded({.layer = 1, .bitRateIndex = 14}).frameBytes, 121 * 4);
    EXPECT_EQ(Decoded({.layer = 1, .bitRateIndex = 14, .isPadded = true}).frameBytes, 122 * 4);
}

TEST(FrameHeader, LayerTwoOfMpeg2IsMeasuredAtHalfLength) {
    const FrameSpec spec = {.version = test::kMpeg2, .layer = 2, .bitRateIndex = 8, .sampleRateIndex = 1};
    EXPECT_EQ(Decoded(spec).frameBytes, 192);
}

TEST(FrameHeader, Mpeg25HalvesTwice) {
    EXPECT_EQ(Decoded({.version = test::kMpeg25}).sampleRate, 11025);
    EXPECT_EQ(Decoded({.version = test::kMpeg25}).lsf, 1);
}

TEST(FrameHeader, ValidityOfEveryPattern) {
    int valid = 0;
    for (int pattern = 0; pattern < 1 << 16; ++pattern) {
        const auto second = static_cast<std::uint8_t>(pattern >> 8);
        const auto third = static_cast<std::uint8_t>(pattern);
        const int layerBits = second % 8 / 2;
        const int bitRateIndex = third / 16;
        const int sampleRateIndex = third / 4 % 4;
        const bool expected = second >= 0xE0 && (layerBits == 1 || layerBits == 2) && bitRateIndex > 0 &&
                              bitRateIndex < 15 && sampleRateIndex < 3;
        EXPECT_EQ(IsValidFrameHeader({0xFF, second, third, 0xAA}), expected) << pattern;
        EXPECT_FALSE(IsValidFrameHeader({0xFE, second, third, 0xAA}));
        valid += expected;
    }
    // 4 versions, 2 layers, protection; 14 rates, 3 rates, padding and private bit.
    EXPECT_EQ(valid, 4 * 2 * 2 * 14 * 3 * 4);
}

TEST(FrameHeader, EveryPatternDecodesAndValidLengthsAreBounded) {
    int longest = 0;
    for (int pattern = 0; pattern < 1 << 16; ++pattern) {
        const FrameHeaderBytes bytes = {0xFF, static_cast<std::uint8_t>(pattern >> 8),
                                        static_cast<std::uint8_t>(pattern), 0};
        MpaFrameHeader header;
        DecodeFrameHeader(bytes, header);
        EXPECT_GE(header.frameBytes, 0);
        if (!IsValidFrameHeader(bytes))
            continue;
        EXPECT_GE(header.frameBytes, 24);
        EXPECT_GT(header.sampleRate, 0);
        longest = std::max(longest, header.frameBytes);
    }
    EXPECT_EQ(longest, kMaximumFrameBytes);
}

TEST(FrameHeader, SamplesPerFrameByLayerAndVersion) {
    EXPECT_EQ(SamplesPerFrame(1, 1), 384);
    EXPECT_EQ(SamplesPerFrame(1, 2), 384);
    EXPECT_EQ(SamplesPerFrame(2, 1), 1152);
    EXPECT_EQ(SamplesPerFrame(2, 2), 1152);
    EXPECT_EQ(SamplesPerFrame(3, 1), 1152);
    EXPECT_EQ(SamplesPerFrame(3, 2), 576);
    EXPECT_EQ(SamplesPerFrame(0, 2), 1152);
    EXPECT_EQ(SamplesPerFrame(9, 1), 1152);
}

TEST(FrameHeader, InfoOfMpeg1Stereo) {
    const MpaFrameInfo info = FillFrameInfo(Decoded({}));
    EXPECT_EQ(info.valid, 1u);
    EXPECT_EQ(info.layer, 3);
    EXPECT_EQ(info.version, 1);
    EXPECT_EQ(info.frameBytes, 417);
    EXPECT_EQ(info.bitRate, 128000);
    EXPECT_EQ(info.sampleRate, 44100);
    EXPECT_EQ(info.stereo, 1);
    EXPECT_EQ(info.bitsPerSample, 16);
    EXPECT_EQ(info.pcmBytesPerFrame, 4608);
}

TEST(FrameHeader, InfoOfMpeg25Mono) {
    const MpaFrameInfo info = FillFrameInfo(Decoded({.version = test::kMpeg25, .mode = test::kMono}));
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.stereo, 0);
    EXPECT_EQ(info.sampleRate, 11025);
    EXPECT_EQ(info.pcmBytesPerFrame, 1152);
}

TEST(FrameHeader, CbrMatchLooksAtTheseBitsOnly) {
    const FrameHeaderBytes reference = HeaderOf({});
    // Bits that differ without harm, per byte: none; protection; padding and private; all.
    const FrameHeaderBytes ignored = {0x00, 0x01, 0x03, 0xFF};
    for (std::size_t byte = 0; byte < 4; ++byte)
        for (int bit = 0; bit < 8; ++bit) {
            FrameHeaderBytes other = reference;
            other[byte] = static_cast<std::uint8_t>(other[byte] ^ 1 << bit);
            const bool isIgnored = (ignored[byte] >> bit & 1) != 0;
            EXPECT_EQ(SameCbrHeader(reference, other), isIgnored) << "byte " << byte << " bit " << bit;
            EXPECT_EQ(SameCbrHeader(other, reference), isIgnored);
        }
    EXPECT_TRUE(SameCbrHeader(reference, reference));
}
