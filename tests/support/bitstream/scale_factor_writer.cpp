#include "support/bitstream/scale_factor_writer.h"

#include "support/model/tables.h"

#include <algorithm>
#include <stdexcept>

namespace test::bitstream {

namespace {

/// One field of the bit stream and where its value belongs.
struct Slot {
    int* value = nullptr;
    int length = 0;
};

void AddWindows(ScaleFactorSet& set, std::size_t band, int length, std::vector<Slot>& slots) {
    for (int& value : set.shortBand[band])
        slots.push_back({&value, length});
}

/// ISO/IEC 11172-3 clause 2.4.2.7, in the order of scalefac_l and scalefac_s.
std::vector<Slot> Mpeg1Slots(const GranulePlace& place, const model::GranuleInfo& info, int compress,
                             ScaleFactorSet& set) {
    const auto& lengths = model::StandardTables().scaleFactorLengths.at(static_cast<std::size_t>(compress));
    std::vector<Slot> slots;
    if (!info.ShortBlocks()) {
        for (std::size_t band = 0; band < 21; ++band) {
            const std::size_t group = band < 6 ? 0 : band < 11 ? 1 : band < 16 ? 2 : 3;
            if (place.granule == 1 && place.scfsi[group])
                set.longBand[band] = place.first->longBand[band];
            else
                slots.push_back({&set.longBand[band], lengths[band < 11 ? 0 : 1]});
        }
        return slots;
    }
    if (info.mixed)
        for (std::size_t band = 0; band < 8; ++band)
            slots.push_back({&set.longBand[band], lengths[0]});
    for (std::size_t band = info.mixed ? 3 : 0; band < 12; ++band)
        AddWindows(set, band, lengths[band < 6 ? 0 : 1], slots);
    return slots;
}

/// The four field lengths that a value of scalefac_compress stands for.
struct LsfLengths {
    bool valid = false;
    std::array<int, 4> lengths{};
    std::size_t row = 0;
};

using LsfTable = std::array<LsfLengths, 512>;

void Set(LsfTable& table, int compress, std::size_t row, const std::array<int, 4>& lengths) {
    table.at(static_cast<std::size_t>(compress)) = {true, lengths, row};
}

/// ISO/IEC 13818-3 clause 2.4.3.2: scalefac_compress put together from the lengths.
LsfTable MakeOrdinary() {
    LsfTable table;
    for (int a = 0; a < 5; ++a)
        for (int b = 0; b < 5; ++b)
            for (int c = 0; c < 4; ++c) {
                for (int d = 0; d < 4; ++d)
                    Set(table, 16 * (5 * a + b) + 4 * c + d, 0, {a, b, c, d});
                Set(table, 400 + 4 * (5 * a + b) + c, 1, {a, b, c, 0});
            }
    for (int a = 0; a < 4; ++a)
        for (int b = 0; b < 3; ++b)
            Set(table, 500 + 3 * a + b, 2, {a, b, 0, 0});
    return table;
}

/// The same for an intensity right channel; the lowest bit is the intensity scale.
LsfTable MakeIntensity() {
    LsfTable table;
    for (int scale = 0; scale < 2; ++scale) {
        for (int a = 0; a < 5; ++a)
            for (int b = 0; b < 6; ++b)
                for (int c = 0; c < 6; ++c)
                    Set(table, 2 * (36 * a + 6 * b + c) + scale, 3, {a, b, c, 0});
        for (int a = 0; a < 4; ++a)
            for (int b = 0; b < 4; ++b)
                for (int c = 0; c < 4; ++c)
                    Set(table, 2 * (180 + 16 * a + 4 * b + c) + scale, 4, {a, b, c, 0});
        for (int a = 0; a < 4; ++a)
            for (int b = 0; b < 3; ++b)
                if (3 * a + b < 11)
                    Set(table, 2 * (244 + 3 * a + b) + scale, 5, {a, b, 0, 0});
    }
    return table;
}

bool IntensityRight(const GranulePlace& place) {
    return place.channel == 1 && (place.header.modeExtension & 1) != 0;
}

const LsfLengths& LsfLengthsFor(const GranulePlace& place, int compress) {
    static const LsfTable ordinary = MakeOrdinary();
    static const LsfTable intensity = MakeIntensity();
    return (IntensityRight(place) ? intensity : ordinary).at(static_cast<std::size_t>(compress));
}

std::vector<Slot> LsfSlots(const LsfLengths& choice, const model::GranuleInfo& info, ScaleFactorSet& set) {
    const std::size_t kind = !info.ShortBlocks() ? 0 : info.mixed ? 2 : 1;
    const auto& counts = model::StandardTables().partitions[choice.row][kind];
    std::vector<Slot> slots;
    for (std::size_t band = 0; band < (kind == 0 ? 21U : kind == 1 ? 0U : 6U); ++band)
        slots.push_back({&set.longBand[band], 0});
    for (std::size_t band = kind == 1 ? 0 : 3; kind != 0 && band < 12; ++band)
        AddWindows(set, band, 0, slots);
    std::size_t next = 0;
    for (std::size_t part = 0; part < 4; ++part)
        for (int i = 0; i < counts[part]; ++i)
            slots.at(next++).length = choice.lengths[part];
    return slots;
}

/// Draws the row first: the higher ones have few values.
int DrawCompress(const Layer3Options& options, const GranulePlace& place, Random& random) {
    const bool right = place.header.lsf && IntensityRight(place);
    const std::vector<int>& given = right ? options.rightCompress : options.scalefacCompress;
    if (!given.empty())
        return random.Pick(given);
    if (!place.header.lsf)
        return random.Below(16);
    const int row = random.Below(3);
    if (right)
        return row == 0 ? random.Below(360) : row == 1 ? random.Between(360, 487) : random.Between(488, 509);
    return row == 0 ? random.Below(400) : row == 1 ? random.Between(400, 499) : random.Between(500, 511);
}

/// Values that a field may take; in an intensity right channel it is a position.
int ValuesOf(const Layer3Options& options, const GranulePlace& place, int length) {
    const bool position = !place.header.lsf && place.channel == 1 && place.header.Intensity();
    return position && !options.positionsAbove7 ? std::min(1 << length, 8) : 1 << length;
}

ScaleFactorChoice Draw(const Layer3Options& options, const GranulePlace& place,
                       const model::GranuleInfo& info, int compress, Random& random) {
    ScaleFactorChoice choice;
    choice.compress = compress;
    std::vector<Slot> slots;
    if (place.header.lsf) {
        const LsfLengths& lengths = LsfLengthsFor(place, compress);
        if (!lengths.valid)
            throw std::invalid_argument("scalefac_compress without lengths");
        slots = LsfSlots(lengths, info, choice.set);
        choice.preflag = lengths.row == 2;
    } else {
        slots = Mpeg1Slots(place, info, compress, choice.set);
    }
    for (const Slot& slot : slots) {
        *slot.value = random.Below(ValuesOf(options, place, slot.length));
        choice.bits.Write(*slot.value, slot.length);
    }
    return choice;
}

} // namespace

ScaleFactorChoice ChooseScaleFactors(const Layer3Options& options, const GranulePlace& place,
                                     const model::GranuleInfo& info, std::size_t budgetBits, Random& random) {
    ScaleFactorChoice choice = Draw(options, place, info, DrawCompress(options, place, random), random);
    if (choice.bits.Bits() > budgetBits)
        choice = Draw(options, place, info, 0, random);
    return choice;
}

} // namespace test::bitstream
