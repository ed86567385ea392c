#include "mpatool/pcm/wave_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using mpatool::WaveHeader;

using Bytes = std::vector<std::uint8_t>;

std::string Tag(const Bytes& header, std::size_t offset) {
    return std::string(header.begin() + static_cast<std::ptrdiff_t>(offset),
                       header.begin() + static_cast<std::ptrdiff_t>(offset) + 4);
}

std::uint64_t Number(const Bytes& header, std::size_t offset, std::size_t bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        value |= std::uint64_t{header.at(offset + i)} << (8 * i);
    return value;
}

TEST(WaveWriterTest, StereoHeader) {
    const Bytes expected = {'R', 'I', 'F', 'F', 0x2C, 0, 0,   0,   'W', 'A',  'V',  'E', 'f', 'm',  't',
                            ' ', 16,  0,   0,   0,    1, 0,   2,   0,   0x44, 0xAC, 0,   0,   0x10, 0xB1,
                            2,   0,   4,   0,   16,   0, 'd', 'a', 't', 'a',  8,    0,   0,   0};
    EXPECT_EQ(WaveHeader({44100, 2}, 8), expected);
}

TEST(WaveWriterTest, MonoHeader) {
    const Bytes header = WaveHeader({22050, 1}, 2);
    ASSERT_EQ(header.size(), 44u);
    EXPECT_EQ(Number(header, 22, 2), 1u);
    EXPECT_EQ(Number(header, 24, 4), 22050u);
    EXPECT_EQ(Number(header, 28, 4), 44100u);
    EXPECT_EQ(Number(header, 32, 2), 2u);
}

TEST(WaveWriterTest, SizesBeyond2GibStayTrue) {
    constexpr std::uint64_t kDataBytes = 3'000'000'000;
    const Bytes header = WaveHeader({44100, 2}, kDataBytes);
    EXPECT_EQ(Tag(header, 0), "RIFF");
    EXPECT_EQ(Number(header, 4, 4), kDataBytes + 36);
    EXPECT_EQ(Number(header, 40, 4), kDataBytes);
}

TEST(WaveWriterTest, OtherWidths) {
    const Bytes header = WaveHeader({48000, 2, 24}, 12);
    EXPECT_EQ(Number(header, 28, 4), 288000u);
    EXPECT_EQ(Number(header, 32, 2), 6u);
    EXPECT_EQ(Number(header, 34, 2), 24u);
    EXPECT_EQ(Number(WaveHeader({8000, 1, 8}, 3), 32, 2), 1u);
}

TEST(WaveWriterTest, OddAmountsArePadded) {
    const Bytes header = WaveHeader({8000, 1, 8}, 3);
    EXPECT_EQ(Number(header, 4, 4), 36u + 4u);
    EXPECT_EQ(Number(header, 40, 4), 3u);
    EXPECT_EQ(mpatool::WavePadding(3), Bytes{0});
    EXPECT_EQ(mpatool::WavePadding(4), Bytes{});
}

TEST(WaveWriterTest, LargestRiff) {
    constexpr std::uint64_t kLargest = 0xFFFFFFFE - 36;
    EXPECT_EQ(Tag(WaveHeader({44100, 1}, kLargest), 0), "RIFF");
    EXPECT_EQ(Tag(WaveHeader({44100, 1}, kLargest + 2), 0), "RF64");
}

TEST(WaveWriterTest, SizesThatDoNotFitMakeItRf64) {
    constexpr std::uint64_t kDataBytes = 10'000'000'000;
    const Bytes header = WaveHeader({48000, 2}, kDataBytes);
    ASSERT_EQ(header.size(), 80u);
    EXPECT_EQ(Tag(header, 0), "RF64");
    EXPECT_EQ(Number(header, 4, 4), 0xFFFFFFFFu);
    EXPECT_EQ(Tag(header, 8), "WAVE");
    EXPECT_EQ(Tag(header, 12), "ds64");
    EXPECT_EQ(Number(header, 16, 4), 28u);
    EXPECT_EQ(Number(header, 20, 8), kDataBytes + 80 - 8);
    EXPECT_EQ(Number(header, 28, 8), kDataBytes);
    EXPECT_EQ(Number(header, 36, 8), kDataBytes / 4);
    EXPECT_EQ(Number(header, 44, 4), 0u);
    EXPECT_EQ(Tag(header, 48), "fmt ");
    EXPECT_EQ(Tag(header, 72), "data");
    EXPECT_EQ(Number(header, 76, 4), 0xFFFFFFFFu);
}

} // namespace
