#include "support/model/hybrid.h"

#include "support/model/tables.h"

#include <cmath>
#include <numbers>

namespace test::model {

namespace {

constexpr double kPi = std::numbers::pi;

/// cos(pi / (2n) (2i + 1 + n/2) (2k + 1)) for i below n, k below n/2.
template <std::size_t N>
std::array<std::array<double, N / 2>, N> MakeCosines() {
    std::array<std::array<double, N / 2>, N> cosines{};
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t k = 0; k < N / 2; ++k)
            cosines[i][k] =
                std::cos(kPi / (2.0 * N) * static_cast<double>((2 * i + 1 + N / 2) * (2 * k + 1)));
    return cosines;
}

std::array<double, 36> MakeWindow(int blockType) {
    std::array<double, 36> window{};
    for (int i = 0; i < 36; ++i) {
        const double wide = std::sin(kPi / 36.0 * (i + 0.5));
        double value = wide;
        if (blockType == 1 && i >= 18)
            value = i < 24 ? 1.0 : i < 30 ? std::sin(kPi / 12.0 * (i - 18 + 0.5)) : 0.0;
        if (blockType == 3 && i < 18)
            value = i < 6 ? 0.0 : i < 12 ? std::sin(kPi / 12.0 * (i - 6 + 0.5)) : 1.0;
        window[static_cast<std::size_t>(i)] = value;
    }
    return window;
}

std::array<double, 36> TransformLong(int blockType, const double* lines) {
    static const auto cosines = MakeCosines<36>();
    static const std::array windows{MakeWindow(0), MakeWindow(1), std::array<double, 36>{}, MakeWindow(3)};
    std::array<double, 36> out{};
    for (std::size_t i = 0; i < 36; ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < 18; ++k)
            sum += lines[k] * cosines[i][k];
        out[i] = sum * windows[static_cast<std::size_t>(blockType)][i];
    }
    return out;
}

std::array<double, 36> TransformShort(const double* lines) {
    static const auto cosines = MakeCosines<12>();
    std::array<double, 36> out{};
    for (std::size_t window = 0; window < 3; ++window) {
        for (std::size_t i = 0; i < 12; ++i) {
            double sum = 0.0;
            for (std::size_t k = 0; k < 6; ++k)
                sum += lines[3 * k + window] * cosines[i][k];
            out[6 + 6 * window + i] += sum * std::sin(kPi / 12.0 * (static_cast<double>(i) + 0.5));
        }
    }
    return out;
}

} // namespace

Spectrum Reorder(const Header& header, const GranuleInfo& granule, const Spectrum& spectrum) {
    Spectrum out = spectrum;
    for (const Band& band : BandsOf(header, granule)) {
        if (band.window == kLongWindow)
            continue;
        const int bandStart = band.first - band.window * band.width;
        for (int i = 0; i < band.width; ++i)
            out[static_cast<std::size_t>(bandStart + 3 * i + band.window)] =
                spectrum[static_cast<std::size_t>(band.first + i)];
    }
    return out;
}

Spectrum ReduceAliases(const GranuleInfo& granule, const Spectrum& spectrum) {
    const Tables& tables = StandardTables();
    const std::size_t boundaries = granule.ShortBlocks() && granule.mixed ? 1 : 31;
    Spectrum out = spectrum;
    for (std::size_t boundary = 1; boundary <= boundaries; ++boundary) {
        for (std::size_t k = 0; k < 8; ++k) {
            double& upper = out[18 * boundary - 1 - k];
            double& lower = out[18 * boundary + k];
            const double u = upper;
            const double l = lower;
            upper = u * tables.aliasCs[k] - l * tables.aliasCa[k];
            lower = l * tables.aliasCs[k] + u * tables.aliasCa[k];
        }
    }
    return out;
}

std::array<double, 36> Transform(int blockType, const double* lines) {
    return blockType == 2 ? TransformShort(lines) : TransformLong(blockType, lines);
}

SubbandSamples Hybrid(const GranuleInfo& granule, const Spectrum& spectrum, Overlap& overlap) {
    SubbandSamples samples{};
    for (std::size_t subband = 0; subband < 32; ++subband) {
        const bool plainWindow = granule.windowSwitching && granule.mixed && subband < 2;
        const auto out = Transform(plainWindow ? 0 : granule.blockType, &spectrum[18 * subband]);
        for (std::size_t slot = 0; slot < 18; ++slot) {
            const double value = out[slot] + overlap[subband][slot];
            samples[slot][subband] = subband % 2 == 1 && slot % 2 == 1 ? -value : value;
            overlap[subband][slot] = out[18 + slot];
        }
    }
    return samples;
}

} // namespace test::model
