// The fast kernels against the formulas that they shorten, in double precision.

#include "decoder/each_kernel_set.h"
#include "decoder/kernels/rounding.h"
#include "decoder/layer3/spread_intensity.h"
#include "support/model/tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace {

constexpr double kPi = std::numbers::pi;

class Values {
public:
    explicit Values(std::uint32_t seed) : engine_(seed) {}
    float Next() { return static_cast<float>(static_cast<std::int32_t>(engine_())) / 65536.0f; }

private:
    std::mt19937 engine_;
};

class KernelFormula : public test::EachKernelSet {};

INSTANTIATE_TEST_SUITE_P(Sets, KernelFormula, testing::ValuesIn(test::kEachKernelSet), test::KernelSetName);

constexpr int kSlots = 18;

TEST_P(KernelFormula, CosineTransformEqualsTheSum) {
    Values values(1);
    for (const bool inverted : {false, true}) {
        float slots[2][kSlots][32];
        for (auto& channel : slots)
            for (auto& slot : channel)
                for (float& value : slot)
                    value = values.Next();
        trnmpa::SynthesisMemory memory[2];
        const trnmpa::SynthesisRows rows[2] = {memory[0].At(3), memory[1].At(3)};
        Kernels().transformSlots(slots[0][0], 2, kSlots, inverted, rows);
        for (int channel = 0; channel < 2; ++channel) {
            for (int slot = 0; slot < kSlots; ++slot) {
                const float* row = rows[channel].row + 32 * slot;
                for (int n = 0; n < 32; ++n) {
                    double sum = 0;
                    for (int m = 0; m < 32; ++m) {
                        const double sign = inverted && m % 2 != 0 && slot % 2 != 0 ? -1 : 1;
                        sum += sign * slots[channel][slot][m] * std::cos(n * (2 * m + 1) * kPi / 64);
                    }
                    const float found = n == 0    ? rows[channel].centre[slot]
                                        : n <= 16 ? row[32 - n]
                                                  : row[n - 16];
                    ASSERT_NEAR(found, sum, 0.15) << channel << ' ' << slot << ' ' << n;
                }
                EXPECT_EQ(row[0], row[16]);
            }
        }
    }
}

/// The standard's window step: V holds 64 values per slot, newest first.
double StandardWindow(const std::vector<std::array<double, 64>>& v, int n) {
    double sum = 0;
    for (int i = 0; i < 8; ++i) {
        const double* window = &test::model::StandardTables().window[static_cast<std::size_t>(64 * i + n)];
        sum += window[0] * v[static_cast<std::size_t>(2 * i)][static_cast<std::size_t>(n)];
        sum += window[32] * v[static_cast<std::size_t>(2 * i + 1)][static_cast<std::size_t>(32 + n)];
    }
    return sum;
}

TEST_P(KernelFormula, SynthesisEqualsTheStandards) {
    Values values(2);
    std::vector<std::array<double, 64>> history(16);
    float slots[36][32];
    trnmpa::SynthesisMemory memory;
    const trnmpa::SynthesisRows rows = memory.At(trnmpa::kPastSlots);
    for (auto& slot : slots)
        for (float& value : slot)
            value = values.Next() / 16;
    std::array<std::int16_t, 36 * 32> pcm = {};
    Kernels().transformSlots(slots[0], 1, 36, false, &rows);
    Kernels().windowSlots(&rows, 1, 36, pcm.data());
    for (int slot = 0; slot < 36; ++slot) {
        std::array<double, 64> v = {};
        for (int i = 0; i < 64; ++i)
            for (int k = 0; k < 32; ++k)
                v[static_cast<std::size_t>(i)] +=
                    std::cos((16 + i) * (2 * k + 1) * kPi / 64) * slots[slot][k];
        history.insert(history.begin(), v);
        for (int n = 0; n < 32; ++n)
            ASSERT_NEAR(pcm[static_cast<std::size_t>(32 * slot + n)], StandardWindow(history, n), 0.55)
                << slot << ' ' << n;
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
    EXPECT_EQ(trnmpa::RoundToPcm(3e9f), 32767) << "a negative number in 32 bits";
    EXPECT_EQ(trnmpa::RoundToPcm(-3e9f), -32768) << "a positive number in 32 bits";
    EXPECT_EQ(trnmpa::RoundToPcm(6e9f), 32767);
    EXPECT_EQ(trnmpa::RoundToPcm(-1e17f), -32768);
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

TEST_P(KernelFormula, InverseMdctEqualsTheSumForEveryBlockType) {
    constexpr int kCount = 8;
    Values values(4);
    for (int blockType = 0; blockType < 4; ++blockType) {
        std::array<std::array<float, 18>, kCount> lines = {};
        float negated[kCount][18];
        float overlap[18][32];
        for (std::size_t subband = 0; subband < kCount; ++subband) {
            for (std::size_t i = 0; i < 18; ++i) {
                lines[subband][i] = values.Next();
                negated[subband][i] = -lines[subband][i];
                overlap[i][subband] = values.Next();
            }
        }
        float oldOverlap[18][32];
        std::copy_n(overlap[0], 18 * 32, oldOverlap[0]);
        float output[18][32] = {};
        Kernels().inverseMdct(negated[0], blockType, kCount, overlap[0], output[0]);
        for (std::size_t subband = 0; subband < kCount; ++subband) {
            const auto expected = StandardImdct(lines[subband], blockType);
            for (std::size_t i = 0; i < 18; ++i) {
                EXPECT_NEAR(output[i][subband], expected[i] + oldOverlap[i][subband], 0.02)
                    << blockType << ' ' << i;
                EXPECT_NEAR(overlap[i][subband], expected[18 + i], 0.02) << blockType << ' ' << i;
            }
        }
    }
}

TEST_P(KernelFormula, SubbandsOfZerosGiveTheOldOverlap) {
    Values values(5);
    for (int blockType = 0; blockType < 4; ++blockType) {
        const float lines[4][18] = {};
        float overlap[18][32] = {};
        for (auto& row : overlap)
            for (float& value : row)
                value = values.Next();
        float expected[18][32];
        std::copy_n(overlap[0], 18 * 32, expected[0]);
        float output[18][32] = {};
        Kernels().inverseMdct(lines[0], blockType, 4, overlap[0], output[0]);
        for (int i = 0; i < 18; ++i) {
            for (int subband = 0; subband < 32; ++subband) {
                EXPECT_EQ(output[i][subband], subband < 4 ? expected[i][subband] : 0.0f);
                EXPECT_EQ(overlap[i][subband], subband < 4 ? 0.0f : expected[i][subband]);
            }
        }
    }
}

TEST_P(KernelFormula, AliasReductionEqualsTheButterflies) {
    constexpr double kC[8] = {-0.6, -0.535, -0.33, -0.185, -0.095, -0.041, -0.0142, -0.0037};
    Values values(6);
    std::array<float, 576> lines = {};
    for (float& value : lines)
        value = values.Next();
    for (const int boundaries : {0, 1, 7, 31}) {
        std::array<float, 576> reduced = lines;
        Kernels().reduceAliases(reduced.data(), boundaries);
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

TEST_P(KernelFormula, DoublingClampsSymmetrically) {
    std::vector<std::int16_t> samples;
    for (int value = -32768; value <= 32767; ++value)
        samples.push_back(static_cast<std::int16_t>(value));
    std::vector<std::int16_t> doubled(samples.size());
    Kernels().doubleSamples(reinterpret_cast<const std::uint8_t*>(samples.data()), samples.size(),
                            reinterpret_cast<std::uint8_t*>(doubled.data()));
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(doubled[i], std::clamp(2 * samples[i], -32767, 32767)) << samples[i];
}

TEST_P(KernelFormula, MidSideIsUndone) {
    Values values(7);
    float left[576];
    float right[576];
    for (int i = 0; i < 576; ++i) {
        left[i] = values.Next();
        right[i] = values.Next();
    }
    float mid[576];
    float side[576];
    std::copy_n(left, 576, mid);
    std::copy_n(right, 576, side);
    Kernels().undoMidSide(left, right, 575);
    for (int i = 0; i < 575; ++i) {
        ASSERT_FLOAT_EQ(left[i], static_cast<float>((double{mid[i]} + side[i]) / std::sqrt(2.0))) << i;
        ASSERT_FLOAT_EQ(right[i], static_cast<float>((double{mid[i]} - side[i]) / std::sqrt(2.0))) << i;
    }
    EXPECT_EQ(left[575], mid[575]);
    EXPECT_EQ(right[575], side[575]);
}

TEST_P(KernelFormula, SamplesAreCentredAndScaled) {
    std::int32_t samples[3][32];
    std::int32_t centres[32];
    double factors[32];
    for (int i = 0; i < 32; ++i) {
        centres[i] = (1 << i % 16) - 1;
        factors[i] = std::pow(2.0, 15 - i / 3.0) / (centres[i] + 1);
        for (int slot = 0; slot < 3; ++slot)
            samples[slot][i] = (slot + i) * 2 * centres[i] / 34;
    }
    float scaled[3][32];
    Kernels().scaleSamples(samples[0], centres, factors, 3, scaled[0]);
    for (int slot = 0; slot < 3; ++slot)
        for (int i = 0; i < 32; ++i)
            EXPECT_EQ(scaled[slot][i], static_cast<float>((samples[slot][i] - centres[i]) * factors[i]))
                << slot << ' ' << i;
}

TEST(StereoLines, Intensity) {
    float loud[1] = {8.0f};
    float none[1] = {0.0f};
    trnmpa::SpreadIntensity(loud, none, {0.25, 0.75});
    EXPECT_FLOAT_EQ(loud[0], 2.0f);
    EXPECT_FLOAT_EQ(none[0], 6.0f);
}

} // namespace
