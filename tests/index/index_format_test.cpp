#include "index/index_format.h"

#include "fileio/frame_buffer_reader.h"
#include "support/test_files.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <numeric>

using namespace trnmpa;
using test::Bytes;

namespace {

/// A header whose byte n is n, and `entries` entries with frame offset i * 1000 + 7 and length i + 1.
Bytes IndexFile(std::uint32_t entries) {
    Bytes bytes(28);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    for (std::uint32_t i = 0; i < entries; ++i)
        for (const std::uint32_t value : {i * 1000 + 7, i + 1})
            for (int shift = 0; shift < 32; shift += 8)
                bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
}

constexpr MpaIndexHeader kCountedHeader = {.frameCount = 0x03020100,
                                           .mediaFileSize = 0x07060504,
                                           .layer = 8,
                                           .version = 9,
                                           .channels = 0x0B0A,
                                           .bitRate = 0x0F0E0D0C,
                                           .sampleRate = 0x13121110,
                                           .bitsPerSample = 0x1514,
                                           .frameBytes = 0x1716,
                                           .samplesPerFrame = 0x1B1A1918};

/// Runs with both back ends, which differ at the end of a file.
class IndexFormat : public testing::TestWithParam<bool> {
protected:
    CMpAudioFrameBufferReader& Open(const Bytes& bytes) {
        reader_.Close();
        if (GetParam())
            reader_.UseEasyFile(0, 1);
        EXPECT_EQ(reader_.Open(test::Wide(folder_.Add("a.mp3.idx", bytes))), 1);
        return reader_;
    }

    test::ScratchFolder folder_;
    CMpAudioFrameBufferReader reader_;
};

void ExpectEntries(const std::vector<MpaIndexEntry>& entries, std::uint32_t count) {
    ASSERT_EQ(entries.size(), count);
    for (std::uint32_t i = 0; i < count; ++i)
        ASSERT_EQ(entries[i], (MpaIndexEntry{i * 1000 + 7, i + 1})) << i;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(BackEnds, IndexFormat, testing::Values(false, true),
                         [](const auto& backEnd) { return backEnd.param ? "EasyFile" : "FileAccess"; });

TEST(IndexPath, KeepsTheExtension) {
    EXPECT_EQ(IndexPathFor(L"D:\\media\\a.mp3"), L"D:\\media\\a.mp3.idx");
    EXPECT_EQ(IndexPathFor(L"a"), L"a.idx");
}

TEST_P(IndexFormat, HeaderFieldsStandWhereTheyBelong) {
    EXPECT_EQ(ReadIndexHeader(Open(IndexFile(0))), kCountedHeader);
}

TEST_P(IndexFormat, HeaderIsReadAtTheStart) {
    CMpAudioFrameBufferReader& reader = Open(IndexFile(10));
    reader.SetPosition(40);
    EXPECT_EQ(ReadIndexHeader(reader), kCountedHeader);
    EXPECT_EQ(ReadIndexHeader(reader), kCountedHeader);
}

TEST_P(IndexFormat, WhatAShortHeaderLacksIsZero) {
    const Bytes whole = IndexFile(0);
    for (const std::size_t size : {0u, 1u, 4u, 13u, 27u, 28u}) {
        Bytes padded = whole;
        std::fill(padded.begin() + static_cast<std::ptrdiff_t>(size), padded.end(), std::uint8_t{0});
        const MpaIndexHeader expected = ParseIndexHeader(std::span(padded).first<kIndexHeaderBytes>());
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(ReadIndexHeader(Open(cut)), expected) << size;
    }
    EXPECT_EQ(ReadIndexHeader(Open({})), MpaIndexHeader{});
}

TEST_P(IndexFormat, ReadsTheEntriesThatAreClaimed) {
    for (const std::uint32_t count : {0u, 1u, 5u, 4095u, 4096u, 4097u, 10000u})
        ExpectEntries(ReadIndexEntries(Open(IndexFile(count)), count), count);
}

TEST_P(IndexFormat, ClaimsBelowTheFileAreKept) {
    ExpectEntries(ReadIndexEntries(Open(IndexFile(10)), 3), 3);
    EXPECT_TRUE(ReadIndexEntries(Open(IndexFile(10)), 0).empty());
}

TEST_P(IndexFormat, ClaimsBeyondTheFileCostNothing) {
    const auto entries = ReadIndexEntries(Open(IndexFile(9)), 0xFFFFFFFF);
    ExpectEntries(entries, 9);
    EXPECT_LT(entries.capacity(), 100u);
    EXPECT_EQ(ReadIndexEntries(Open({}), 0xFFFFFFFF).capacity(), 0u);
}

TEST_P(IndexFormat, EntriesThatAreCutOffDoNotCount) {
    for (std::size_t extra = 0; extra < 8; ++extra) {
        Bytes bytes = IndexFile(5);
        bytes.resize(bytes.size() + extra, 0x55);
        ExpectEntries(ReadIndexEntries(Open(bytes), 1000), 5);
    }
    for (const std::size_t size : {0u, 1u, 27u, 28u, 30u}) {
        Bytes bytes = IndexFile(1);
        bytes.resize(size);
        EXPECT_TRUE(ReadIndexEntries(Open(bytes), 1000).empty()) << size;
    }
}

TEST_P(IndexFormat, EntriesAreReadFromTheirPlace) {
    CMpAudioFrameBufferReader& reader = Open(IndexFile(20));
    reader.SetPosition(3);
    ExpectEntries(ReadIndexEntries(reader, 20), 20);
    ExpectEntries(ReadIndexEntries(reader, 20), 20);
}

TEST_P(IndexFormat, AClosedReaderHasNoIndex) {
    CMpAudioFrameBufferReader reader;
    if (GetParam())
        reader.UseEasyFile(0, 64);
    EXPECT_EQ(ReadIndexHeader(reader), MpaIndexHeader{});
    EXPECT_TRUE(ReadIndexEntries(reader, 0xFFFFFFFF).empty());
}
