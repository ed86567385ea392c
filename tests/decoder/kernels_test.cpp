// The fast kernels against the formulas that they shorten, in double precision.

#include "decoder/kernels/alias_reduction.h"
#include "decoder/kernels/cosine_transform.h"
#include "decoder/kernels/imdct.h"
#include "decoder/kernels/stereo_lines.h"
#include "decoder/kernels/windowing.h"
#include "decoder/synthesis.h"
#include "decoder/tables/synthesis_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

constexpr double kPi = std::numbers::pi;

class Values {
public:
    explicit Values(std::uint32_t seed) : engine_(seed) {}
    float Next() { return static_cast<float>(static_cast<std::int32_t>(engine_())) / 65536.0f; }

private:
    std::mt19937 engine_;
};

TEST(CosineTransform, EqualsTheSum) {
    Values values(1);
    for (int round = 0; round < 50; ++round) {
        for (const bool inverted : {false, true}) {
            std::array<float, 32> input = {};
            for (float& value : input)
                value = values.Next();
            std::array<float, 32> output = {};
            trnmpa::CosineTransform32(input, inverted, output);
            for (std::size_t n = 0; n < 32; ++n) {
                double sum = 0;
                for (std::size_t m = 0; m < 32; ++m) {
                    const double sign = inverted && m % 2 != 0 ? -1 : 1;
                    sum += sign * input[m] * std::cos(static_cast<double>(n * (2 * m + 1)) * kPi / 64);
                }
                EXPECT_NEAR(output[n], sum, 0.15) << n;
            }
        }
    }
}

/// The standard's window step: V holds 64 values per slot, newest first.
double StandardWindow(const std::vector<std::array<double, 64>>& v, int n) {
    double sum = 0;
    for (int i = 0; i < 8; ++i) {
        const double even = trnmpa::tables::kSynthesisWindow[2 * i][n];
        const double odd = trnmpa::tables::kSynthesisWindow[2 * i + 1][n];
        sum += even * v[static_cast<std::size_t>(2 * i)][static_cast<std::size_t>(n)];
        sum += odd * v[static_cast<std::size_t>(2 * i + 1)][static_cast<std::size_t>(32 + n)];
    }
    return sum;
}

TEST(Windowing, EqualsTheStandardSynthesisInEveryPhase) {
    Values values(2);
    trnmpa::SynthesisRing ring;
    std::vector<std::array<double, 64>> history(16);
    int phase = 0;
    for (int slot = 0; slot < 40; ++slot) {
        std::array<float, 32> subbands = {};
        for (float& value : subbands)
            value = values.Next() / 16;
        std::array<double, 64> v = {};
        for (std::size_t i = 0; i < 64; ++i)
            for (std::size_t k = 0; k < 32; ++k)
                v[i] += std::cos(static_cast<double>((16 + i) * (2 * k + 1)) * kPi / 64) * subbands[k];
        history.insert(history.begin(), v);
        trnmpa::CosineTransform32(subbands, false, ring.slot[phase]);
        std::array<float, 32> output = {};
        trnmpa::WindowSlots(ring, phase, output);
        for (int n = 0; n < 32; ++n)
            ASSERT_NEAR(output[static_cast<std::size_t>(n)], StandardWindow(history, n), 0.05)
                << slot << ' ' << n;
        phase = (phase + 15) % 16;
    }
}

TEST(Windowing, ThePhaseDoesNotChangeABit) {
    Values values(3);
    trnmpa::SynthesisRing ring;
    for (auto& slot : ring.slot)
        for (float& value : slot)
            value = values.Next();
    std::array<float, 32> first = {};
    trnmpa::WindowSlots(ring, 0, first);
    for (int phase = 1; phase < 16; ++phase) {
        trnmpa::SynthesisRing turned;
        for (int age = 0; age < 16; ++age)
            std::copy(std::begin(ring.slot[age]), std::end(ring.slot[age]), turned.slot[(phase + age) & 15]);
        std::array<float, 32> output = {};
        trnmpa::WindowSlots(turned, phase, output);
        EXPECT_EQ(output, first) << phase;
    }
}

TEST(Rounding, NearestTiesToEvenAndClips) {
    EXPECT_EQ(trnmpa::RoundToPcm(0.5f), 0);
    EXPECT_EQ(trnmpa::RoundToPcm(1.5f), 2);
    EXPECT_EQ(trnmpa::RoundToPcm(-0.5f), 0);
    EXPECT_EQ(trnmpa::RoundToPcm(-1.5f), -2);
    EXPECT_EQ(trnmpa::RoundToPcm(2.4999f), 2);
    EXPECT_EQ(trnmpa::RoundToPcm(32766.6f), 32767);
    EXPECT_EQ(trnmpa::RoundToPcm(32767.5f), 32767);
    EXPECT_EQ(trnmpa::RoundToPcm(40000.0f), 32767);
    EXPECT_EQ(trnmpa::RoundToPcm(-32768.4f), -32768);
    EXPECT_EQ(trnmpa::RoundToPcm(-1e6f), -32768);
    EXPECT_EQ(trnmpa::RoundToPcm(6e9f), 32767);
    EXPECT_EQ(trnmpa::RoundToPcm(-1e17f), -32768);
}

TEST(Synthesis, SilenceAfterResetIsExactlyZero) {
    trnmpa::SynthesisBank bank;
    std::array<float, 32> loud = {};
    loud.fill(20000.0f);
    std::array<std::int16_t, 64> pcm = {};
    bank.SynthesiseStereo(loud, loud, false, pcm.data());
    bank.Reset();
    const std::array<float, 32> silence = {};
    for (int slot = 0; slot < 20; ++slot) {
        pcm.fill(1);
        bank.SynthesiseStereo(silence, silence, slot % 2 != 0, pcm.data());
        EXPECT_EQ(pcm, (std::array<std::int16_t, 64>{}));
    }
}

TEST(Synthesis, LoudSignalsClipInsteadOfWrapping) {
    trnmpa::SynthesisBank bank;
    std::array<float, 32> loud = {};
    loud[0] = 1.0e6f;
    std::array<std::int16_t, 32> pcm = {};
    for (int slot = 0; slot < 32; ++slot)
        bank.SynthesiseMono(loud, false, pcm.data());
    for (const std::int16_t value : pcm)
        EXPECT_TRUE(value == 32767 || value == -32768) << value;
}

TEST(Synthesis, SingleChannelWritesOneValuePerSample) {
    trnmpa::SynthesisBank bank;
    std::array<float, 32> subbands = {};
    subbands.fill(1000.0f);
    std::array<std::int16_t, 40> pcm = {};
    pcm.fill(12345);
    bank.SynthesiseMono(subbands, false, pcm.data());
    for (std::size_t i = 32; i < pcm.size(); ++i)
        EXPECT_EQ(pcm[i], 12345);
}

// ISO/IEC 11172-3, 2.4.3.4.10.2 and 2.4.3.4.10.3, straight from the text.
double LongWindow(int blockType, int i) {
    const double sine36 = std::sin((i + 0.5) * kPi / 36);
    if (blockType == 1)
        return i < 18 ? sine36 : i < 24 ? 1 : i < 30 ? std::sin((i - 18 + 0.5) * kPi / 12) : 0;
    if (blockType == 3)
        return i < 6 ? 0 : i < 12 ? std::sin((i - 6 + 0.5) * kPi / 12) : i < 18 ? 1 : sine36;
    return sine36;
}

std::array<double, 36> StandardImdct(const std::array<float, 18>& lines, int blockType) {
    std::array<double, 36> result = {};
    if (blockType != 2) {
        for (int i = 0; i < 36; ++i) {
            double sum = 0;
            for (int k = 0; k < 18; ++k)
                sum +=
                    lines[static_cast<std::size_t>(k)] * std::cos(kPi / 72 * (2 * i + 1 + 18) * (2 * k + 1));
            result[static_cast<std::size_t>(i)] = sum * LongWindow(blockType, i);
        }
        return result;
    }
    for (int window = 0; window < 3; ++window) {
        for (int i = 0; i < 12; ++i) {
            double sum = 0;
            for (int k = 0; k < 6; ++k)
                sum += lines[static_cast<std::size_t>(3 * k + window)] *
                       std::cos(kPi / 24 * (2 * i + 1 + 6) * (2 * k + 1));
            result[static_cast<std::size_t>(6 + 6 * window + i)] += sum * std::sin((i + 0.5) * kPi / 12);
        }
    }
    return result;
}

TEST(InverseMdct, EqualsTheSumForEveryBlockType) {
    Values values(4);
    for (int blockType = 0; blockType < 4; ++blockType) {
        std::array<float, 18> lines = {};
        std::array<float, 18> negated = {};
        for (std::size_t i = 0; i < 18; ++i) {
            lines[i] = values.Next();
            negated[i] = -lines[i];
        }
        std::array<float, 18> overlap = {};
        for (float& value : overlap)
            value = values.Next();
        const std::array<float, 18> oldOverlap = overlap;
        float output[18 * 32] = {};
        trnmpa::InverseMdct(negated, blockType, overlap, output, 32);
        const auto expected = StandardImdct(lines, blockType);
        for (std::size_t i = 0; i < 18; ++i) {
            EXPECT_NEAR(output[32 * i], expected[i] + oldOverlap[i], 0.02) << blockType << ' ' << i;
            EXPECT_NEAR(overlap[i], expected[18 + i], 0.02) << blockType << ' ' << i;
        }
    }
}

TEST(InverseMdct, FlushingEqualsASubbandOfZeros) {
    Values values(5);
    std::array<float, 18> first = {};
    for (float& value : first)
        value = values.Next();
    for (int blockType = 0; blockType < 4; ++blockType) {
        std::array<float, 18> overlap = first;
        std::array<float, 18> flushed = first;
        float transformed[18] = {};
        float copied[18] = {};
        trnmpa::InverseMdct(std::array<float, 18>{}, blockType, overlap, transformed, 1);
        trnmpa::FlushOverlap(flushed, copied, 1);
        for (std::size_t i = 0; i < 18; ++i) {
            EXPECT_EQ(transformed[i], copied[i]);
            EXPECT_EQ(overlap[i], flushed[i]);
        }
    }
}

TEST(AliasReduction, EqualsTheButterflies) {
    constexpr double kC[8] = {-0.6, -0.535, -0.33, -0.185, -0.095, -0.041, -0.0142, -0.0037};
    Values values(6);
    std::array<float, 576> lines = {};
    for (float& value : lines)
        value = values.Next();
    for (const int boundaries : {0, 1, 7, 31}) {
        std::array<float, 576> reduced = lines;
        trnmpa::ReduceAliases(reduced, boundaries);
        std::array<double, 576> expected = {};
        std::copy(lines.begin(), lines.end(), expected.begin());
        for (int b = 1; b <= boundaries; ++b) {
            for (int k = 0; k < 8; ++k) {
                const auto upper = static_cast<std::size_t>(18 * b - 1 - k);
                const auto lower = static_cast<std::size_t>(18 * b + k);
                const double cs = 1 / std::sqrt(1 + kC[k] * kC[k]);
                const double ca = kC[k] / std::sqrt(1 + kC[k] * kC[k]);
                expected[upper] = lines[upper] * cs - lines[lower] * ca;
                expected[lower] = lines[lower] * cs + lines[upper] * ca;
            }
        }
        for (std::size_t i = 0; i < 576; ++i)
            EXPECT_NEAR(reduced[i], expected[i], 0.01) << boundaries << ' ' << i;
    }
}

TEST(StereoLines, MidSideAndIntensity) {
    float left[2] = {3.0f, -1.0f};
    float right[2] = {1.0f, 1.0f};
    trnmpa::UndoMidSide(left, right);
    EXPECT_FLOAT_EQ(left[0], static_cast<float>(4 / std::sqrt(2.0)));
    EXPECT_FLOAT_EQ(right[0], static_cast<float>(2 / std::sqrt(2.0)));
    EXPECT_FLOAT_EQ(right[1], static_cast<float>(-2 / std::sqrt(2.0)));
    float loud[1] = {8.0f};
    float none[1] = {0.0f};
    trnmpa::SpreadIntensity(loud, none, {0.25, 0.75});
    EXPECT_FLOAT_EQ(loud[0], 2.0f);
    EXPECT_FLOAT_EQ(none[0], 6.0f);
}

} // namespace
