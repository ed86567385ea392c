/// What the plain C functions tell of files, of failures, and how they take paths and records.
#include <gtest/gtest.h>

#include "platform/path_samples.h"
#include "plugin/c_handles.h"
#include "reader/reader_streams.h"

#include <cstring>
#include <set>
#include <string_view>

namespace {

namespace fs = std::filesystem;
using namespace test;

class CInfo : public testing::Test {
protected:
    static trnmpa_info InfoOf(const fs::path& path) {
        const CReader reader = OpenC(path);
        auto info = Sized<trnmpa_info>();
        EXPECT_EQ(trnmpa_reader_info(reader.get(), &info), TRNMPA_OK);
        return info;
    }

    ScratchFolder folder_;
    const bitstream::Stream steady_ = SteadyStream();
    const bitstream::Stream changing_ = ChangingStream();
};

} // namespace

TEST_F(CInfo, OfConstantBitRate) {
    const trnmpa_info info = InfoOf(SourceFolder() / "samples" / "music.mp3");
    EXPECT_EQ(info.struct_size, sizeof info);
    EXPECT_EQ(info.layer, 3u);
    EXPECT_EQ(info.mpeg_version, 1u);
    EXPECT_EQ(info.sample_rate, 44100u);
    EXPECT_EQ(info.channels, 2u);
    EXPECT_EQ(info.bits_per_sample, 16u);
    EXPECT_EQ(info.block_bytes, 4u);
    EXPECT_EQ(info.bit_rate, 128000u);
    EXPECT_EQ(info.bit_rate_kind, TRNMPA_BIT_RATE_CONSTANT);
    EXPECT_EQ(info.has_index, 0u);
    EXPECT_EQ(info.delay, 1100u);
    EXPECT_EQ(info.length_kind, TRNMPA_LENGTH_ESTIMATE);
    // Reading gives 265012.
    EXPECT_NEAR(static_cast<double>(info.length), 265012, 1200);
    EXPECT_NEAR(static_cast<double>(info.duration), static_cast<double>(info.length) * 1e7 / 44100, 1);
}

TEST_F(CInfo, OfLayer2) {
    const trnmpa_info info = InfoOf(folder_.Add("song.mp2", Layer2Stream().bytes));
    EXPECT_EQ(info.layer, 2u);
    EXPECT_EQ(info.sample_rate, 48000u);
    EXPECT_EQ(info.bit_rate, 192000u);
    EXPECT_EQ(info.delay, 0u);
    EXPECT_EQ(info.bit_rate_kind, TRNMPA_BIT_RATE_CONSTANT);
    EXPECT_NEAR(static_cast<double>(info.length), 20 * 1152, 1200);
}

TEST_F(CInfo, OfVariableBitRateWithoutAnIndex) {
    const trnmpa_info info = InfoOf(folder_.Add("varying.mp3", changing_.bytes));
    EXPECT_EQ(info.bit_rate_kind, TRNMPA_BIT_RATE_VARIABLE);
    EXPECT_EQ(info.length_kind, TRNMPA_LENGTH_UNKNOWN);
    EXPECT_EQ(info.length, -1);
    EXPECT_EQ(info.duration, -1);
}

TEST_F(CInfo, OfFilesWithAnIndex) {
    folder_.Add("varying.mp3.idx", IndexOf(changing_).ToBytes());
    folder_.Add("steady.mp3.idx", IndexOf(steady_).ToBytes());
    const trnmpa_info varying = InfoOf(folder_.Add("varying.mp3", changing_.bytes));
    EXPECT_EQ(varying.has_index, 1u);
    EXPECT_EQ(varying.bit_rate_kind, TRNMPA_BIT_RATE_VARIABLE);
    EXPECT_EQ(varying.length_kind, TRNMPA_LENGTH_INDEX);
    EXPECT_EQ(varying.length, 39 * 1152) << "40 frames, 39 of them listed";
    EXPECT_EQ(varying.duration, (39 * 1152 * std::int64_t{10'000'000} + 22050) / 44100);
    EXPECT_EQ(varying.delay, 0u);
    const trnmpa_info steady = InfoOf(folder_.Add("steady.mp3", steady_.bytes));
    EXPECT_EQ(steady.bit_rate_kind, TRNMPA_BIT_RATE_CONSTANT);
    EXPECT_EQ(steady.length, 19 * 1152);
}

TEST_F(CInfo, OfAnUnfinishedIndex) {
    folder_.Add("song.mp3.idx", Bytes(28));
    const trnmpa_info info = InfoOf(folder_.Add("song.mp3", steady_.bytes));
    EXPECT_EQ(info.channels, 0u);
    EXPECT_EQ(info.has_index, 1u);
    EXPECT_EQ(info.bit_rate_kind, TRNMPA_BIT_RATE_UNKNOWN);
    EXPECT_EQ(info.length_kind, TRNMPA_LENGTH_UNKNOWN);
    EXPECT_EQ(info.length, -1);
    EXPECT_EQ(info.duration, -1);
}

TEST_F(CInfo, AnIndexCannotClaimMoreThanItHolds) {
    Index index = IndexOf(steady_);
    index.header.frameCount = 0xFFFFFFFF;
    folder_.Add("song.mp3.idx", index.ToBytes());
    EXPECT_EQ(InfoOf(folder_.Add("song.mp3", steady_.bytes)).length, 19 * 1152);
}

TEST_F(CInfo, RecordsOfOtherSizes) {
    const CReader reader = OpenC(folder_.Add("song.mp3", steady_.bytes));
    struct Later {
        trnmpa_info known;
        std::uint64_t unknown[4];
        std::uint64_t behind;
    } later;
    std::memset(&later, 0x55, sizeof later);
    later.known.struct_size = offsetof(Later, behind);
    EXPECT_EQ(trnmpa_reader_info(reader.get(), &later.known), TRNMPA_OK);
    EXPECT_EQ(later.known.struct_size, offsetof(Later, behind));
    EXPECT_EQ(later.known.layer, 3u);
    for (const std::uint64_t unknown : later.unknown)
        EXPECT_EQ(unknown, 0u);
    EXPECT_EQ(later.behind, 0x5555555555555555u) << "not a byte beyond its size";

    trnmpa_info info;
    for (const std::uint32_t size : {0u, 4u, static_cast<std::uint32_t>(sizeof info) - 1, 4097u}) {
        std::memset(&info, 0x55, sizeof info);
        info.struct_size = size;
        const trnmpa_info before = info;
        EXPECT_EQ(trnmpa_reader_info(reader.get(), &info), TRNMPA_ERROR_ARGUMENT) << size;
        EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
    }
    EXPECT_EQ(trnmpa_reader_info(reader.get(), nullptr), TRNMPA_ERROR_ARGUMENT);
    info = Sized<trnmpa_info>();
    EXPECT_EQ(trnmpa_reader_info(nullptr, &info), TRNMPA_ERROR_ARGUMENT);
}

TEST_F(CInfo, PathsOfManyScriptsInBothForms) {
    for (const fs::path& name : UnicodeNames()) {
        const fs::path path = folder_.Add(name, steady_.bytes);
        EXPECT_NE(OpenC(path), nullptr);
        trnmpa_reader* reader = nullptr;
        EXPECT_EQ(trnmpa_reader_open_utf16(Utf16Of(path).data(), &reader), TRNMPA_OK) << path;
        CReader owned(reader);
        trnmpa_slices* slices = nullptr;
        EXPECT_EQ(trnmpa_slices_open_utf8(Utf8Of(path).c_str(), nullptr, &slices), TRNMPA_OK) << path;
        CSlices first(slices);
        EXPECT_EQ(trnmpa_slices_open_utf16(Utf16Of(path).data(), nullptr, &slices), TRNMPA_OK) << path;
        CSlices second(slices);
        owned.reset();
        first.reset();
        second.reset();
        fs::path index = path;
        index += ".idx";
        EXPECT_EQ(trnmpa_index_build_utf8(Utf8Of(path).c_str(), nullptr, nullptr, nullptr), TRNMPA_OK);
        EXPECT_TRUE(fs::remove(index)) << index;
        EXPECT_EQ(trnmpa_index_build_utf16(Utf16Of(path).data(), nullptr, nullptr, nullptr), TRNMPA_OK);
        EXPECT_TRUE(fs::remove(index)) << index;
    }
}

TEST_F(CInfo, BytesThatAreNoUtf8AreNoPath) {
    using namespace std::string_literals;
    for (const std::string& path :
         {""s, "\xFF.mp3"s, "a\x80.mp3"s, "\xC3"s, "\xC0\xAF"s, "\xE0\x80\xAF"s, "\xED\xA0\xB4.mp3"s,
          "\xED\xA0\xB4\xED\xB4\x9E"s, "\xF4\x90\x80\x80"s, std::string(32768, 'a')}) {
        trnmpa_reader* reader = nullptr;
        trnmpa_slices* slices = nullptr;
        EXPECT_EQ(trnmpa_reader_open_utf8(path.c_str(), &reader), TRNMPA_ERROR_PATH);
        EXPECT_EQ(trnmpa_slices_open_utf8(path.c_str(), nullptr, &slices), TRNMPA_ERROR_PATH);
        EXPECT_EQ(trnmpa_index_build_utf8(path.c_str(), nullptr, nullptr, nullptr), TRNMPA_ERROR_PATH);
    }
    // A character of the basic plane that stands for broken text elsewhere is a character here.
    OpenC(folder_.Path() / u8"\uFFFD.mp3", TRNMPA_ERROR_FILE);
}

TEST_F(CInfo, UnitsThatAreNoUtf16AreNoPath) {
    using Units = std::vector<std::uint16_t>;
    for (const Units& path :
         {Units{0}, Units{'a', 0xD834, 0}, Units{0xDD1E, 'a', 0}, Units{0xDD1E, 0xD834, 0},
          Units{0xD834, 0xD834, 0xDD1E, 0}, Units(32768, 'a')}) {
        trnmpa_reader* reader = nullptr;
        trnmpa_slices* slices = nullptr;
        EXPECT_EQ(trnmpa_reader_open_utf16(path.data(), &reader), TRNMPA_ERROR_PATH);
        EXPECT_EQ(trnmpa_slices_open_utf16(path.data(), nullptr, &slices), TRNMPA_ERROR_PATH);
        EXPECT_EQ(trnmpa_index_build_utf16(path.data(), nullptr, nullptr, nullptr), TRNMPA_ERROR_PATH);
    }
}

TEST_F(CInfo, EveryResultHasATextOfItsOwn) {
    std::set<std::string> texts;
    for (trnmpa_result result = TRNMPA_ERROR_UNEXPECTED; result <= TRNMPA_END; ++result)
        texts.insert(trnmpa_error_text(result));
    EXPECT_EQ(texts.size(), 16u);
    EXPECT_FALSE(texts.contains(""));
    for (const trnmpa_result unknown : {2, -15, INT32_MIN, INT32_MAX})
        EXPECT_STREQ(trnmpa_error_text(unknown), "an unknown result");
    EXPECT_FALSE(texts.contains("an unknown result"));
}
