#include "decoder/bitstream.h"

#include "decoder/bit_window.h"
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

int Remaining(const trnmpa::BitReader& bits) {
    return bits.SizeInBits() - bits.Position();
}

TEST(Bitstream, ReservoirReadsEqualThePlainBits) {
    const auto bytes = RandomBytes(300);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    trnmpa::BitReader& bits = stream.Reader();
    stream.AppendToReservoir(300);
    stream.RewindToFrameStart(300);
    std::mt19937 engine(9);
    std::size_t position = 0;
    while (position < 2400 + 200) {
        const int count = static_cast<int>(engine() % 24) + 1;
        ASSERT_EQ(Remaining(bits), 2400 - static_cast<int>(position));
        ASSERT_EQ(bits.Peek(count), BitsOf(bytes, position, count)) << position;
        ASSERT_EQ(bits.Get(count), BitsOf(bytes, position, count)) << position;
        position += static_cast<std::size_t>(count);
    }
}

TEST(Bitstream, LinearReadsEqualThePlainBits) {
    const auto bytes = RandomBytes(2877);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    trnmpa::BitReader& bits = stream.Reader();
    stream.FillLinear(2877);
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
    AMPBitstream stream;
    stream.SetSource(&source);
    trnmpa::BitReader& bits = stream.Reader();
    stream.AppendToReservoir(400);
    stream.RewindToFrameStart(400);
    std::mt19937 engine(11);
    for (int i = 0; i < 2000; ++i) {
        const auto target = static_cast<int>(engine() % 3200);
        bits.SetPosition(bits.SizeInBits() - target);
        ASSERT_EQ(Remaining(bits), target);
        const auto position = static_cast<std::size_t>(3200 - target);
        ASSERT_EQ(bits.Get(17), BitsOf(bytes, position, 17)) << target;
    }
}

TEST(Bitstream, ReservoirWrapsAround) {
    const auto bytes = RandomBytes(5000);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    trnmpa::BitReader& bits = stream.Reader();
    for (std::size_t end = 500; end <= 5000; end += 500) {
        stream.AppendToReservoir(500);
        const int back = static_cast<int>(std::min<std::size_t>(end, 1000));
        stream.RewindToFrameStart(back);
        for (int i = 0; i < back; ++i)
            ASSERT_EQ(bits.Get(8), bytes[end - static_cast<std::size_t>(back - i)]);
    }
}

TEST(Bitstream, ADryReservoirGivesZerosAndSeeksBack) {
    const std::vector<std::uint8_t> bytes(10, 0xFF);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    trnmpa::BitReader& bits = stream.Reader();
    stream.AppendToReservoir(10);
    stream.RewindToFrameStart(10);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(bits.Get(8), 0xFFu);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(bits.Get(24), 0u);
    EXPECT_EQ(Remaining(bits), -24000);
    bits.SetPosition(bits.SizeInBits() + 50);
    EXPECT_EQ(bits.Get(24), 0u);
    bits.SetPosition(bits.SizeInBits() - 12);
    EXPECT_EQ(bits.Get(16), 0xFFF0u);
}

TEST(Bitstream, AShorterBodyIsFollowedByZeros) {
    const std::vector<std::uint8_t> bytes(1000, 0xFF);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    trnmpa::BitReader& bits = stream.Reader();
    stream.FillLinear(300);
    EXPECT_THROW(stream.FillLinear(1200), int) << "700 bytes come, more than any body had";
    EXPECT_EQ(bits.Get(32), 0u);
    source.SetPosition(0);
    stream.FillLinear(400);
    bits.SetPosition(8 * 398);
    EXPECT_EQ(bits.Get(32), 0xFFFF0000u) << "of the 700 bytes nothing is left";
    stream.FillLinear(0);
    EXPECT_EQ(bits.Get(32), 0u);

    source.SetPosition(0);
    stream.AppendToReservoir(500);
    stream.RewindToFrameStart(500);
    EXPECT_EQ(bits.Get(32), 0xFFFFFFFFu);
    stream.RewindToFrameStart(3);
    EXPECT_EQ(bits.Get(32), 0xFFFFFF00u);
    EXPECT_EQ(bits.Get(32), 0u);
}

// Also where the reader stands behind the end: the window begins at zeros and goes on counting.
TEST(BitWindow, ReadsWhatTheReaderReads) {
    const auto bytes = RandomBytes(300);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    stream.AppendToReservoir(300);
    stream.RewindToFrameStart(300);
    trnmpa::BitReader& bits = stream.Reader();
    std::mt19937 engine(12);
    for (int start = 0; start < 2400 + 500; start += 7) {
        bits.SetPosition(start);
        trnmpa::BitWindow window(bits);
        ASSERT_EQ(window.Position(), start);
        for (int i = 0; i < 10; ++i) {
            const int count = static_cast<int>(engine() % 29);
            window.Refill();
            ASSERT_EQ(window.Bits() >> 8, bits.WindowAt(bits.Position()) >> 8) << start;
            ASSERT_EQ(window.Get(count), bits.Get(count)) << start;
            ASSERT_EQ(window.Get(count), bits.Get(count)) << start;
            ASSERT_EQ(window.Position(), bits.Position());
        }
    }
}

TEST(Bitstream, ShortReadsThrowEndOfStream) {
    const std::vector<std::uint8_t> bytes(10);
    test::MemorySource source(bytes);
    AMPBitstream stream;
    stream.SetSource(&source);
    EXPECT_THROW(stream.FillLinear(11), int);
    EXPECT_THROW(stream.AppendToReservoir(1), int);
}

} // namespace
