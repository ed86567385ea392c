/// The plain C functions that read samples, beside the module's C++ interface.
#include <gtest/gtest.h>

#include "plugin/c_handles.h"
#include "reader/reader_streams.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

class CReaderTest : public testing::Test {
protected:
    static Pcm Part(const Pcm& whole, std::int64_t start, std::int64_t count) {
        return Pcm(whole.begin() + 2 * start, whole.begin() + 2 * (start + count));
    }
    /// All samples, in reads of `count`.
    static Pcm ReadInPieces(trnmpa_reader& reader, std::uint32_t count) {
        Pcm whole;
        CRead read;
        for (std::int64_t start = 0; read.result.at_end == 0; start += count) {
            read = ReadC(reader, start, count);
            if (read.code != TRNMPA_OK)
                return {};
            const auto samples = static_cast<std::ptrdiff_t>(read.result.samples);
            whole.insert(whole.end(), read.pcm.begin(), read.pcm.begin() + 2 * samples);
            EXPECT_EQ(read.result.end, read.result.at_end != 0 ? start + samples : -1);
        }
        return whole;
    }

    ScratchFolder folder_;
    const bitstream::Stream steady_ = SteadyStream();
    const bitstream::Stream changing_ = ChangingStream();
    const fs::path song_ = folder_.Add("song.mp3", steady_.bytes);
    const fs::path varying_ = folder_.Add("varying.mp3", changing_.bytes);
    const Pcm whole_ = DeliveredFrom(steady_, 0, kDecoderDelay);
    const std::int64_t length_ = static_cast<std::int64_t>(whole_.size() / 2);
    LoadedModule module_;
};

} // namespace

TEST_F(CReaderTest, PcmIsThatOfTheReaderObject) {
    for (const char* name : {"music.mp3", "music.mp2"}) {
        const fs::path path = SourceFolder() / "samples" / name;
        const CReader reader = OpenC(path);
        const auto object = module_.OpenForReading(path);
        ASSERT_NE(object, nullptr);
        for (const auto& [start, count] : {std::pair<std::int64_t, std::uint32_t>{0, 100},
                                           {100, 5000},
                                           {90000, 80000},
                                           {3, 1},
                                           {44100, 44100}}) {
            const CRead read = ReadC(*reader, start, count);
            EXPECT_EQ(read.code, TRNMPA_OK);
            EXPECT_EQ(read.pcm, ReadPcm(*object, start, count)) << name << ' ' << start;
            EXPECT_EQ(read.result.samples, count);
            EXPECT_EQ(read.result.at_end, 0u);
            EXPECT_EQ(read.result.end, -1);
        }
    }
}

TEST_F(CReaderTest, EverySampleUpToTheEndIsRead) {
    const CReader reader = OpenC(song_);
    for (const std::uint32_t count : {1u, 999u, 1152u, 5000u, 1000000u})
        EXPECT_EQ(ReadInPieces(*reader, count), whole_) << count;
}

TEST_F(CReaderTest, EverySampleOfVariableBitRateIsReadInOrder) {
    const Pcm whole = DeliveredFrom(changing_, 0, kDecoderDelay);
    const CReader reader = OpenC(varying_);
    for (const std::uint32_t count : {1000u, 100000u})
        EXPECT_EQ(ReadInPieces(*reader, count), whole) << count;
}

TEST_F(CReaderTest, BehindTheEndIsSilence) {
    const CReader reader = OpenC(song_);
    const CRead across = ReadC(*reader, length_ - 10, 30);
    EXPECT_EQ(across.code, TRNMPA_OK);
    EXPECT_EQ(across.result.samples, 10u);
    EXPECT_EQ(across.result.at_end, 1u);
    EXPECT_EQ(across.result.end, length_);
    EXPECT_EQ(Part(across.pcm, 0, 10), Part(whole_, length_ - 10, 10));
    EXPECT_EQ(Part(across.pcm, 10, 20), Pcm(40));
    EXPECT_EQ(ReadC(*reader, length_ - 30, 30).result.at_end, 0u) << "the last samples are no end";
    EXPECT_EQ(ReadC(*reader, length_, 30).result.end, length_) << "read on from the last sample";
}

TEST_F(CReaderTest, AReadFarBehindTheEndCannotTellWhereItIs) {
    const CReader reader = OpenC(song_);
    for (const std::int64_t start : {length_ + 1, length_ + 100000, kLargest / 5, kLargest}) {
        const CRead read = ReadC(*reader, start, 30);
        EXPECT_EQ(read.code, TRNMPA_OK);
        EXPECT_EQ(read.result.samples, 0u);
        EXPECT_EQ(read.result.at_end, 1u);
        EXPECT_EQ(read.result.end, -1) << start;
        EXPECT_EQ(read.pcm, Pcm(60));
    }
    EXPECT_EQ(ReadC(*reader, 7, 100).pcm, Part(whole_, 7, 100)) << "and it goes on";
}

TEST_F(CReaderTest, AnIndexIsUsed) {
    folder_.Add("varying.mp3.idx", IndexOf(changing_).ToBytes());
    const Pcm whole = DeliveredFrom(changing_, 1, 0);
    const CReader reader = OpenC(varying_);
    EXPECT_EQ(ReadC(*reader, 30000, 3000).pcm, Part(whole, 30000, 3000));
    EXPECT_EQ(ReadC(*reader, 20000, 3000).pcm, Part(whole, 20000, 3000));
    EXPECT_EQ(ReadInPieces(*reader, 4096), whole);
}

TEST_F(CReaderTest, TheResultMayBeLeftOut) {
    const CReader reader = OpenC(song_);
    Pcm pcm(200);
    EXPECT_EQ(trnmpa_reader_read(reader.get(), 50, 100, pcm.data(), 400, nullptr), TRNMPA_OK);
    EXPECT_EQ(pcm, Part(whole_, 50, 100));
}

TEST_F(CReaderTest, NothingIsWrittenBehindTheSamples) {
    const CReader reader = OpenC(song_);
    for (const std::int64_t start : {std::int64_t{0}, length_ - 10}) {
        Bytes buffer(401, 0xA5);
        EXPECT_EQ(trnmpa_reader_read(reader.get(), start, 100, buffer.data(), 401, nullptr), TRNMPA_OK);
        EXPECT_EQ(buffer.back(), 0xA5);
    }
}

TEST_F(CReaderTest, TwoReadersDoNotDisturbEachOther) {
    const CReader first = OpenC(song_);
    const CReader second = OpenC(song_);
    for (std::int64_t start = 0; start < 9000; start += 1500) {
        EXPECT_EQ(ReadC(*first, start, 1500).pcm, Part(whole_, start, 1500));
        EXPECT_EQ(ReadC(*second, 10000 - start, 1500).pcm, Part(whole_, 10000 - start, 1500));
    }
}

TEST_F(CReaderTest, RefusesWhatIsNoRequest) {
    const CReader reader = OpenC(song_);
    Pcm pcm(200);
    auto result = Sized<trnmpa_read_result>();
    const auto read = [&](trnmpa_reader* handle, std::int64_t start, std::uint32_t count, void* buffer,
                          std::uint64_t bytes) {
        return trnmpa_reader_read(handle, start, count, buffer, bytes, &result);
    };
    EXPECT_EQ(read(nullptr, 0, 100, pcm.data(), 400), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(read(reader.get(), -1, 100, pcm.data(), 400), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(read(reader.get(), 0, 0, pcm.data(), 400), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(read(reader.get(), 0, 100, nullptr, 400), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(read(reader.get(), 0, 100, pcm.data(), 399), TRNMPA_ERROR_BUFFER);
    EXPECT_EQ(read(reader.get(), 0, 0xFFFFFFFFu, pcm.data(), 400), TRNMPA_ERROR_BUFFER);
    for (const std::uint32_t size : {0u, 23u, 4097u, 0xFFFFFFFFu}) {
        result.struct_size = size;
        EXPECT_EQ(read(reader.get(), 0, 100, pcm.data(), 400), TRNMPA_ERROR_ARGUMENT) << size;
    }
    EXPECT_EQ(pcm, Pcm(200));
    trnmpa_reader_close(nullptr);
}

TEST_F(CReaderTest, RefusesWhatItCannotOpen) {
    EXPECT_EQ(trnmpa_reader_open_utf8("x", nullptr), TRNMPA_ERROR_ARGUMENT);
    auto* reader = reinterpret_cast<trnmpa_reader*>(&folder_);
    EXPECT_EQ(trnmpa_reader_open_utf8(nullptr, &reader), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(reader, nullptr);
    EXPECT_EQ(trnmpa_reader_open_utf16(nullptr, &reader), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(trnmpa_reader_open_utf16(Utf16Of("x").data(), nullptr), TRNMPA_ERROR_ARGUMENT);
    OpenC(folder_.Path() / "missing.mp3", TRNMPA_ERROR_FILE);
    OpenC(folder_.Path(), TRNMPA_ERROR_FILE);
    OpenC(folder_.Add("noise.mp3", Bytes(10000)), TRNMPA_ERROR_FORMAT);
    OpenC(folder_.Add("empty.mp3", Bytes()), TRNMPA_ERROR_FORMAT);
}

TEST_F(CReaderTest, AnIndexBehindTheFileIsRefused) {
    Index index = IndexOf(steady_);
    index.entries.front().frameOffset = 0x7FFFFFFF;
    folder_.Add("song.mp3.idx", index.ToBytes());
    OpenC(song_, TRNMPA_ERROR_UNEXPECTED);
}

TEST_F(CReaderTest, AnUnfinishedIndexGivesNoSamples) {
    folder_.Add("song.mp3.idx", Bytes(28));
    const CReader reader = OpenC(song_);
    const CRead read = ReadC(*reader, 0, 100);
    EXPECT_EQ(read.code, TRNMPA_OK);
    EXPECT_EQ(read.result.samples, 0u);
    EXPECT_EQ(read.result.at_end, 1u);
    EXPECT_EQ(read.result.end, 0);
}
