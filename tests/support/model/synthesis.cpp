#include "support/model/synthesis.h"

#include "support/model/tables.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace test::model {

namespace {

/// N[i][k] = cos((16 + i) (2k + 1) pi / 64)
std::array<std::array<double, 32>, 64> MakeMatrix() {
    std::array<std::array<double, 32>, 64> matrix{};
    for (std::size_t i = 0; i < 64; ++i)
        for (std::size_t k = 0; k < 32; ++k)
            matrix[i][k] = std::cos(static_cast<double>((16 + i) * (2 * k + 1)) * std::numbers::pi / 64.0);
    return matrix;
}

} // namespace

std::int16_t ToPcm(double sum) {
    const double clipped = std::clamp(sum, -32768.0, 32767.0);
    const auto bits = std::bit_cast<std::uint64_t>(clipped + 6755399441055744.0); // 1.5 * 2^52
    return static_cast<std::int16_t>(bits & 0xFFFFu);
}

void Synthesis::Reset() {
    *this = Synthesis();
}

void Synthesis::StartSlot() {
    newest_ = (newest_ + 15) % 16;
}

std::array<double, 32> Synthesis::Channel(std::size_t channel, std::span<const double, 32> samples) {
    static const auto matrix = MakeMatrix();
    const std::array<double, 512>& window = StandardTables().window;
    auto& vectors = vectors_[channel];
    for (std::size_t i = 0; i < 64; ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < 32; ++k)
            sum += matrix[i][k] * samples[k];
        vectors[newest_][i] = sum;
    }
    // U[64i + j] = V[128i + j], U[64i + 32 + j] = V[128i + 96 + j]; the output is the sum of U times D.
    std::array<double, 32> out{};
    for (std::size_t i = 0; i < 8; ++i) {
        const Vector& even = vectors[(newest_ + 2 * i) % 16];
        const Vector& odd = vectors[(newest_ + 2 * i + 1) % 16];
        for (std::size_t j = 0; j < 32; ++j)
            out[j] += even[j] * window[64 * i + j] + odd[32 + j] * window[64 * i + 32 + j];
    }
    return out;
}

} // namespace test::model
