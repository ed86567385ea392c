#include "support/bitstream/spectrum_writer.h"

#include "support/model/tables.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace test::bitstream {

namespace {

/// Codes of one pair table by (x, y).
using PairCodes = std::map<std::pair<int, int>, model::PairCode>;

const PairCodes& CodesOf(std::size_t table) {
    static const auto all = [] {
        std::array<PairCodes, 32> codes;
        for (std::size_t i = 0; i < 32; ++i)
            for (const model::PairCode& code : model::StandardTables().pairs[i].codes)
                codes[i][{code.x, code.y}] = code;
        return codes;
    }();
    return all[table];
}

/// Starts of regions 1 and 2: at bands of the region counts, or fixed when the window is switched.
std::array<int, 2> RegionStarts(const model::Header& header, const model::GranuleInfo& info) {
    const model::BandStarts& starts =
        model::StandardTables().bands[static_cast<std::size_t>(header.VersionIndex())]
                                     [static_cast<std::size_t>(header.sampleRateIndex)];
    const auto longStart = [&](int band) {
        return starts.longStarts[static_cast<std::size_t>(std::min(band, 22))];
    };
    if (info.ShortBlocks())
        return {3 * starts.shortStarts[3], 576};
    if (info.windowSwitching)
        return {longStart(8), 576};
    return {longStart(info.region0Count + 1), longStart(info.region0Count + info.region1Count + 2)};
}

class LineDrawer {
public:
    LineDrawer(const model::PairTable& table, bool wide, Random& random)
        : linbits_(table.linbits), wide_(wide), random_(random) {
        for (const model::PairCode& code : table.codes)
            largest_ = std::max(largest_, code.x);
    }

    int Draw() {
        int magnitude = wide_ || random_.Chance(10) ? random_.Between(0, largest_)
                                                    : std::min(random_.Below(4) * random_.Below(3), largest_);
        if (magnitude == 15 && linbits_ > 0)
            magnitude += random_.Below(1 << random_.Between(0, linbits_));
        return random_.Chance(50) ? -magnitude : magnitude;
    }

private:
    int linbits_;
    bool wide_;
    Random& random_;
    int largest_ = 0;
};

void WriteTail(int value, int linbits, BitWriter& bits) {
    const int magnitude = std::abs(value);
    if (linbits > 0 && magnitude >= 15)
        bits.Write(magnitude - 15, linbits);
    if (magnitude != 0)
        bits.WriteBit(value < 0);
}

BitWriter PairBits(std::size_t table, int x, int y) {
    const int linbits = model::StandardTables().pairs[table].linbits;
    const model::PairCode& code = CodesOf(table).at({std::min(std::abs(x), 15), std::min(std::abs(y), 15)});
    BitWriter bits;
    bits.Write(code.code, code.length);
    WriteTail(x, linbits, bits);
    WriteTail(y, linbits, bits);
    return bits;
}

BitWriter QuadBits(std::size_t table, const int* values) {
    BitWriter bits;
    for (const model::QuadCode& code : model::StandardTables().quads[table]) {
        if (!std::equal(code.values.begin(), code.values.end(), values,
                        [](int magnitude, int value) { return magnitude == std::abs(value); }))
            continue;
        bits.Write(code.code, code.length);
        for (std::size_t i = 0; i < 4; ++i)
            if (values[i] != 0)
                bits.WriteBit(values[i] < 0);
    }
    return bits;
}

/// Lines that the bands of the granule reach.
int CodedLines(const model::Header& header, const model::GranuleInfo& info) {
    const bool mixedAt8kHz = header.sampleRate == 8000 && info.ShortBlocks() && info.mixed;
    return mixedAt8kHz ? 540 : 576;
}

} // namespace

SpectrumChoice ChooseSpectrum(const model::Header& header, model::GranuleInfo& info, const LineMask& silent,
                              std::size_t budgetBits, Random& random) {
    const std::array<int, 2> regions = RegionStarts(header, info);
    const bool wide = random.Chance(50);
    const int lineCount = CodedLines(header, info);
    const int bigTarget = random.Chance(20) ? lineCount / 2 : random.Between(0, lineCount / 2);
    SpectrumChoice choice;
    info.bigValues = 0;
    while (info.bigValues < bigTarget) {
        const auto line = static_cast<std::size_t>(2 * info.bigValues);
        const int region = 2 * info.bigValues < regions[0] ? 0 : 2 * info.bigValues < regions[1] ? 1 : 2;
        const auto table = static_cast<std::size_t>(info.tableSelect[static_cast<std::size_t>(region)]);
        LineDrawer drawer(model::StandardTables().pairs[table], wide, random);
        const int x = silent[line] ? 0 : drawer.Draw();
        const int y = silent[line + 1] ? 0 : drawer.Draw();
        const BitWriter bits = PairBits(table, x, y);
        if (choice.bits.Bits() + bits.Bits() > budgetBits)
            break;
        choice.bits.Append(bits);
        choice.lines[line] = x;
        choice.lines[line + 1] = y;
        ++info.bigValues;
    }
    const int quadTarget = random.Between(0, (lineCount - 2 * info.bigValues) / 4);
    for (int quad = 0; quad < quadTarget; ++quad) {
        const auto line = static_cast<std::size_t>(2 * info.bigValues + 4 * quad);
        std::array<int, 4> values{};
        for (std::size_t i = 0; i < 4; ++i)
            values[i] = silent[line + i] ? 0 : random.Between(-1, 1);
        const BitWriter bits = QuadBits(static_cast<std::size_t>(info.count1Table), values.data());
        if (choice.bits.Bits() + bits.Bits() > budgetBits)
            break;
        choice.bits.Append(bits);
        std::copy(values.begin(), values.end(), choice.lines.begin() + static_cast<std::ptrdiff_t>(line));
    }
    return choice;
}

} // namespace test::bitstream
