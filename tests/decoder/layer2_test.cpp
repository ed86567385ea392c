// Layer II bodies that no encoder writes.

#include "decoder/stream_decode.h"
#include "support/bitstream/bit_writer.h"
#include "support/model/decoder_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

/// A class of samples that come three to a code.
struct GroupedClass {
    int levels;
    int allocation; ///< its code in the lowest subbands at the lower sampling frequencies
    int bits;       ///< of a code
};

constexpr GroupedClass kGroupedClasses[] = {{3, 1, 5}, {5, 2, 7}, {9, 4, 10}};

/// 22.05 kHz, 64 kbit/s, single channel: a frame whose lowest subband alone has samples, all of one code.
std::vector<std::uint8_t> FrameOfOneCode(const GroupedClass& grouped, int code) {
    constexpr std::size_t kFrameBytes = 417;
    test::bitstream::BitWriter bits;
    bits.Write(0xFFF580C0u, 32);
    bits.Write(grouped.allocation, 4);
    for (const int zeros : {3 * 4, 7 * 3, 19, 19})
        bits.Write(0, zeros);
    bits.Write(2, 2); // one scale factor
    bits.Write(3, 6); // of 1
    for (int granule = 0; granule < 12; ++granule)
        bits.Write(code, grouped.bits);
    std::vector<std::uint8_t> frame = bits.Bytes();
    frame.resize(kFrameBytes);
    return frame;
}

bool IsSilent(const std::vector<std::int16_t>& pcm) {
    return std::ranges::all_of(pcm, [](std::int16_t value) { return value == 0; });
}

// All ones stand for no three samples; the other codes above levels^3 - 1 are read as digits all the same.
TEST(Layer2, TheLastCodeOfGroupedSamplesGivesZeros) {
    for (const GroupedClass& grouped : kGroupedClasses) {
        SCOPED_TRACE(grouped.levels);
        const int last = (1 << grouped.bits) - 1;
        const auto pcm = test::DecodeStream(FrameOfOneCode(grouped, last)).pcm;
        ASSERT_EQ(pcm.size(), 1152u);
        EXPECT_TRUE(IsSilent(pcm));
    }
}

TEST(Layer2, TheCodesBeforeItGiveTheirDigits) {
    for (const GroupedClass& grouped : kGroupedClasses) {
        const int levels = grouped.levels;
        for (const int code : {0, levels * levels * levels - 1, (1 << grouped.bits) - 2}) {
            SCOPED_TRACE(testing::Message() << levels << " levels, code " << code);
            const auto frame = FrameOfOneCode(grouped, code);
            const auto pcm = test::DecodeStream(frame).pcm;
            const auto expected = test::model::DecodeStream(frame);
            EXPECT_FALSE(IsSilent(pcm));
            ASSERT_EQ(pcm.size(), expected.size());
            for (std::size_t i = 0; i < pcm.size(); ++i)
                ASSERT_NEAR(pcm[i], expected[i], 1) << i;
        }
    }
}

} // namespace
