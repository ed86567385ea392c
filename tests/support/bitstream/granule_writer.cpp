#include "support/bitstream/granule_writer.h"

#include "support/bitstream/spectrum_writer.h"
#include "support/model/bands.h"
#include "support/model/tables.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace test::bitstream {

namespace {

constexpr std::size_t kMostGranuleBits = 4095;

int Chosen(int option, int count, Random& random) {
    return option == kAny ? random.Below(count) : option;
}

int DrawTable(const Layer3Options& options, Random& random) {
    if (!options.tables.empty())
        return random.Pick(options.tables);
    int table = 4;
    while (table == 4 || table == 14)
        table = random.Below(32);
    return table;
}

model::GranuleInfo ChooseInfo(const Layer3Options& options, const GranulePlace& place,
                              const BlockChoice& block, Random& random) {
    model::GranuleInfo info;
    info.windowSwitching = block.type != 0;
    info.blockType = block.type;
    info.mixed = block.mixed;
    if (info.windowSwitching) {
        info.tableSelect = {DrawTable(options, random), DrawTable(options, random), 0};
        for (int& gain : info.subblockGain)
            gain = Chosen(options.subblockGain, 8, random);
        info.region0Count = info.ShortBlocks() && !info.mixed ? 8 : 7;
        info.region1Count = 20 - info.region0Count;
    } else {
        for (int& table : info.tableSelect)
            table = DrawTable(options, random);
        info.region0Count = random.Below(16);
        info.region1Count = random.Below(options.regionsPastEnd ? 8 : std::min(8, 21 - info.region0Count));
    }
    info.preflag = !place.header.lsf && !info.ShortBlocks() && Chosen(options.preflag, 2, random) != 0;
    info.scalefacScale = Chosen(options.scalefacScale, 2, random) != 0;
    info.count1Table = Chosen(options.count1Table, 2, random);
    return info;
}

/// Leaves an intensity right channel's upper bands empty, in each window from a band of its own on.
LineMask SilentLines(const GranulePlace& place, const model::GranuleInfo& info, Random& random) {
    LineMask silent{};
    if (place.channel != 1 || !place.header.Intensity() || random.Chance(10))
        return silent;
    std::array<int, 4> firstSilent{}; // windows 0 to 2, long
    const bool shortPartEmpty = random.Chance(20);
    for (std::size_t i = 0; i < 3; ++i)
        firstSilent[i] = shortPartEmpty ? 0 : random.Between(0, 13);
    firstSilent[3] = info.ShortBlocks() ? random.Between(0, 8) : random.Between(0, 22);
    for (const model::Band& band : model::BandsOf(place.header, info)) {
        const auto kind = static_cast<std::size_t>(band.window == model::kLongWindow ? 3 : band.window);
        if (band.number >= firstSilent[kind])
            std::fill_n(silent.begin() + band.first, band.width, true);
    }
    return silent;
}

/// About |x|^(8/3), by operations that every system rounds alike.
double Energy(int value) {
    const double magnitude = std::abs(value);
    const double root = std::sqrt(magnitude);
    const double eighthRoot = std::sqrt(std::sqrt(root));
    return magnitude * magnitude * root * eighthRoot * std::sqrt(std::sqrt(eighthRoot));
}

/// 2^(quarters / 4), rounded alike on every system.
double QuarterPower(int quarters) {
    double power = std::ldexp(1.0, quarters >> 2);
    for (int i = 0; i < (quarters & 3); ++i)
        power *= 1.189207115002721;
    return power;
}

/// Sum of the squares of the requantised lines at global gain 210.
double EnergyOf(const GranulePlace& place, const model::GranuleInfo& info, bool preflag,
                const GranuleContent& content) {
    double energy = 0.0;
    for (const model::Band& band : model::BandsOf(place.header, info)) {
        const auto number = static_cast<std::size_t>(band.number);
        const bool isLong = band.window == model::kLongWindow;
        const auto window = static_cast<std::size_t>(isLong ? 0 : band.window);
        const int preemphasis = isLong && preflag ? model::StandardTables().preemphasis[number] : 0;
        const int factor =
            isLong ? content.scaleFactors.longBand[number] : content.scaleFactors.shortBand[number][window];
        const int quarters = (factor + preemphasis) * (info.scalefacScale ? 4 : 2) +
                             (isLong ? 0 : 8 * info.subblockGain[window]);
        for (int i = 0; i < band.width; ++i)
            energy +=
                Energy(content.lines[static_cast<std::size_t>(band.first + i)]) * QuarterPower(-2 * quarters);
    }
    return energy;
}

/// The largest global gain that keeps the lines at the wanted level, or a little less.
int GainFor(double level, double energy, Random& random) {
    if (energy == 0.0)
        return random.Below(256);
    int gain = 255;
    while (gain > 0 && energy * QuarterPower(2 * (gain - 210)) > level * level)
        --gain;
    return std::max(gain - random.Below(5), 0);
}

} // namespace

GranuleChoice ChooseGranule(const Layer3Options& options, const GranulePlace& place, const BlockChoice& block,
                            std::size_t budgetBits, Random& random) {
    const std::size_t budget = std::min(budgetBits, kMostGranuleBits);
    GranuleChoice choice;
    choice.info = ChooseInfo(options, place, block, random);
    ScaleFactorChoice factors = ChooseScaleFactors(options, place, choice.info, budget, random);
    choice.info.scalefacCompress = factors.compress;
    choice.content.scaleFactors = factors.set;

    const LineMask silent = SilentLines(place, choice.info, random);
    SpectrumChoice spectrum =
        ChooseSpectrum(place.header, choice.info, silent, budget - factors.bits.Bits(), random);
    choice.content.lines = spectrum.lines;
    const double energy =
        EnergyOf(place, choice.info, choice.info.preflag || factors.preflag, choice.content);
    choice.info.globalGain =
        options.globalGain != kAny ? options.globalGain : GainFor(options.level, energy, random);
    choice.bits.Append(factors.bits);
    choice.bits.Append(spectrum.bits);
    choice.info.part23Length = static_cast<int>(choice.bits.Bits());
    return choice;
}

} // namespace test::bitstream
