#include "decoder/bitstream.h"

#include "decoder/stream_decode.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

namespace {

using trnmpa::AMPBitstream;

std::vector<std::uint8_t> RandomBytes(std::size_t count) {
    std::mt19937 engine(7);
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(engine());
    return bytes;
}

std::uint32_t BitsOf(const std::vector<std::uint8_t>& bytes, std::size_t bit, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i, ++bit)
        value = value << 1 | (bit / 8 < bytes.size() ? bytes[bit / 8] >> (7 - bit % 8) & 1u : 0u);
    return value;
}

TEST(Bitstream, ReservoirReadsEqualThePlainBits) {
    const auto bytes = RandomBytes(300);
    test::MemorySource source(bytes);
    AMPBitstream bits;
    bits.SetSource(&source);
    bits.AppendToReservoir(300);
    bits.RewindToFrameStart(300);
    std::mt19937 engine(9);
    std::size_t position = 0;
    while (position < 2400 + 200) {
        const int count = static_cast<int>(engine() % 24) + 1;
        ASSERT_EQ(bits.BitsRemaining(), 2400 - static_cast<int>(position));
        ASSERT_EQ(bits.Peek(count), BitsOf(bytes, position, count)) << position;
        ASSERT_EQ(bits.Get(count), BitsOf(bytes, position, count)) << position;
        position += static_cast<std::size_t>(count);
    }
}

TEST(Bitstream, LinearReadsEqualThePlainBits) {
    const auto bytes = RandomBytes(2877);
    test::MemorySource source(bytes);
    AMPBitstream bits;
    bits.SetSource(&source);
    bits.FillLinear(2877);
    std::mt19937 engine(10);
    std::size_t position = 0;
    while (position < 8u * 2877 + 100) {
        const int count = static_cast<int>(engine() % 33);
        ASSERT_EQ(bits.Get(count), BitsOf(bytes, position, count)) << position;
        position += static_cast<std::size_t>(count);
    }
}

TEST(Bitstream, SeekLandsOnTheBitFromAheadAndBehind) {
    const auto bytes = RandomBytes(400);
    test::MemorySource source(bytes);
    AMPBitstream bits;
    bits.SetSource(&source);
    bits.AppendToReservoir(400);
    bits.RewindToFrameStart(400);
    std::mt19937 engine(11);
    for (int i = 0; i < 2000; ++i) {
        const auto target = static_cast<int>(engine() % 3200);
        bits.SeekToBitsRemaining(target);
        ASSERT_EQ(bits.BitsRemaining(), target);
        const auto position = static_cast<std::size_t>(3200 - target);
        ASSERT_EQ(bits.Get(17), BitsOf(bytes, position, 17)) << target;
    }
}

TEST(Bitstream, ReservoirWrapsAround) {
    const auto bytes = RandomBytes(5000);
    test::MemorySource source(bytes);
    AMPBitstream bits;
    bits.SetSource(&source);
    for (std::size_t end = 500; end <= 5000; end += 500) {
        bits.AppendToReservoir(500);
        const int back = static_cast<int>(std::min<std::size_t>(end, 1000));
        bits.RewindToFrameStart(back);
        for (int i = 0; i < back; ++i)
            ASSERT_EQ(bits.Get(8), bytes[end - static_cast<std::size_t>(back - i)]);
    }
}

TEST(Bitstream, ADryReservoirGivesZerosAndSeeksBack) {
    const std::vector<std::uint8_t> bytes(10, 0xFF);
    test::MemorySource source(bytes);
    AMPBitstream bits;
    bits.SetSource(&source);
    bits.AppendToReservoir(10);
    bits.RewindToFrameStart(10);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(bits.Get(8), 0xFFu);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(bits.Get(24), 0u);
    EXPECT_EQ(bits.BitsRemaining(), -24000);
    bits.SeekToBitsRemaining(-50);
    EXPECT_EQ(bits.Get(24), 0u);
    bits.SeekToBitsRemaining(12);
    EXPECT_EQ(bits.Get(16), 0xFFF0u);
}

TEST(Bitstream, ShortReadsThrowEndOfStream) {
    const std::vector<std::uint8_t> bytes(10);
    test::MemorySource source(bytes);
    AMPBitstream bits;
    bits.SetSource(&source);
    EXPECT_THROW(bits.FillLinear(11), int);
    EXPECT_THROW(bits.AppendToReservoir(1), int);
}

} // namespace
