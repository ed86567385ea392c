/// One file read with an index and without: the same sound, at positions that lie a fixed distance apart.
#include "reader/engine.h"
#include "reader/expected_stream.h"
#include "reader/foreign_bytes.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <string>

using namespace trnmpa;
using test::Engine;
using test::bitstream::Stream;
using test::bitstream::Version;

namespace {

constexpr int kFrames = 20;

Stream StreamOf(Version version, int layer, int mode) {
    test::bitstream::StreamOptions options = test::SteadyOptions(kFrames);
    options.version = version;
    options.layer = layer;
    options.mode = mode;
    return test::bitstream::WriteStream(options);
}

/// Where the first frames end that lack what comes before them in one of the two reads.
constexpr std::int64_t kSettled = 5 * 1152;

/// Sample n without the index is sample n + `distance` with it.
void ExpectDistance(const Stream& file, std::int64_t distance) {
    const test::ScratchFolder folder;
    Engine without(folder.Add("without.mp3", file.bytes));
    const auto path = folder.Add("with.mp3", file.bytes);
    test::BuildIndex(path);
    Engine with(path);
    ASSERT_EQ(without.Opened(), kSuccess);
    ASSERT_EQ(with.Opened(), kSuccess);
    constexpr std::uint32_t kSamples = 2000;
    const test::Pcm pcm = without.Read(kSettled, kSamples);
    EXPECT_EQ(with.Read(kSettled + distance, kSamples), pcm);
    EXPECT_NE(with.Read(kSettled + distance + 1, kSamples), pcm);
}

} // namespace

TEST(IndexPositions, AreThoseOfTheDecodedFramesInLayer3) {
    ExpectDistance(StreamOf(Version::kMpeg1, 3, test::model::kStereo), 1100 - 1152);
    ExpectDistance(StreamOf(Version::kMpeg1, 3, test::model::kSingleChannel), 1100 - 1152);
    ExpectDistance(StreamOf(Version::kMpeg2, 3, test::model::kStereo), 1100 - 576);
    ExpectDistance(StreamOf(Version::kMpeg25, 3, test::model::kStereo), 1100 - 576);
}

// Without an index that frame is left out as well.
TEST(IndexPositions, BehindAnInfoFrame) {
    ExpectDistance(test::Surround(StreamOf(Version::kMpeg1, 3, test::model::kStereo), {.infoFrame = true}),
                   1100);
}

TEST(IndexPositions, LackTheFirstFrameInLayer2) {
    ExpectDistance(StreamOf(Version::kMpeg1, 2, test::model::kStereo), -1152);
}
