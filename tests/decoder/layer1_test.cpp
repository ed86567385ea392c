// The layer I body decoder, which no stream reaches, against its formula.

#include "decoder/layer1.h"

#include "decoder/stream_decode.h"
#include "support/bitstream/bit_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace {

using test::bitstream::BitWriter;

constexpr int kAllocation[3] = {1, 7, 14};

/// A body in which subband s has allocation kAllocation[s % 3] and scale factor 3 s; sample codes follow a
/// pattern.
struct Body {
    BitWriter bits;
    std::array<std::array<std::array<float, 32>, 2>, 12> expected = {};
};

int Code(int slot, int subband, int channel, int bits) {
    return (slot * 37 + subband * 11 + channel * 5 + 1) % ((1 << bits) - 1);
}

Body MakeBody(int channels, int bound) {
    Body body;
    for (int subband = 0; subband < 32; ++subband)
        for (int channel = 0; channel < (subband < bound ? channels : 1); ++channel)
            body.bits.Write(kAllocation[subband % 3], 4);
    for (int subband = 0; subband < 32; ++subband)
        for (int channel = 0; channel < channels; ++channel)
            body.bits.Write((subband + channel) % 63, 6);
    for (int slot = 0; slot < 12; ++slot) {
        for (int subband = 0; subband < 32; ++subband) {
            const int allocation = kAllocation[subband % 3];
            for (int channel = 0; channel < channels; ++channel) {
                const bool shared = subband >= bound && channel == 1;
                const int code = Code(slot, subband, shared ? 0 : channel, allocation + 1);
                if (!shared)
                    body.bits.Write(code, allocation + 1);
                constexpr int kLevels[15] = {0,   3,   5,   7,    9,    15,   31,  63,
                                             127, 255, 511, 1023, 2047, 4095, 8191};
                const double factor =
                    65534.0 / kLevels[allocation] * 2 * std::pow(2.0, -((subband + channel) % 63) / 3.0);
                body.expected[static_cast<std::size_t>(slot)][static_cast<std::size_t>(channel)]
                             [static_cast<std::size_t>(subband)] =
                    static_cast<float>((code - ((1 << allocation) - 1)) * factor);
            }
        }
    }
    return body;
}

void ExpectDecodes(int mode, int modeExtension) {
    trnmpa::DecoderHeader header;
    header.layer = 1;
    header.mode = mode;
    header.modeExtension = modeExtension;
    header.channels = mode == 3 ? 1 : 2;
    const Body body = MakeBody(header.channels, mode == 1 ? 4 * modeExtension + 4 : 32);
    test::MemorySource source(body.bits.Bytes());
    trnmpa::AMPBitstream bits;
    bits.SetSource(&source);
    trnmpa::SynthesisBank bank;
    std::array<std::int16_t, 768> pcm = {};
    const int values =
        trnmpa::DecodeLayer1(bits, header, static_cast<int>(body.bits.Bytes().size()), bank, pcm.data());
    ASSERT_EQ(values, 384 * header.channels);

    trnmpa::SynthesisBank reference;
    for (std::size_t slot = 0; slot < 12; ++slot) {
        std::array<std::int16_t, 64> expected = {};
        const auto& subbands = body.expected[slot];
        reference.Synthesise(header.channels, 1, subbands[0].data(), false, expected.data());
        const std::size_t count = static_cast<std::size_t>(32 * header.channels);
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_NEAR(pcm[slot * count + i], expected[i], 1) << slot << ' ' << i;
    }
}

TEST(Layer1, StereoJointAndSingleChannel) {
    ExpectDecodes(0, 0);
    ExpectDecodes(1, 0);
    ExpectDecodes(1, 2);
    ExpectDecodes(3, 0);
}

TEST(Layer1, ABodyOfOnesStaysInBounds) {
    trnmpa::DecoderHeader header;
    header.layer = 1;
    header.channels = 2;
    const std::vector<std::uint8_t> ones(400, 0xFF);
    test::MemorySource source(ones);
    trnmpa::AMPBitstream bits;
    bits.SetSource(&source);
    trnmpa::SynthesisBank bank;
    std::array<std::int16_t, 768> pcm = {};
    EXPECT_EQ(trnmpa::DecodeLayer1(bits, header, 400, bank, pcm.data()), 768);
}

} // namespace
