/// Inputs made to cost as much as they can, held to the limits of time and memory. A watch ends the program
/// that goes beyond one.
#include "harness/sample_script.h"
#include "harness/slice_script.h"

#include "fileio/buffered_file_stream.h"
#include "fileio/file_stream.h"
#include "index/index_format.h"
#include "mpa/file_header_sources.h"
#include "mpa/file_probe.h"
#include "mpa/frame_walk.h"
#include "os/paths.h"
#include "reader/reader_streams.h"
#include "support/test_files.h"
#include "trnmpafileread/index_creator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using fuzz::Bytes;
using fuzz::Media;
using fuzz::Watched;

constexpr std::size_t kMiB = std::size_t{1} << 20;

Bytes Repeated(const Bytes& pattern, std::size_t bytes) {
    Bytes repeated(bytes);
    for (std::size_t i = 0; i < bytes; ++i)
        repeated[i] = pattern[i % pattern.size()];
    return repeated;
}

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

class WorstCases : public testing::Test {};

} // namespace

// Each of them is compared with the header behind its frame, which lies between two others.
TEST_F(WorstCases, LayerTwoHeadersThatNothingConfirms) {
    GoThrough(Repeated({0xFF, 0xFD, 0x12, 0x00}, 8 * kMiB));
    GoThrough(Repeated({0xFF, 0xFD, 0xE6, 0x00}, 8 * kMiB));
    GoThrough(Repeated({0xFF, 0xF5, 0xE6, 0xC0, 0x00}, 8 * kMiB));
}

TEST_F(WorstCases, LayerThreeHeadersWithoutFrames) {
    GoThrough(Repeated({0xFF, 0xFB, 0x90, 0x00}, 8 * kMiB));
    GoThrough(Repeated({0xFF, 0xFA, 0x14, 0xC0}, 8 * kMiB));
    GoThrough(Repeated({0xFF, 0xE3, 0x18, 0x04}, 4 * kMiB));
}

// The decoder reads each of them, and each is passed over.
TEST_F(WorstCases, HeadersOfAnotherFormatBehindOneFrame) {
    GoThrough(test::Joined({test::SteadyStream(3).bytes, Repeated({0xFF, 0xFB, 0x90, 0xC0}, 8 * kMiB)}));
    GoThrough(test::Joined({test::Layer2Stream(3).bytes, Repeated({0xFF, 0xFD, 0xA4, 0xC0}, 8 * kMiB)}));
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

// As much as a request may be. What the file does not have costs no time.
TEST_F(WorstCases, RequestsOfNearlyTwoGiB) {
    const Media media(test::SteadyStream(20).bytes);
    trnmpa::KwMpAudioReader2 reader;
    KW_MEDIA_BASE_INFO_ST info;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(reader.SetInputFile(media.Path()), 1);
    ASSERT_EQ(reader.GetStreamInfo(&info), 1);
    for (const std::int64_t start : {std::int64_t{0}, std::int64_t{5000}, std::int64_t{1} << 40}) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = 0x1FFFFFFF;
        const std::size_t bytes = std::size_t{4} * request.sampleCount;
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        ASSERT_EQ(Watched("GetSamples", media.WorkFor(bytes),
                          [&] { return reader.GetSamples(request, data, size, nullptr); }),
                  1);
        ASSERT_EQ(static_cast<std::size_t>(size), bytes);
        for (const std::size_t place : {std::size_t{0}, bytes / 2, bytes - 1})
            EXPECT_EQ(data[place], 0) << "silence, as the file ends before";
    }
}

namespace {

WAVEFORMATEX Pcm(std::uint32_t rate, std::uint16_t channels, std::uint16_t bits) {
    WAVEFORMATEX format = {};
    format.wFormatTag = 1;
    format.nSamplesPerSec = rate;
    format.nChannels = channels;
    format.wBitsPerSample = bits;
    return format;
}

/// Slices of `seconds` of a file of `seconds`, in a format.
void ReadSlices(std::int64_t seconds, WAVEFORMATEX output, bool fits) {
    static const Media media(Repeated(test::Layer2Stream(50).bytes, 576 * 50 * 20));
    TRN_MpAudioFileReader reader;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(reader.SetPerPCMFrameTime(seconds * 10'000'000), 1);
    ASSERT_EQ(reader.SetInputFile(CComBSTR(media.Path().c_str())), 1);
    ASSERT_EQ(reader.StartRead(), 1);
    ASSERT_EQ(reader.SetOutputWAVEFormat(output), 1);
    unsigned char* data = nullptr;
    std::int32_t length = 0;
    WAVEFORMATEX format = {};
    std::int32_t atEnd = 0;
    const std::size_t answer = static_cast<std::size_t>(seconds) *
                               (output.nSamplesPerSec == 0 ? 48000u : output.nSamplesPerSec) *
                               (output.nChannels == 0 ? 4u : output.nChannels * output.wBitsPerSample / 8u);
    const std::int32_t result = Watched("ReadFrame", media.WorkFor(answer),
                                        [&] { return reader.ReadFrame(&data, length, &format, atEnd); });
    EXPECT_EQ(result, fits ? 1 : 0);
    EXPECT_EQ(atEnd, fits ? 0 : 1);
    EXPECT_EQ(static_cast<std::size_t>(length), fits ? answer : 0);
}

} // namespace

// Of a slice only the result itself grows with its length.
TEST_F(WorstCases, LongSlices) {
    ReadSlices(20, {}, true);
    ReadSlices(20, Pcm(48000, 1, 8), true);
    ReadSlices(10, Pcm(44100, 2, 16), true);
    ReadSlices(1, Pcm(192'000, 2, 32), true);
}

TEST_F(WorstCases, SlicesThatTheFileCannotFill) {
    ReadSlices(11'000, {}, false);
    ReadSlices(5000, Pcm(48000, 2, 32), false);
    ReadSlices(3600, Pcm(44100, 1, 16), false);
}

TEST_F(WorstCases, ShortSlicesAtTheLowestRate) {
    Media media(test::SteadyStream(60).bytes);
    fuzz::Bytes script;
    for (int i = 0; i < 20; ++i)
        script.insert(script.end(), {15, 8, static_cast<std::uint8_t>(i)});
    // 1 ms, and a rate 256 times lower.
    fuzz::InputWriter settings;
    settings.U8(3).U8(1).U8(4).U8(0x10).U8(1).U8(7).Append(script);
    fuzz::Input input(settings.Done());
    fuzz::SliceScript slices(media);
    slices.Open();
    while (!input.IsEmpty())
        slices.Step(input);
}

// The buffer that a setting asks for costs nothing where no file fills it.
TEST_F(WorstCases, ABufferedStreamWithTheLargestBuffer) {
    const Media media(Bytes(100'000, 7));
    trnmpa::CFileStream file;
    file.AddRef();
    constexpr std::int32_t kLargest = INT32_MAX;
    const fuzz::Work work = media.WorkFor(kLargest);
    Watched("buffered stream", work, [&] {
        trnmpa::CBufferedFileStream stream(&file, kLargest);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(stream.Open(media.Path(), 0), 1);
            Bytes bytes(200'000);
            EXPECT_EQ(stream.Read(bytes.data(), 200'000), 100'000u);
            EXPECT_EQ(bytes[99'999], 7);
        }
        stream.Close();
    });
}

TEST_F(WorstCases, LongSettingsFiles) {
    const std::filesystem::path file =
        std::filesystem::path(os::NarrowToUtf8(os::ExecutablePath())).parent_path() / "trnfsdk.ini";
    for (const Bytes& pattern : {Bytes{'a'}, Bytes{'['}, Bytes{'\n'}, Bytes{'=', '\n'}, Bytes{0xC3, 0xA4},
                                 Bytes{'[', 'C', 'O', 'D', 'E', 'C', ']', '\n'}})
        for (const Bytes& mark : {Bytes{}, Bytes{0xEF, 0xBB, 0xBF}, Bytes{0xFF, 0xFE}}) {
            const Bytes settings = test::Joined({mark, Repeated(pattern, 2 * kMiB)});
            test::WriteFile(file, settings);
            Media media(test::SteadyStream(4).bytes);
            Watched("settings", {settings.size(), 0, 0}, [&] {
                trnmpa::KwMpAudioReader2 reader;
                EXPECT_EQ(reader.Initialize(), 1);
            });
        }
    std::filesystem::remove(file);
}
