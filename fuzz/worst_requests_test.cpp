/// Requests, slices, settings made to cost as much as they can, held to the limits of time and memory. A
/// watch ends the program that goes beyond one.
#include "harness/settings.h"
#include "harness/slice_script.h"

#include "fileio/buffered_file_stream.h"
#include "fileio/file_stream.h"
#include "reader/reader_streams.h"
#include "reader/sample_reader.h"
#include "reader/stream_format.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using fuzz::Bytes;
using fuzz::Media;
using fuzz::Repeated;
using fuzz::Watched;
using trnmpa::PcmFormat;

constexpr std::size_t kMiB = std::size_t{1} << 20;

class WorstRequests : public testing::Test {
protected:
    void TearDown() override { fuzz::PrintLimitsMet(); }
};

} // namespace

// As much as a request may be. What the file does not have costs no time.
TEST_F(WorstRequests, RequestsOfNearlyTwoGiB) {
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
TEST_F(WorstRequests, LongSlices) {
    ReadSlices(20, {}, true);
    ReadSlices(20, PcmFormat(1, 48000, 8), true);
    ReadSlices(10, PcmFormat(2, 44100, 16), true);
    ReadSlices(1, PcmFormat(2, 192'000, 32), true);
}

// The shortest frames hold the most PCM, all of which goes through the filter that changes the rate.
TEST_F(WorstRequests, LongSlicesOfShortFramesAtOtherRates) {
    constexpr std::size_t kFrameBytes = 24;
    constexpr std::int64_t kSeconds = 10;
    constexpr std::uint32_t kRate = 24'000;
    Bytes frame(kFrameBytes);
    std::ranges::copy(Bytes{0xFF, 0xF3, 0x14, 0x44}, frame.begin());
    const Media media(Repeated(frame, kFrameBytes * kRate * (kSeconds + 1) / 576), "short-frames.mp3");
    for (const std::uint32_t rate : {94u, 48'000u, 192'000u}) {
        TRN_MpAudioFileReader reader;
        ASSERT_EQ(reader.Initialize(), 1);
        ASSERT_EQ(reader.SetPerPCMFrameTime(kSeconds * 10'000'000), 1);
        ASSERT_EQ(reader.SetInputFile(CComBSTR(media.Path().c_str())), 1);
        ASSERT_EQ(reader.StartRead(), 1);
        WAVEFORMATEX output = PcmFormat(2, rate, 16);
        ASSERT_EQ(reader.SetOutputWAVEFormat(output), 1);
        unsigned char* data = nullptr;
        std::int32_t length = 0;
        WAVEFORMATEX format = {};
        std::int32_t atEnd = 0;
        fuzz::Work work = media.WorkFor(std::size_t{kSeconds} * rate * 4);
        work.convertedBytes = work.answerBytes + std::size_t{kSeconds} * kRate * 4;
        EXPECT_EQ(Watched("ReadFrame", work, [&] { return reader.ReadFrame(&data, length, &format, atEnd); }),
                  1);
        EXPECT_EQ(static_cast<std::size_t>(length), work.answerBytes);
    }
}

TEST_F(WorstRequests, SlicesThatTheFileCannotFill) {
    ReadSlices(11'000, {}, false);
    ReadSlices(5000, PcmFormat(2, 48000, 32), false);
    ReadSlices(3600, PcmFormat(1, 44100, 16), false);
}

TEST_F(WorstRequests, ShortSlicesAtTheLowestRate) {
    Media media(test::SteadyStream(60).bytes);
    fuzz::Bytes script;
    for (int i = 0; i < 20; ++i)
        script.insert(script.end(), {15, 8, static_cast<std::uint8_t>(i)});
    // 1 ms, and 200 Hz.
    fuzz::InputWriter settings;
    settings.U8(3).U8(1).U8(4).U8(0x10).U8(1).U8(8).Append(script);
    fuzz::Input input(settings.Done());
    fuzz::SliceScript slices(media);
    slices.Open();
    while (!input.IsEmpty())
        slices.Step(input);
}

// The buffer that a setting asks for costs nothing where no file fills it.
TEST_F(WorstRequests, ABufferedStreamWithTheLargestBuffer) {
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

TEST_F(WorstRequests, LongSettingsFiles) {
    for (const Bytes& pattern : {Bytes{'a'}, Bytes{'['}, Bytes{'\n'}, Bytes{'=', '\n'}, Bytes{0xC3, 0xA4},
                                 Bytes{'[', 'C', 'O', 'D', 'E', 'C', ']', '\n'}})
        for (const Bytes& mark : {Bytes{}, Bytes{0xEF, 0xBB, 0xBF}, Bytes{0xFF, 0xFE}}) {
            const Bytes settings = test::Joined({mark, Repeated(pattern, 2 * kMiB)});
            fuzz::WriteSettings(settings);
            Media media(test::SteadyStream(4).bytes);
            Watched("settings", {settings.size(), 0, 0}, [&] {
                trnmpa::KwMpAudioReader2 reader;
                EXPECT_EQ(reader.Initialize(), 1);
            });
        }
    fuzz::WriteSettings("");
}
