// Every set of kernels against the plain one, bit for bit, on data that is aligned for vectors and on data
// one value behind that.

#include "decoder/each_kernel_set.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

namespace {

using trnmpa::PlainKernels;

/// Finite values of every size that no kernel turns into infinities.
class HostileValues {
public:
    explicit HostileValues(std::uint32_t seed) : engine_(seed) {}

    void Fill(float* values, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            values[i] = Next();
    }

private:
    float Next() {
        const auto bits = static_cast<std::uint32_t>(engine_());
        switch (kind_++ / 977 % 4) {
        case 0: // as music has them
            return static_cast<float>(static_cast<std::int32_t>(bits)) / 65536.0f;
        case 1: // halves, for the rounding of ties
            return static_cast<float>(static_cast<std::int32_t>(bits) >> 20) / 2.0f;
        case 2: // zeros of both signs and denormal numbers
            return std::bit_cast<float>(bits & 0x80FFFFFFu) * static_cast<float>(bits >> 24 & 1u);
        default: // any exponent up to 2^100
            return std::bit_cast<float>((bits & 0x807FFFFFu) | (bits >> 8) % 228u << 23);
        }
    }

    std::mt19937 engine_;
    std::size_t kind_ = 0;
};

template <typename T>
void ExpectSameBits(const std::vector<T>& found, const std::vector<T>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    const auto bits = [](T value) {
        if constexpr (std::is_same_v<T, float>)
            return std::bit_cast<std::uint32_t>(value);
        else
            return value;
    };
    for (std::size_t i = 0; i < found.size(); ++i)
        ASSERT_EQ(bits(found[i]), bits(expected[i])) << i << ": " << found[i] << " for " << expected[i];
}

class KernelEquality : public test::EachKernelSet {};

INSTANTIATE_TEST_SUITE_P(Sets, KernelEquality, testing::ValuesIn(test::kEachFastKernelSet),
                         test::KernelSetName);

constexpr int kShifts[] = {0, 1};

/// Two channels' memory as one vector, so that what a kernel should not have touched is compared, too.
struct Memory {
    explicit Memory(HostileValues& values) {
        for (trnmpa::SynthesisMemory& channel : channels) {
            values.Fill(channel.row[0], std::size_t{32} * trnmpa::SynthesisMemory::kRows);
            values.Fill(channel.centre, std::size(channel.centre));
        }
    }

    std::vector<float> All() const {
        std::vector<float> all;
        for (const trnmpa::SynthesisMemory& channel : channels) {
            all.insert(all.end(), channel.row[0], channel.row[0] + 32 * trnmpa::SynthesisMemory::kRows);
            all.insert(all.end(), std::begin(channel.centre), std::end(channel.centre));
        }
        return all;
    }

    /// Row `slot` of each channel, moved by `shift` values.
    std::array<trnmpa::SynthesisRows, 2> At(int slot, int shift) {
        const auto rows = [&](trnmpa::SynthesisMemory& channel) {
            const trnmpa::SynthesisRows aligned = channel.At(slot);
            return trnmpa::SynthesisRows{aligned.row + shift, aligned.centre + shift};
        };
        return {rows(channels[0]), rows(channels[1])};
    }

    trnmpa::SynthesisMemory channels[2];
};

void ExpectSameTransform(const trnmpa::KernelTable& kernels, int count, int channels, int shift,
                         HostileValues& values) {
    std::vector<float> slots(static_cast<std::size_t>(32 * channels * count + shift));
    values.Fill(slots.data(), slots.size());
    Memory found(values);
    Memory expected = found;
    const int first = trnmpa::SynthesisMemory::kRows - count - shift;
    const bool inverts = count % 2 == 0 && count % 4 != 0;
    kernels.transformSlots(slots.data() + shift, channels, count, inverts, found.At(first, shift).data());
    PlainKernels().transformSlots(slots.data() + shift, channels, count, inverts,
                                  expected.At(first, shift).data());
    ExpectSameBits(found.All(), expected.All());
}

TEST_P(KernelEquality, TransformSlots) {
    HostileValues values(11);
    for (int count = 1; count <= trnmpa::kMaximumSlots; ++count) {
        for (const int channels : {1, 2}) {
            for (const int shift : kShifts) {
                SCOPED_TRACE(testing::Message()
                             << count << " slots, " << channels << " channels, moved by " << shift);
                ASSERT_NO_FATAL_FAILURE(ExpectSameTransform(Kernels(), count, channels, shift, values));
            }
        }
    }
}

void ExpectSameWindow(const trnmpa::KernelTable& kernels, int count, int channels, int shift,
                      HostileValues& values) {
    constexpr std::int16_t kUntouched = 12345;
    Memory memory(values);
    const int first = count % 2 != 0 ? trnmpa::kPastSlots : trnmpa::SynthesisMemory::kRows - count - shift;
    const auto from = memory.At(first, shift);
    std::vector<std::int16_t> found(static_cast<std::size_t>(32 * channels * count + 40), kUntouched);
    std::vector<std::int16_t> expected = found;
    kernels.windowSlots(from.data(), channels, count, found.data() + shift);
    PlainKernels().windowSlots(from.data(), channels, count, expected.data() + shift);
    ExpectSameBits(found, expected);
}

TEST_P(KernelEquality, WindowSlots) {
    HostileValues values(12);
    for (int count = 1; count <= trnmpa::kMaximumSlots; ++count) {
        for (const int channels : {1, 2}) {
            for (const int shift : kShifts) {
                SCOPED_TRACE(testing::Message()
                             << count << " slots, " << channels << " channels, moved by " << shift);
                ASSERT_NO_FATAL_FAILURE(ExpectSameWindow(Kernels(), count, channels, shift, values));
            }
        }
    }
}

/// Finite values as above with what is none among them: one NaN, so that no sum has to choose, and
/// infinities.
std::vector<float> WithNonFinite(HostileValues& values, std::size_t count, int seed) {
    std::vector<float> result(count);
    values.Fill(result.data(), count);
    std::mt19937 engine(static_cast<std::mt19937::result_type>(seed));
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity})
        for (int i = 0; i < 40 && count > 0; ++i)
            result[engine() % count] = value;
    return result;
}

TEST_P(KernelEquality, UndoMidSide) {
    HostileValues values(16);
    for (const int shift : kShifts) {
        for (std::size_t count = 0; count <= 576; ++count) {
            std::vector<float> left = WithNonFinite(values, 577, 17);
            std::vector<float> right = WithNonFinite(values, 577, 18);
            std::vector<float> plainLeft = left;
            std::vector<float> plainRight = right;
            Kernels().undoMidSide(left.data() + shift, right.data() + shift, count);
            PlainKernels().undoMidSide(plainLeft.data() + shift, plainRight.data() + shift, count);
            SCOPED_TRACE(testing::Message() << count << " lines, moved by " << shift);
            ASSERT_NO_FATAL_FAILURE(ExpectSameBits(left, plainLeft));
            ASSERT_NO_FATAL_FAILURE(ExpectSameBits(right, plainRight));
        }
    }
}

TEST_P(KernelEquality, ScaleSamples) {
    HostileValues values(19);
    std::mt19937 engine(20);
    for (int round = 0; round < 2000; ++round) {
        const int slots = round % 13;
        const int shift = round / 13 % 2;
        std::vector<std::int32_t> samples(static_cast<std::size_t>(32 * slots + shift));
        for (std::int32_t& sample : samples)
            sample = static_cast<std::int32_t>(engine() >> (round % 2 != 0 ? 16 : 2));
        std::vector<std::int32_t> centres(33);
        for (std::int32_t& centre : centres)
            centre = (1 << engine() % 16) - 1;
        const std::vector<float> drawn = WithNonFinite(values, round % 3 == 0 ? 33 : 320, round);
        const std::vector<double> factors(drawn.begin(), drawn.begin() + 33);
        std::vector<float> found(static_cast<std::size_t>(32 * slots + 8), 5.0f);
        std::vector<float> expected = found;
        Kernels().scaleSamples(samples.data() + shift, centres.data() + shift, factors.data() + shift, slots,
                               found.data() + shift);
        PlainKernels().scaleSamples(samples.data() + shift, centres.data() + shift, factors.data() + shift,
                                    slots, expected.data() + shift);
        ASSERT_NO_FATAL_FAILURE(ExpectSameBits(found, expected));
    }
}

TEST_P(KernelEquality, ReduceAliases) {
    HostileValues values(13);
    for (const int shift : kShifts) {
        for (int boundaries = 0; boundaries < 32; ++boundaries) {
            std::vector<float> found(577);
            values.Fill(found.data(), found.size());
            std::vector<float> expected = found;
            Kernels().reduceAliases(found.data() + shift, boundaries);
            PlainKernels().reduceAliases(expected.data() + shift, boundaries);
            SCOPED_TRACE(testing::Message() << boundaries << " boundaries, moved by " << shift);
            ASSERT_NO_FATAL_FAILURE(ExpectSameBits(found, expected));
        }
    }
}

TEST_P(KernelEquality, InverseMdct) {
    HostileValues values(14);
    for (int round = 0; round < 80; ++round) {
        for (int count = 0; count <= trnmpa::kSubbands; count += trnmpa::kSubbandGroup) {
            std::vector<float> lines(577);
            std::vector<float> overlap(577);
            std::vector<float> slots(577);
            for (auto* each : {&lines, &overlap, &slots})
                values.Fill(each->data(), each->size());
            std::vector<float> plainOverlap = overlap;
            std::vector<float> plainSlots = slots;
            const int blockType = round % 4;
            const int shift = round / 4 % 2;
            Kernels().inverseMdct(lines.data() + shift, blockType, count, overlap.data() + shift,
                                  slots.data() + shift);
            PlainKernels().inverseMdct(lines.data() + shift, blockType, count, plainOverlap.data() + shift,
                                       plainSlots.data() + shift);
            SCOPED_TRACE(testing::Message()
                         << count << " subbands, block type " << blockType << ", moved by " << shift);
            ASSERT_NO_FATAL_FAILURE(ExpectSameBits(slots, plainSlots));
            ASSERT_NO_FATAL_FAILURE(ExpectSameBits(overlap, plainOverlap));
        }
    }
}

TEST_P(KernelEquality, DoubleSamples) {
    std::mt19937 engine(15);
    for (std::size_t count = 0; count < 100; ++count) {
        std::vector<std::uint8_t> samples(2 * count + 3);
        for (std::uint8_t& byte : samples)
            byte = static_cast<std::uint8_t>(engine());
        // In place, at an odd address; the bytes around them stay.
        std::vector<std::uint8_t> expected = samples;
        Kernels().doubleSamples(samples.data() + 1, count, samples.data() + 1);
        PlainKernels().doubleSamples(expected.data() + 1, count, expected.data() + 1);
        ASSERT_NO_FATAL_FAILURE(ExpectSameBits(samples, expected));
    }
}

} // namespace
