/// Layer II streams: what was written is what the plain decoder reads.
#include "support/bitstream/stream_checks.h"
#include "support/model/layer2.h"
#include "support/model/tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

namespace {

using namespace test::bitstream;
namespace model = test::model;

/// Levels that were used, by allocation table and subband.
using LevelsSeen = std::map<std::string, std::map<std::size_t, std::set<int>>>;

void Collect(const Stream& stream, LevelsSeen& seen) {
    for (const FrameRecord& frame : stream.frames) {
        auto& table = seen[model::AllocationTableFor(frame.header)];
        for (std::size_t subband = 0; subband < 32; ++subband)
            table[subband].insert(frame.layer2.levels[0][subband]);
    }
}

StreamOptions Layer2(Version version, int rate, int mode, int bitrateIndex) {
    StreamOptions options;
    options.layer = 2;
    options.seed = static_cast<std::uint64_t>(1000 * rate + 100 * mode + bitrateIndex);
    options.version = version;
    options.sampleRateIndex = rate;
    options.mode = mode;
    options.bitrateIndices = {bitrateIndex};
    options.modeExtensions = mode == model::kJointStereo ? std::vector{0, 1, 2, 3} : std::vector{0};
    return options;
}

TEST(Layer2Streams, EveryAllowedCombinationDecodesAsWritten) {
    int written = 0;
    int refused = 0;
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25})
        for (int rate = 0; rate < 3; ++rate)
            for (int mode = 0; mode < 4; ++mode)
                for (int bitrate = 1; bitrate <= 14; ++bitrate) {
                    StreamOptions options = Layer2(version, rate, mode, bitrate);
                    options.frames = 4;
                    options.crc = bitrate % 2 == 0;
                    try {
                        WriteChecked(options, "rate " + std::to_string(rate) + " mode " +
                                                  std::to_string(mode) + " bit rate index " +
                                                  std::to_string(bitrate));
                        ++written;
                    } catch (const std::invalid_argument&) {
                        ++refused;
                    }
                }
    // MPEG-1: four bit rates are forbidden in each of three modes and in single channel, at three sample
    // rates.
    EXPECT_EQ(refused, 3 * (3 * 4 + 4));
    EXPECT_EQ(written, 3 * 3 * 4 * 14 - refused);
}

TEST(Layer2Streams, EveryEntryOfEveryAllocationTableIsWritten) {
    LevelsSeen seen;
    struct Case {
        Version version;
        int rate;
        int mode;
        int bitrate;
    };
    for (const Case& with : {Case{Version::kMpeg1, 1, 3, 10},
                             {Version::kMpeg1, 0, 3, 10},
                             {Version::kMpeg1, 0, 3, 2},
                             {Version::kMpeg1, 2, 3, 2},
                             {Version::kMpeg2, 0, 3, 14}}) {
        StreamOptions options = Layer2(with.version, with.rate, with.mode, with.bitrate);
        options.frames = 1200;
        options.layer2.allocatedPercent = 15;
        Collect(WriteChecked(options, "table"), seen);
    }
    ASSERT_EQ(seen.size(), 5U);
    for (const auto& [name, table] : model::StandardTables().allocation)
        for (std::size_t subband = 0; subband < table.size(); ++subband)
            EXPECT_EQ(seen[name][subband].size(), table[subband].levels.size())
                << name << " subband " << subband;
}

TEST(Layer2Streams, EverySelectionDecodesAsWritten) {
    for (int selection = 0; selection < 4; ++selection) {
        StreamOptions options = Layer2(Version::kMpeg1, 0, model::kJointStereo, 12);
        options.layer2.scfsi = {selection};
        const Stream stream = WriteChecked(options, "selection " + std::to_string(selection));
        for (std::size_t subband = 0; subband < 27; ++subband)
            if (stream.frames[0].layer2.levels[1][subband] != 0) {
                EXPECT_EQ(stream.frames[0].layer2.scfsi[1][subband], selection);
            }
    }
}

TEST(Layer2Streams, SharedSubbandsHoldTheSameSamples) {
    for (int extension = 0; extension < 4; ++extension) {
        StreamOptions options = Layer2(Version::kMpeg1, 0, model::kJointStereo, 10);
        options.modeExtensions = {extension};
        const Stream stream = WriteChecked(options, "bound " + std::to_string(4 * extension + 4));
        const auto bound = static_cast<std::ptrdiff_t>(4 * extension + 4);
        bool different = false;
        for (const FrameRecord& frame : stream.frames) {
            const auto& samples = frame.layer2.samples;
            EXPECT_TRUE(std::equal(samples[0].begin() + bound, samples[0].end(), samples[1].begin() + bound));
            EXPECT_NE(frame.layer2.scaleFactors[0], frame.layer2.scaleFactors[1]);
            different |= !std::equal(samples[0].begin(), samples[0].begin() + bound, samples[1].begin());
        }
        EXPECT_TRUE(different);
    }
}

TEST(Layer2Streams, ForbiddenCombinationsDecodeToSilence) {
    StreamOptions options = Layer2(Version::kMpeg1, 1, model::kStereo, 1);
    EXPECT_THROW(WriteStream(options), std::invalid_argument);
    options.layer2.forbidden = true;
    const Stream stream = WriteStream(options);
    const std::vector<std::int16_t> pcm = model::DecodeStream(stream.bytes);
    EXPECT_EQ(pcm, std::vector<std::int16_t>(8 * 2304, 0));
}

TEST(Layer2Streams, LargestFrameIsDecodedWhole) {
    StreamOptions options = Layer2(Version::kMpeg25, 2, model::kStereo, 14);
    options.padding = Padding::kAlways;
    const Stream stream = WriteChecked(options, "160 kbit/s at 8000 Hz");
    EXPECT_EQ(stream.frames[0].length, 2881);
}

TEST(Layer2Streams, LevelIsAudibleAndRarelyClips) {
    for (const int bitrate : {4, 8, 13}) {
        StreamOptions options =
            Layer2(Version::kMpeg1, 0, bitrate == 4 ? model::kSingleChannel : model::kStereo, bitrate);
        options.frames = 40;
        const auto summary = ExpectDecodesAsWritten(WriteStream(options), "level");
        EXPECT_GT(summary.rms, 0.01);
        EXPECT_LT(summary.rms, 0.3);
        EXPECT_LT(summary.clipped * 100, summary.values);
    }
}

} // namespace
