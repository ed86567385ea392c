/// The probe's description of real files against an independent program's.

#include "real/real_streams.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include "trnmediadet/media_info.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace test;

constexpr double kUnitsPerSecond = 1e7;
constexpr double kDelaySamples = 1100.0;

class RealProbe : public testing::Test {
protected:
    LoadedModule module_;

    std::int32_t Probe(const std::filesystem::path& path, TRN_MEDIA_INFO2* info) {
        const auto reader = module_.CreateReader();
        const std::int32_t result = reader->OpenFile(Wide(path), TRN_OPEN_PROBE);
        if (result == 1) {
            EXPECT_EQ(reader->GetFileInfo(TRN_FILE_INFO_PROBE, info), 1);
        }
        return result;
    }
};

/// One frame, and two bytes for the probe's whole byte positions.
double DurationTolerance(const RealStream& stream) {
    return static_cast<double>(stream.SamplesPerFrame()) / stream.rate + 2.0 * 8.0 / (stream.kbps * 1000.0);
}

/// The duration by the independent count of frames, with what the probe takes off.
double ExpectedSeconds(const RealStream& stream) {
    const double samples = static_cast<double>(stream.frames) * stream.SamplesPerFrame();
    return (stream.layer == 3 ? samples - kDelaySamples : samples) / stream.rate;
}

TEST_F(RealProbe, DescribesConstantBitRateAsOthersDo) {
    int described = 0;
    for (const RealStream& stream : RealStreams()) {
        if (!stream.HasConstantBitRate() || stream.IsLowRateLayer2())
            continue;
        SCOPED_TRACE(stream.file);
        TRN_MEDIA_INFO2 info;
        ASSERT_EQ(Probe(stream.Path(), &info), 1);
        ++described;
        EXPECT_EQ(info.classIdentifier, 2320 + stream.layer);
        EXPECT_EQ(info.audioCodec, 1040 + stream.layer);
        EXPECT_EQ(info.audioPresent, 1);
        EXPECT_EQ(info.fileSize, static_cast<std::int64_t>(std::filesystem::file_size(stream.Path())));
        EXPECT_EQ(info.filePath, Wide(stream.Path()));
        EXPECT_EQ(static_cast<int>(info.audioFormat.nSamplesPerSec), stream.rate);
        EXPECT_EQ(info.audioFormat.nChannels, stream.channels);
        EXPECT_EQ(static_cast<int>(info.audioFormat.nAvgBytesPerSec), stream.kbps * 1000 / 8);
        EXPECT_NEAR(static_cast<double>(info.duration) / kUnitsPerSecond, ExpectedSeconds(stream),
                    DurationTolerance(stream));
    }
    EXPECT_GE(described, 50);
}

TEST_F(RealProbe, LeavesVariableBitRateUndescribed) {
    int variable = 0;
    for (const RealStream& stream : RealStreams()) {
        if (stream.kind != "vbr" && stream.kind != "abr")
            continue;
        SCOPED_TRACE(stream.file);
        TRN_MEDIA_INFO2 info;
        EXPECT_EQ(Probe(stream.Path(), &info), TRN_OPEN_VARIABLE_BIT_RATE);
        ++variable;
    }
    EXPECT_GE(variable, 18);
}

TEST_F(RealProbe, CallsVariableOnlyWhatIs) {
    for (const RealStream& stream : RealStreams()) {
        if (stream.IsLowRateLayer2() || stream.IsFreeFormat())
            continue;
        SCOPED_TRACE(stream.file);
        TRN_MEDIA_INFO2 info;
        if (Probe(stream.Path(), &info) == TRN_OPEN_VARIABLE_BIT_RATE) {
            EXPECT_GT(stream.largestFrame - stream.smallestFrame, 1);
        }
    }
}

// Its headers are passed over; what the search takes for a header further on, inside a frame, has no
// successors.
TEST_F(RealProbe, DescribesNoFreeFormat) {
    TRN_MEDIA_INFO2 info;
    EXPECT_NE(Probe(RealStreamNamed("free-44-200.mp3").Path(), &info), 1);
}

} // namespace
