// Exact delivery from any position after any history: thousands of random requests against one sequential
// decode.

#include "reader/exact_delivery.h"
#include "reader/foreign_bytes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using test::Engine;
using test::Surroundings;
using test::bitstream::ReservoirUse;
using test::bitstream::StreamOptions;
using test::bitstream::Version;

std::string Describe(const StreamOptions& options) {
    return "version " + std::to_string(static_cast<int>(options.version)) + " layer " +
           std::to_string(options.layer) + " rate " + std::to_string(options.sampleRateIndex) + " mode " +
           std::to_string(options.mode) + " seed " + std::to_string(options.seed);
}

constexpr int kModes[] = {test::model::kStereo, test::model::kJointStereo, test::model::kSingleChannel};

/// Bit rates that jump, with as much in the reservoir as it may hold.
std::vector<StreamOptions> VariableStreams() {
    std::vector<StreamOptions> streams;
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25}) {
        for (int rate = 0; rate < 3; ++rate) {
            for (const int mode : kModes) {
                StreamOptions options;
                options.version = version;
                options.sampleRateIndex = rate;
                options.mode = mode;
                options.modeExtensions = {0, 1, 2, 3};
                options.frames = 90;
                options.seed = streams.size() + 1;
                options.crc = streams.size() % 2 == 1;
                options.bitrateIndices = {1, 1, 1, 1, 14};
                options.layer3.blocks = {{0, false}, {1, false}, {2, false}, {2, true}, {3, false}};
                options.layer3.reservoir = ReservoirUse::kFull;
                streams.push_back(options);
            }
        }
    }
    return streams;
}

std::vector<StreamOptions> LayerTwoStreams() {
    std::vector<StreamOptions> streams;
    for (int rate = 0; rate < 3; ++rate) {
        for (const int mode : kModes) {
            StreamOptions options;
            options.layer = 2;
            options.sampleRateIndex = rate;
            options.mode = mode;
            options.modeExtensions = {0, 1, 2, 3};
            options.frames = 40;
            options.seed = streams.size() + 1;
            options.bitrateIndices = {10};
            streams.push_back(options);
        }
    }
    return streams;
}

/// Where the index comes from the module's own builder and the file holds all that it may hold.
void ExpectExactWithIndex(const StreamOptions& options, int sequences) {
    const auto written = test::bitstream::WriteStream(options);
    const test::ScratchFolder folder;
    const Surroundings every[] = {{}, {.junk = true}, {.tag = true, .infoFrame = true, .junk = true}};
    for (Surroundings surroundings : every) {
        surroundings.seed = options.seed;
        SCOPED_TRACE(Describe(options) + (surroundings.junk ? ", junk" : "") +
                     (surroundings.tag ? ", tag" : ""));
        const auto stream = test::AddIndexedStream(folder, test::Surround(written, surroundings));
        ASSERT_NO_FATAL_FAILURE(test::ExpectExactDelivery(stream, options.seed, sequences));
    }
}

TEST(RandomAccess, VariableBitRateWithAnIndex) {
    for (const StreamOptions& options : VariableStreams())
        ASSERT_NO_FATAL_FAILURE(ExpectExactWithIndex(options, 8));
}

/// With and without padding; the reservoir is used or not.
TEST(RandomAccess, ConstantBitRateWithAnIndex) {
    for (StreamOptions options : VariableStreams()) {
        options.bitrateIndices = {options.seed % 2 == 0 ? 3 : 9};
        options.layer3.reservoir = options.seed % 3 == 0 ? ReservoirUse::kNone : ReservoirUse::kRandom;
        options.frames = 50;
        ASSERT_NO_FATAL_FAILURE(ExpectExactWithIndex(options, 4));
    }
}

TEST(RandomAccess, LayerTwoWithAnIndex) {
    for (StreamOptions options : LayerTwoStreams()) {
        ASSERT_NO_FATAL_FAILURE(ExpectExactWithIndex(options, 5));
        options.bitrateIndices =
            options.mode == test::model::kSingleChannel ? std::vector{1, 5, 10} : std::vector{6, 10, 14};
        ASSERT_NO_FATAL_FAILURE(ExpectExactWithIndex(options, 5));
    }
}

/// Constant bit rates, at rates with and without padding.
TEST(RandomAccess, ConstantBitRateWithoutAnIndex) {
    const test::ScratchFolder folder;
    int used = 0;
    for (StreamOptions options : VariableStreams()) {
        for (const int bitRate : {2, 5, 9, 14}) {
            options.bitrateIndices = {bitRate};
            SCOPED_TRACE(Describe(options) + " bit rate " + std::to_string(bitRate));
            const auto written = test::bitstream::WriteStream(options);
            if (!test::IsFoundByArithmetic(written))
                continue;
            ++used;
            test::ExpectExactDelivery(test::AddPlainStream(folder, written), options.seed, 8);
            if (HasFatalFailure())
                return;
        }
    }
    EXPECT_GT(used, 90) << "too few streams of the 108 are found by arithmetic";
}

TEST(RandomAccess, LayerTwoWithoutAnIndex) {
    const test::ScratchFolder folder;
    int used = 0;
    for (const StreamOptions& options : LayerTwoStreams()) {
        SCOPED_TRACE(Describe(options));
        const auto written = test::bitstream::WriteStream(options);
        if (!test::IsFoundByArithmetic(written))
            continue;
        ++used;
        test::ExpectExactDelivery(test::AddPlainStream(folder, written), options.seed, 10);
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(used, 7);
}

/// Frame 0 in pieces, and a fresh engine whose first request begins at the boundary of another frame.
TEST(RandomAccess, TheFirstFrames) {
    const test::ScratchFolder folder;
    const auto options = VariableStreams().front();
    const auto stream = test::AddIndexedStream(folder, test::bitstream::WriteStream(options));
    Engine inPieces(stream.path);
    for (std::int64_t start = 0; start < 3 * stream.samplesPerFrame; start += 100)
        ASSERT_TRUE(test::Answers(inPieces, stream, start, 100)) << start;
    for (std::int64_t start = 500; start >= 0; start -= 100)
        ASSERT_TRUE(test::Answers(inPieces, stream, start, 100)) << start;
    for (std::int64_t frame = 0; frame < 5; ++frame) {
        Engine fresh(stream.path);
        ASSERT_TRUE(test::Answers(fresh, stream, frame * stream.samplesPerFrame, 100)) << frame;
    }
}

} // namespace
