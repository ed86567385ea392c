#include "support/model/stereo.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace test::model {

namespace {

bool IsZero(const Spectrum& spectrum, const Band& band) {
    const auto first = spectrum.begin() + band.first;
    return std::all_of(first, first + band.width, [](double value) { return value == 0.0; });
}

bool IsLast(const Band& band) {
    return band.number == (band.window == kLongWindow ? 21 : 12);
}

/// The position that the band's own scale factor says; a value that cannot be one says none.
int OwnPosition(const Header& header, const ScaleFactors& factors, const Band& band) {
    const auto number = static_cast<std::size_t>(band.number);
    const bool isLong = band.window == kLongWindow;
    const int factor =
        isLong ? factors.longBand[number] : factors.shortBand[number][static_cast<std::size_t>(band.window)];
    const int length = isLong ? factors.longLength[number] : factors.shortLength[number];
    if (!header.lsf)
        return std::min(factor, kNoIntensity);
    const bool illegal = length > 0 && factor == (1 << length) - 1;
    return illegal ? kNoIntensity : factor;
}

/// One window's bands (or the long ones) from the top down to the last that is not zero.
/// Returns whether all of them are zero.
bool MarkZeroPart(const Header& header, const ScaleFactors& factors, const Spectrum& spectrum,
                  const std::vector<Band>& bands, std::array<int, kLines>& positions) {
    for (std::size_t i = bands.size(); i-- > 0;) {
        const Band& band = bands[i];
        if (!IsZero(spectrum, band))
            return false;
        int position = 0;
        if (!IsLast(band))
            position = OwnPosition(header, factors, band);
        else if (IsZero(spectrum, bands[i - 1]))
            position = OwnPosition(header, factors, bands[i - 1]);
        else
            position = header.lsf ? 0 : 3;
        std::fill_n(positions.begin() + band.first, band.width, position);
    }
    return true;
}

/// Factors of the left channel's value for left and right.
std::pair<double, double> Ratios(const Header& header, const GranuleInfo& right, int position) {
    if (!header.lsf) {
        if (position == 6)
            return {1.0, 0.0};
        const double k = std::tan(position * std::numbers::pi / 12.0);
        return {k / (1.0 + k), 1.0 / (1.0 + k)};
    }
    const bool coarse = (right.scalefacCompress & 1) != 0;
    const double ratio = std::exp2(-((position + 1) / 2) / (coarse ? 2.0 : 4.0));
    if (position == 0)
        return {1.0, 1.0};
    return position % 2 == 1 ? std::pair{ratio, 1.0} : std::pair{1.0, ratio};
}

void MidSide(double& left, double& right) {
    const double mid = left;
    const double side = right;
    left = (mid + side) * (std::numbers::sqrt2 / 2.0);
    right = (mid - side) * (std::numbers::sqrt2 / 2.0);
}

} // namespace

std::array<int, kLines> IntensityPositions(const Header& header, const GranuleInfo& right,
                                           const ScaleFactors& factors, const Spectrum& spectrum) {
    std::array<int, kLines> positions{};
    positions.fill(kNoIntensity);
    std::vector<Band> longBands;
    std::array<std::vector<Band>, 3> windows;
    for (const Band& band : BandsOf(header, right)) {
        if (band.window == kLongWindow)
            longBands.push_back(band);
        else
            windows[static_cast<std::size_t>(band.window)].push_back(band);
    }
    // The long bands of a mixed block lie below all three windows.
    bool shortPartZero = true;
    for (const std::vector<Band>& window : windows)
        shortPartZero &= MarkZeroPart(header, factors, spectrum, window, positions);
    if (shortPartZero)
        MarkZeroPart(header, factors, spectrum, longBands, positions);
    return positions;
}

void ProcessStereo(const Header& header, const GranuleInfo& rightInfo, const ScaleFactors& rightFactors,
                   Spectrum& left, Spectrum& right) {
    std::array<int, kLines> positions{};
    positions.fill(kNoIntensity);
    if (header.Intensity())
        positions = IntensityPositions(header, rightInfo, rightFactors, right);
    for (std::size_t line = 0; line < positions.size(); ++line) {
        if (positions[line] != kNoIntensity) {
            const auto [toLeft, toRight] = Ratios(header, rightInfo, positions[line]);
            const double value = left[line];
            left[line] = value * toLeft;
            right[line] = value * toRight;
        } else if (header.MidSide()) {
            MidSide(left[line], right[line]);
        }
    }
}

} // namespace test::model
