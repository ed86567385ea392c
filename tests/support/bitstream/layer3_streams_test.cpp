/// Layer III streams: what was written is what the plain decoder reads.
#include "support/bitstream/random.h"
#include "support/bitstream/stream_checks.h"
#include "support/model/tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

namespace {

using namespace test::bitstream;
namespace model = test::model;

const std::vector<BlockChoice> kAllBlocks{{0, false}, {1, false}, {2, false}, {3, false}, {2, true}};

std::string Name(Version version, int rate, int mode) {
    return "version " + std::to_string(static_cast<int>(version)) + " rate " + std::to_string(rate) +
           " mode " + std::to_string(mode);
}

TEST(Layer3Streams, EveryRateAndModeDecodesAsWritten) {
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25})
        for (int rate = 0; rate < 3; ++rate)
            for (int mode = 0; mode < 4; ++mode) {
                StreamOptions options;
                options.seed = static_cast<std::uint64_t>(100 * rate + mode);
                options.frames = 12;
                options.version = version;
                options.sampleRateIndex = rate;
                options.mode = mode;
                options.modeExtensions =
                    mode == model::kJointStereo ? std::vector{0, 1, 2, 3} : std::vector{0};
                options.bitrateIndices = {8, 11, 14};
                options.crc = rate == 1;
                options.padding = Padding::kRandom;
                options.incidentalBits = true;
                options.layer3.blocks = kAllBlocks;
                options.layer3.reservoir = ReservoirUse::kRandom;
                WriteChecked(options, Name(version, rate, mode));
            }
}

TEST(Layer3Streams, EveryBlockTypeDecodesAsWritten) {
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25})
        for (const BlockChoice block :
             {BlockChoice{0, false}, {1, false}, {2, false}, {3, false}, {1, true}, {2, true}, {3, true}}) {
            StreamOptions options;
            options.version = version;
            options.sampleRateIndex = 2;
            options.layer3.blocks = {block};
            const Stream stream = WriteChecked(options, "block type " + std::to_string(block.type));
            for (const FrameRecord& frame : stream.frames)
                EXPECT_EQ(frame.sideInfo.granules[0][1].blockType, block.type);
        }
}

TEST(Layer3Streams, BlockTypesInTurnGoThroughTheList) {
    StreamOptions options;
    options.layer3.blocks = {{0, false}, {1, false}, {2, true}, {3, false}};
    options.layer3.blocksInTurn = true;
    const Stream stream = WriteChecked(options, "in turn");
    for (std::size_t i = 0; i < stream.frames.size(); ++i)
        for (std::size_t granule = 0; granule < 2; ++granule)
            for (std::size_t channel = 0; channel < 2; ++channel)
                EXPECT_EQ(stream.frames[i].sideInfo.granules[granule][channel].blockType,
                          static_cast<int>((2 * i + granule) % 4));
}

/// (x, y) of all pairs in the big values, magnitudes at most 15, and the largest value.
std::set<std::pair<int, int>> PairsOf(const Stream& stream, int& largest) {
    std::set<std::pair<int, int>> pairs;
    for (const FrameRecord& frame : stream.frames)
        for (std::size_t granule = 0; granule < 2; ++granule)
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const auto& lines = frame.granules[granule][channel].lines;
                const int end = 2 * frame.sideInfo.granules[granule][channel].bigValues;
                for (std::size_t i = 0; i < static_cast<std::size_t>(end); i += 2) {
                    pairs.emplace(std::min(std::abs(lines[i]), 15), std::min(std::abs(lines[i + 1]), 15));
                    largest = std::max({largest, std::abs(lines[i]), std::abs(lines[i + 1])});
                }
            }
    return pairs;
}

TEST(Layer3Streams, EveryCodeOfEveryTableDecodesAsWritten) {
    for (int table = 0; table < 32; ++table) {
        if (table == 4 || table == 14)
            continue;
        StreamOptions options;
        options.seed = static_cast<std::uint64_t>(table) + 1;
        options.frames = 20;
        options.bitrateIndices = {14};
        options.layer3.tables = {table};
        const Stream stream = WriteChecked(options, "table " + std::to_string(table));
        int largest = 0;
        const auto pairs = PairsOf(stream, largest);
        const model::PairTable& standard = model::StandardTables().pairs[static_cast<std::size_t>(table)];
        EXPECT_EQ(pairs.size(), standard.codes.size()) << "table " << table;
        if (standard.linbits > 0) {
            EXPECT_GE(largest, 15 + (1 << standard.linbits) / 2) << "table " << table;
        }
    }
}

TEST(Layer3Streams, EveryCodeOfBothQuadrupleTablesDecodesAsWritten) {
    for (int table = 0; table < 2; ++table) {
        StreamOptions options;
        options.frames = 40;
        options.bitrateIndices = {14};
        options.layer3.count1Table = table;
        const Stream stream = WriteChecked(options, "quadruples");
        std::set<std::vector<int>> quads;
        for (const FrameRecord& frame : stream.frames)
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const auto& lines = frame.granules[0][channel].lines;
                const model::GranuleInfo& info = frame.sideInfo.granules[0][channel];
                EXPECT_EQ(info.count1Table, table);
                for (int i = 2 * info.bigValues; i + 4 <= 576; i += 4)
                    quads.insert(std::vector<int>(lines.begin() + i, lines.begin() + i + 4));
            }
        EXPECT_EQ(quads.size(), 81U);
    }
}

TEST(Layer3Streams, EveryScfsiPatternDecodesAsWritten) {
    for (int pattern = 0; pattern < 16; ++pattern) {
        StreamOptions options;
        options.frames = 6;
        options.layer3.scfsi = pattern;
        options.layer3.blocks = {{0, false}, {1, false}, {3, false}};
        const Stream stream = WriteChecked(options, "scfsi " + std::to_string(pattern));
        EXPECT_EQ(stream.frames[0].sideInfo.scfsi[0][0], (pattern & 8) != 0);
        EXPECT_EQ(stream.frames[5].sideInfo.scfsi[1][3], (pattern & 1) != 0);
    }
}

TEST(Layer3Streams, ScfsiOverShortBlocksKeepsTheFirstLongFactors) {
    StreamOptions options;
    options.frames = 30;
    options.layer3.blocks = kAllBlocks;
    options.layer3.scfsi = 15;
    options.layer3.scfsiOverShortBlocks = true;
    WriteChecked(options, "scfsi over short blocks");
}

TEST(Layer3Streams, EveryMpeg1ScalefacCompressDecodesAsWritten) {
    for (int compress = 0; compress < 16; ++compress) {
        StreamOptions options;
        options.seed = static_cast<std::uint64_t>(compress);
        options.bitrateIndices = {12};
        options.layer3.blocks = kAllBlocks;
        options.layer3.scalefacCompress = {compress};
        const Stream stream = WriteChecked(options, "compress " + std::to_string(compress));
        EXPECT_EQ(stream.frames.back().sideInfo.granules[1][1].scalefacCompress, compress);
    }
}

TEST(Layer3Streams, IntensityPositionsAboveSevenAreWrittenWhenAsked) {
    for (const bool above : {false, true}) {
        StreamOptions options;
        options.frames = 40;
        options.mode = model::kJointStereo;
        options.modeExtensions = {1};
        options.layer3.positionsAbove7 = above;
        const Stream stream = WriteChecked(options, "positions");
        int largest = 0;
        for (const FrameRecord& frame : stream.frames)
            for (const auto& granule : frame.granules)
                for (const int factor : granule[1].scaleFactors.longBand)
                    largest = std::max(largest, factor);
        EXPECT_EQ(largest, above ? 15 : 7);
    }
}

TEST(Layer3Streams, EveryLsfScalefacCompressDecodesAsWritten) {
    std::set<int> left;
    std::set<int> right;
    for (int compress = 0; compress < 512; ++compress) {
        StreamOptions options;
        options.seed = static_cast<std::uint64_t>(compress);
        options.version = compress % 2 == 0 ? Version::kMpeg2 : Version::kMpeg25;
        options.frames = 4;
        options.bitrateIndices = {14};
        options.mode = model::kJointStereo;
        options.modeExtensions = {1, 3};
        options.layer3.blocks = kAllBlocks;
        options.layer3.scalefacCompress = {compress};
        options.layer3.rightCompress = {std::min(compress, 509)};
        const Stream stream = WriteChecked(options, "compress " + std::to_string(compress));
        left.insert(stream.frames.back().sideInfo.granules[0][0].scalefacCompress);
        right.insert(stream.frames.back().sideInfo.granules[0][1].scalefacCompress);
    }
    EXPECT_EQ(left.size(), 512U);
    EXPECT_EQ(right.size(), 510U);
}

TEST(Layer3Streams, ExtremeFieldsAndRegionsPastTheEndDecodeAsWritten) {
    StreamOptions options;
    options.frames = 20;
    options.bitrateIndices = {13};
    options.layer3.regionsPastEnd = true;
    options.layer3.subblockGain = 7;
    options.layer3.scalefacScale = 1;
    options.layer3.preflag = 1;
    options.layer3.blocks = kAllBlocks;
    for (const int gain : {0, 255}) {
        options.layer3.globalGain = gain;
        WriteChecked(options, "gain " + std::to_string(gain));
    }
}

TEST(Layer3Streams, LevelIsAudibleAndRarelyClips) {
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25})
        for (const int mode : {model::kJointStereo, model::kSingleChannel}) {
            StreamOptions options;
            options.version = version;
            options.frames = 60;
            options.mode = mode;
            options.modeExtensions = mode == model::kJointStereo ? std::vector{0, 1, 2, 3} : std::vector{0};
            options.layer3.blocks = kAllBlocks;
            const auto summary = ExpectDecodesAsWritten(WriteStream(options), Name(version, 0, mode));
            EXPECT_GT(summary.rms, 0.005);
            EXPECT_LT(summary.rms, 0.25);
            EXPECT_LT(summary.clipped * 1000, summary.values) << Name(version, 0, mode);
        }
}

} // namespace
