#include "support/model/requantise.h"

#include "support/model/tables.h"

#include <algorithm>
#include <cmath>

namespace test::model {

namespace {

constexpr int kLargestGainIndex = 326;

int Offset(const GranuleInfo& granule, const ScaleFactors& factors, const Band& band) {
    const int shift = granule.scalefacScale ? 2 : 1;
    const auto number = static_cast<std::size_t>(band.number);
    if (band.window == kLongWindow) {
        const int preemphasis = factors.preflag ? StandardTables().preemphasis[number] : 0;
        return (factors.longBand[number] + preemphasis) << shift;
    }
    const auto window = static_cast<std::size_t>(band.window);
    return (factors.shortBand[number][window] << shift) + 8 * granule.subblockGain[window];
}

/// The wide scale factors of an intensity right channel can ask for less than the smallest gain there is.
double Gain(int index) {
    return 16384.0 * std::exp2(-std::min(index, kLargestGainIndex) / 4.0);
}

double Power(int value) {
    const double magnitude = std::abs(value);
    return std::copysign(magnitude * std::cbrt(magnitude), value);
}

} // namespace

Spectrum Requantise(const Header& header, const GranuleInfo& granule, const ScaleFactors& factors,
                    const QuantisedLines& lines) {
    Spectrum spectrum{};
    for (const Band& band : BandsOf(header, granule)) {
        const double gain = Gain(210 - granule.globalGain + Offset(granule, factors, band));
        for (int line = band.first; line < band.first + band.width; ++line) {
            const auto at = static_cast<std::size_t>(line);
            spectrum[at] = gain * Power(lines.values[at]);
        }
    }
    return spectrum;
}

} // namespace test::model
