/// Inputs made to cost as much as they can, held to the limits of time and memory. A watch ends the program
/// that goes beyond one.
#include "harness/sample_script.h"
#include "harness/settings.h"
#include "harness/slice_script.h"

#include "index/index_format.h"
#include "mpa/file_header_sources.h"
#include "mpa/file_probe.h"
#include "mpa/frame_walk.h"
#include "reader/reader_streams.h"
#include "trnmpafileread/index_creator.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using fuzz::Bytes;
using fuzz::Media;
using fuzz::Repeated;
using fuzz::Watched;

constexpr std::size_t kMiB = std::size_t{1} << 20;

void Probe(const Media& media) {
    trnmpa::CMPGAudioFileBufferReader probe;
    Watched("probe", media.WorkFor(), [&] { return probe.ParseFile(media.Path()); });
}

void Walk(const Media& media) {
    trnmpa::CMpAudioFrameBufferReader file;
    ASSERT_EQ(file.Open(media.Path()), 1);
    Watched("walk", media.WorkFor(), [&] {
        trnmpa::FrameBufferHeaderSource source(file);
        trnmpa::FrameWalk walk(source, 0);
        while (walk.Next()) {
        }
    });
}

void BuildIndex(const Media& media) {
    TRN_MpaFileIndexCreator creator;
    ASSERT_EQ(creator.Initialize(), 1);
    Watched("SetInputFile of the builder", media.WorkFor(),
            [&] { return creator.SetInputFile(CComBSTR(media.Path().c_str())); });
    Watched("CreateFileIndex", media.WorkFor(), [&] { return creator.CreateFileIndex(); });
}

/// Opens, and reads from the start, from all over the file and behind it.
void ReadAround(Media& media) {
    fuzz::SampleScript samples(media);
    samples.Open();
    samples.Read(0, 10'000);
    fuzz::SliceScript slices(media);
    slices.Open();
    slices.Read();
    slices.Read();
    for (const std::int64_t start : {std::int64_t{50'000}, std::int64_t{1} << 20, std::int64_t{1} << 24,
                                     std::int64_t{1} << 28, std::int64_t{1} << 40, std::int64_t{1} << 62}) {
        samples.Read(start, 3000);
        slices.Jump(static_cast<std::uint32_t>(start / 1764));
    }
}

/// All that opens files, first without an index, then with the one that the builder writes.
void GoThrough(const Bytes& bytes) {
    Media media(bytes);
    Probe(media);
    Walk(media);
    ReadAround(media);
    BuildIndex(media);
    Probe(media);
    ReadAround(media);
}

/// A frame of MPEG-2 layer III, 24 kHz, 8 kbit/s, stereo, with a CRC word: one byte of main data is left, and
/// every frame points back as far as it can.
Bytes OneByteFrames(std::size_t frames) {
    Bytes frame(24);
    std::ranges::copy(Bytes{0xFF, 0xF2, 0x14, 0x00, 0x00, 0x00, 0xFF}, frame.begin());
    return Repeated(frame, frames * frame.size());
}

class WorstCases : public testing::Test {
protected:
    void TearDown() override { fuzz::PrintLimitsMet(); }
};

} // namespace

// Each of them is compared with the header behind its frame, which lies between two others.
TEST_F(WorstCases, LayerTwoHeadersThatNothingConfirms) {
    GoThrough(Repeated(Bytes{0xFF, 0xFD, 0x12, 0x00}, 8 * kMiB));
    GoThrough(Repeated(Bytes{0xFF, 0xFD, 0xE6, 0x00}, 8 * kMiB));
    GoThrough(Repeated(Bytes{0xFF, 0xF5, 0xE6, 0xC0, 0x00}, 8 * kMiB));
}

TEST_F(WorstCases, LayerThreeHeadersWithoutFrames) {
    GoThrough(Repeated(Bytes{0xFF, 0xFB, 0x90, 0x00}, 8 * kMiB));
    GoThrough(Repeated(Bytes{0xFF, 0xFA, 0x14, 0xC0}, 8 * kMiB));
    GoThrough(Repeated(Bytes{0xFF, 0xE3, 0x18, 0x04}, 4 * kMiB));
}

// The decoder reads each of them, and each is passed over.
TEST_F(WorstCases, HeadersOfAnotherFormatBehindOneFrame) {
    GoThrough(test::Joined({test::SteadyStream(3).bytes, Repeated(Bytes{0xFF, 0xFB, 0x90, 0xC0}, 8 * kMiB)}));
    GoThrough(test::Joined({test::Layer2Stream(3).bytes, Repeated(Bytes{0xFF, 0xFD, 0xA4, 0xC0}, 8 * kMiB)}));
}

// Candidates of every step, none of which is a header.
TEST_F(WorstCases, BytesThatAlmostAreHeaders) {
    const Bytes stream = test::SteadyStream(2).bytes;
    for (const Bytes& pattern :
         {Bytes{0xFF}, Bytes{0xFF, 0xF0}, Bytes{0, 0xFF}, Bytes{0xFF, 0xFB, 0xFF, 0xFF}})
        GoThrough(test::Joined({stream, Repeated(pattern, 4 * kMiB), stream}));
}

TEST_F(WorstCases, TagsBehindTags) {
    const Bytes empty = {'I', 'D', '3', 3, 0, 0, 0, 0, 0, 0};
    GoThrough(Repeated(empty, 4 * kMiB));
    Bytes whole = empty;
    whole[7] = 0x7F;
    whole.resize(0x7F << 14);
    GoThrough(test::Joined({whole, whole, test::SteadyStream(3).bytes}));
    // Nothing ends the padding.
    GoThrough(test::Joined({empty, Bytes(8 * kMiB, 0x55)}));
}

// The reservoir is filled from hundreds of frames before each jump's target.
TEST_F(WorstCases, FramesWithOneByteOfMainData) {
    GoThrough(OneByteFrames(100'000));
    Media media(OneByteFrames(100'000));
    BuildIndex(media);
    fuzz::SampleScript samples(media);
    samples.Open();
    for (std::int64_t frame = 90'000; frame > 80'000; frame -= 997)
        samples.Read(frame * 576, 10);
}

// It tries again where a frame does not come, each time with the frames before it.
TEST_F(WorstCases, TheExternalDecoderOnFilesWithoutFrames) {
    fuzz::SelectDecoder(1);
    const Bytes stream = test::SteadyStream(3).bytes;
    for (const Bytes& bytes :
         {Repeated(Bytes{0xFF, 0xFD, 0x12, 0x00}, 4 * kMiB),
          Repeated(Bytes{0xFF, 0xFB, 0x90, 0x00}, 4 * kMiB),
          test::Joined({stream, Repeated(Bytes{0xFF, 0xFB, 0x90, 0xC0}, 4 * kMiB)}),
          test::Joined({stream, Repeated(Bytes{0xFF}, 4 * kMiB), stream}),
          Repeated(Bytes{'I', 'D', '3', 3, 0, 0, 0, 0, 0, 0}, 4 * kMiB), OneByteFrames(50'000)}) {
        Media media(bytes);
        ReadAround(media);
        BuildIndex(media);
        ReadAround(media);
    }
    fuzz::SelectDecoder(0);
}

TEST_F(WorstCases, AnIndexThatClaimsTheAbsurd) {
    constexpr std::uint32_t kNumbers[] = {0, 1, 39, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    const auto stream = test::SteadyStream(20);
    for (const std::uint32_t number : kNumbers)
        for (int field = 0; field < 8; ++field) {
            test::Index index = test::IndexOf(stream);
            index.entries.resize(40'000, {stream.bytes.size() < number ? number : 417, 417});
            index.header.frameCount = field == 0 ? number : 40'000;
            index.header.sampleRate = field == 1 ? number : index.header.sampleRate;
            index.header.bitRate = field == 2 ? number : index.header.bitRate;
            index.header.samplesPerFrame = field == 3 ? number : index.header.samplesPerFrame;
            index.header.frameBytes = static_cast<std::uint16_t>(field == 4 ? number : 417);
            index.header.channels = static_cast<std::uint16_t>(field == 5 ? number : 2);
            for (auto& entry : index.entries) {
                entry.frameOffset = field == 6 ? number : entry.frameOffset;
                entry.frameBytes = field == 7 ? number : entry.frameBytes;
            }
            Media media(stream.bytes, index.ToBytes());
            Probe(media);
            ReadAround(media);
        }
}

TEST_F(WorstCases, AnIndexOfAMillionEntries) {
    const auto stream = test::SteadyStream(20);
    test::Index index = test::IndexOf(stream);
    index.entries.resize(1'000'000, {0, 39});
    index.header.frameCount = 0xFFFFFFFF;
    Media media(stream.bytes, index.ToBytes());
    Probe(media);
    ReadAround(media);
}
