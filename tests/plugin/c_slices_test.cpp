/// The plain C functions that read slices, beside the exported class.
#include <gtest/gtest.h>

#include "plugin/c_handles.h"
#include "reader/reader_streams.h"
#include "reader/slices.h"

#include <cstring>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using namespace test;

struct CSlice {
    trnmpa_result code = TRNMPA_OK;
    trnmpa_slice record = Sized<trnmpa_slice>();
    Bytes bytes;
};

CSlice NextC(trnmpa_slices& slices) {
    CSlice slice;
    slice.code = trnmpa_slices_next(&slices, &slice.record);
    const auto* data = static_cast<const std::uint8_t*>(slice.record.data);
    slice.bytes.assign(data, data + slice.record.bytes);
    return slice;
}

CSlices OpenC(const fs::path& path, const trnmpa_slice_options* options, trnmpa_result expected = TRNMPA_OK) {
    trnmpa_slices* slices = nullptr;
    EXPECT_EQ(trnmpa_slices_open_utf8(Utf8Of(path).c_str(), options, &slices), expected);
    EXPECT_EQ(slices != nullptr, expected == TRNMPA_OK);
    return CSlices(slices);
}

trnmpa_slice_options Options(std::int64_t time, std::uint32_t rate, std::uint32_t channels,
                             std::uint32_t bits) {
    auto options = Sized<trnmpa_slice_options>();
    options.slice_time = time;
    options.sample_rate = rate;
    options.channels = channels;
    options.bits_per_sample = bits;
    return options;
}

class CSlicesTest : public testing::Test {
protected:
    /// The exported class, told in full what `options` leave open.
    static void Start(TRN_MpAudioFileReader& reader, const fs::path& path,
                      const trnmpa_slice_options& options, std::uint32_t ownChannels = 2,
                      std::uint32_t ownBits = 16) {
        ASSERT_EQ(StartSlices(reader, path, options.slice_time != 0 ? options.slice_time : 400000), 1);
        const auto or_ = [](std::uint32_t wanted, std::uint32_t own) { return wanted != 0 ? wanted : own; };
        WAVEFORMATEX format = PcmFormat(or_(options.sample_rate, 44100),
                                        static_cast<std::uint16_t>(or_(options.channels, ownChannels)),
                                        static_cast<std::uint16_t>(or_(options.bits_per_sample, ownBits)));
        ASSERT_EQ(reader.SetOutputWAVEFormat(format), 1);
    }
    static void ExpectSame(const CSlice& slice, const Slice& expected) {
        EXPECT_EQ(slice.bytes, expected.bytes);
        EXPECT_EQ(slice.record.sample_rate, expected.format.nSamplesPerSec);
        EXPECT_EQ(slice.record.channels, expected.format.nChannels);
        EXPECT_EQ(slice.record.bits_per_sample, expected.format.wBitsPerSample);
        EXPECT_EQ(slice.record.at_end, static_cast<std::uint32_t>(expected.atEnd));
    }

    ScratchFolder folder_;
    const fs::path song_ = folder_.Add("song.mp3", SteadyStream(60).bytes);
};

} // namespace

TEST_F(CSlicesTest, AreThoseOfTheExportedClass) {
    for (const auto& options : {Options(0, 0, 0, 0), Options(250000, 0, 0, 0), Options(200000, 48000, 1, 24),
                                Options(0, 22050, 0, 0), Options(0, 0, 1, 0), Options(1000000, 0, 0, 8)}) {
        TRN_MpAudioFileReader reader;
        Start(reader, song_, options);
        const CSlices slices = ::OpenC(song_, &options);
        std::size_t count = 0;
        for (CSlice slice = NextC(*slices);; slice = NextC(*slices), ++count) {
            const Slice expected = ReadSlice(reader);
            ExpectSame(slice, expected);
            ASSERT_EQ(slice.code == TRNMPA_OK, expected.result == 1);
            if (slice.code != TRNMPA_OK) {
                EXPECT_EQ(slice.code, TRNMPA_END);
                break;
            }
        }
        EXPECT_GT(count, 10u);
        EXPECT_EQ(NextC(*slices).code, TRNMPA_END) << "and again";
    }
}

TEST_F(CSlicesTest, AreFoundByNumber) {
    const auto options = Options(0, 48000, 0, 0);
    TRN_MpAudioFileReader reader;
    Start(reader, song_, options);
    const CSlices slices = ::OpenC(song_, &options);
    for (const std::uint32_t number : {20u, 3u, 0u, 30u, 31u, 100000u, 5u}) {
        ASSERT_EQ(trnmpa_slices_seek(slices.get(), number), TRNMPA_OK);
        ExpectSame(NextC(*slices), ReadSliceAt(reader, number));
        ExpectSame(NextC(*slices), ReadSlice(reader));
    }
}

TEST_F(CSlicesTest, TwoHandlesDoNotDisturbEachOther) {
    TRN_MpAudioFileReader reader;
    const auto options = Options(0, 0, 0, 0);
    Start(reader, song_, options);
    const CSlices first = ::OpenC(song_, nullptr);
    const CSlices second = ::OpenC(song_, &options);
    for (int i = 0; i < 20; ++i) {
        const Slice expected = ReadSlice(reader);
        ExpectSame(NextC(*first), expected);
        ExpectSame(NextC(*second), expected);
    }
}

TEST_F(CSlicesTest, RefusesWhatIsNotServed) {
    for (const auto& options : {Options(-1, 0, 0, 0), Options(0, 0, 3, 0), Options(0, 0, 0, 12),
                                Options(0, 0, 0, 40), Options(0, 100, 0, 0), Options(0, 0xFFFFFFFF, 0, 0)})
        ::OpenC(song_, &options, TRNMPA_ERROR_UNSUPPORTED);
    const auto longest = Options(std::numeric_limits<std::int64_t>::max(), 0, 0, 0);
    const CSlices slices = ::OpenC(song_, &longest);
    EXPECT_EQ(NextC(*slices).code, TRNMPA_ERROR_DECODE) << "2 GiB and more";
}

/// What the options leave open comes from the index, and its numbers may be any: they are the class's too.
TEST_F(CSlicesTest, TakeTheWidestFormatsOfAnIndex) {
    Index index = IndexOf(SteadyStream(60));
    for (const auto& [channels, bits] : {std::pair{60774, 62464}, {0xFFFF, 0xFFFF}, {0xFFFF, 16}}) {
        index.header.channels = static_cast<std::uint16_t>(channels);
        index.header.bitsPerSample = static_cast<std::uint16_t>(bits);
        folder_.Add("song.mp3.idx", index.ToBytes());
        for (const auto& options : {Options(0, 48000, 0, 0), Options(0, 0, 2, 0), Options(0, 0, 0, 16)}) {
            TRN_MpAudioFileReader reader;
            Start(reader, song_, options, index.header.channels, index.header.bitsPerSample);
            const CSlices slices = ::OpenC(song_, &options);
            const CSlice slice = NextC(*slices);
            EXPECT_EQ(slice.code, TRNMPA_END) << "no stream fills such a slice";
            ExpectSame(slice, ReadSlice(reader));
        }
    }
}

TEST_F(CSlicesTest, RefusesRecordsOfOtherSizes) {
    struct Later {
        trnmpa_slice_options known;
        std::uint32_t unknown;
    } later = {Options(0, 0, 0, 0), 0};
    later.known.struct_size = sizeof later.known + sizeof later.unknown;
    EXPECT_NE(::OpenC(song_, &later.known), nullptr);
    later.unknown = 1;
    ::OpenC(song_, &later.known, TRNMPA_ERROR_UNSUPPORTED);
    for (const std::uint32_t size : {0u, static_cast<std::uint32_t>(sizeof later.known) - 1, 4097u}) {
        later.known.struct_size = size;
        ::OpenC(song_, &later.known, TRNMPA_ERROR_ARGUMENT);
    }
    const CSlices slices = ::OpenC(song_, nullptr);
    trnmpa_slice slice = {};
    EXPECT_EQ(trnmpa_slices_next(slices.get(), &slice), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(trnmpa_slices_next(slices.get(), nullptr), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(trnmpa_slices_next(nullptr, &slice), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(trnmpa_slices_seek(nullptr, 0), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(trnmpa_slices_open_utf8(nullptr, nullptr, nullptr), TRNMPA_ERROR_ARGUMENT);
    trnmpa_slices* none = slices.get();
    EXPECT_EQ(trnmpa_slices_open_utf8(nullptr, nullptr, &none), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(trnmpa_slices_open_utf16(nullptr, nullptr, &none), TRNMPA_ERROR_ARGUMENT);
    trnmpa_slices_close(nullptr);
}

TEST_F(CSlicesTest, RefusesWhatItCannotOpen) {
    ::OpenC(folder_.Path() / "missing.mp3", nullptr, TRNMPA_ERROR_FILE);
    ::OpenC(folder_.Path(), nullptr, TRNMPA_ERROR_FILE);
    ::OpenC(folder_.Add("noise.mp3", Bytes(10000)), nullptr, TRNMPA_ERROR_FORMAT);
    folder_.Add("empty.mp3.idx", IndexOf(SteadyStream(4)).ToBytes());
    ::OpenC(folder_.Add("empty.mp3", Bytes()), nullptr, TRNMPA_ERROR_FORMAT);
}
