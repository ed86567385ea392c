// The filter bank over many calls, by each set of kernels.

#include "decoder/each_kernel_set.h"
#include "decoder/kernels/rounding.h"
#include "decoder/synthesis.h"
#include "support/model/tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace {

class Synthesis : public test::EachKernelSet {};

INSTANTIATE_TEST_SUITE_P(Sets, Synthesis, testing::ValuesIn(test::kEachKernelSet), test::KernelSetName);

TEST_P(Synthesis, SilenceAfterResetIsExactlyZero) {
    trnmpa::SynthesisBank bank;
    std::vector<float> slots(2 * 18 * 32, 20000.0f);
    std::vector<std::int16_t> pcm(slots.size());
    bank.Synthesise(2, 18, slots.data(), true, pcm.data());
    bank.Reset();
    std::ranges::fill(slots, 0.0f);
    for (int granule = 0; granule < 4; ++granule) {
        std::ranges::fill(pcm, std::int16_t{1});
        bank.Synthesise(2, 18, slots.data(), true, pcm.data());
        EXPECT_EQ(pcm, std::vector<std::int16_t>(pcm.size()));
    }
}

/// The PCM of a lasting tone's 32nd slot.
std::vector<std::int16_t> LastSlot(float amplitude) {
    trnmpa::SynthesisBank bank;
    std::vector<float> slots(32 * 32);
    for (std::size_t i = 0; i < slots.size(); i += 32)
        slots[i] = amplitude;
    std::vector<std::int16_t> pcm(slots.size());
    bank.Synthesise(1, 32, slots.data(), false, pcm.data());
    return {pcm.begin() + 31 * 32, pcm.end()};
}

// With powers of two, the sums are the same but for their exponents; most do not fit into 32 bits.
TEST_P(Synthesis, LoudSignalsClipInsteadOfWrapping) {
    for (const float sign : {1.0f, -1.0f}) {
        const auto loud = LastSlot(std::ldexp(sign, 20));
        for (const std::int16_t value : loud)
            EXPECT_TRUE(value == 32767 || value == -32768) << value;
        for (int exponent = 30; exponent < 60; ++exponent)
            EXPECT_EQ(LastSlot(std::ldexp(sign, exponent)), loud) << exponent;
    }
}

/// A ring of 16 slots a channel with one phase for both, windowed term by term.
class RingModel {
public:
    void Synthesise(int channels, const float (*slots)[32], std::int16_t* pcm) {
        for (int channel = 0; channel < channels; ++channel) {
            Transform(slots[channel], ring_[channel][phase_]);
            for (int n = 0; n < 32; ++n)
                pcm[n * channels + channel] = trnmpa::RoundToPcm(Output(ring_[channel], n));
        }
        phase_ = (phase_ + 15) % 16;
    }

private:
    static void Transform(const float* slot, float* c) {
        alignas(32) float row[32];
        trnmpa::PlainKernels().transformSlots(slot, 1, 1, false,
                                              std::array{trnmpa::SynthesisRows{row, c}}.data());
        std::copy_n(row, 16, c + 16);
        for (int n = 1; n <= 16; ++n)
            c[n] = row[32 - n];
    }

    float Output(const float (&ring)[16][32], int n) const {
        float sum = 0;
        for (int k = 0; k < 16; ++k) {
            const float* c = ring[(phase_ + k) % 16];
            const auto tap = static_cast<float>(window_[static_cast<std::size_t>(32 * k + n)]);
            if (k % 2 != 0)
                sum -= tap * c[n <= 16 ? 16 - n : n - 16];
            else if (n < 16)
                sum += tap * c[16 + n];
            else if (n > 16)
                sum -= tap * c[48 - n];
        }
        return sum;
    }

    const std::array<double, 512>& window_ = test::model::StandardTables().window;
    float ring_[2][16][32] = {};
    int phase_ = 0;
};

/// The channels of a stream step together, and one that pauses finds its old slots where it left them.
TEST_P(Synthesis, EqualsARingOverAnyRunOfCalls) {
    std::mt19937 engine(21);
    trnmpa::SynthesisBank bank;
    RingModel ring;
    for (int call = 0; call < 300; ++call) {
        // Runs of single channels among pairs.
        const int channels = call / 7 % 2 == 0 ? 2 : 1;
        const int count = static_cast<int>(engine() % trnmpa::kMaximumSlots) + 1;
        std::vector<float> slots(static_cast<std::size_t>(channels * count * 32));
        for (float& value : slots)
            value = static_cast<float>(static_cast<std::int32_t>(engine())) / 1e6f;
        std::vector<std::int16_t> found(slots.size());
        std::vector<std::int16_t> expected(slots.size());
        bank.Synthesise(channels, count, slots.data(), false, found.data());
        for (int slot = 0; slot < count; ++slot) {
            float both[2][32] = {};
            for (int channel = 0; channel < channels; ++channel)
                std::copy_n(&slots[static_cast<std::size_t>((channel * count + slot) * 32)], 32,
                            both[channel]);
            ring.Synthesise(channels, both, &expected[static_cast<std::size_t>(slot * channels * 32)]);
        }
        ASSERT_EQ(found, expected) << call;
    }
}

} // namespace
