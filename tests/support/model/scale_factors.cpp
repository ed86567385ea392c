#include "support/model/scale_factors.h"

#include "support/model/tables.h"

namespace test::model {

namespace {

void ReadShort(BitReader& bits, int firstBand, int length1, int length2, ScaleFactors& factors) {
    for (int band = firstBand; band < 12; ++band)
        for (int& factor : factors.shortBand[static_cast<std::size_t>(band)])
            factor = bits.ReadInt(band < 6 ? length1 : length2);
}

/// How the scale factors of a granule are cut into four parts, each with a field length of its own.
struct Partition {
    std::array<int, 4> lengths{};
    std::size_t row = 0;
    bool preflag = false;
};

Partition OrdinaryPartition(int compress) {
    if (compress < 400) {
        const int high = compress / 16;
        const int low = compress % 16;
        return {{high / 5, high % 5, low / 4, low % 4}, 0, false};
    }
    if (compress < 500) {
        const int rest = compress - 400;
        return {{rest / 4 / 5, rest / 4 % 5, rest % 4, 0}, 1, false};
    }
    const int rest = compress - 500;
    return {{rest / 3, rest % 3, 0, 0}, 2, true};
}

Partition IntensityPartition(int compress) {
    const int half = compress / 2;
    if (half < 180)
        return {{half / 36, half % 36 / 6, half % 36 % 6, 0}, 3, false};
    if (half < 244) {
        const int rest = half - 180;
        return {{rest % 64 / 16, rest % 16 / 4, rest % 4, 0}, 4, false};
    }
    if (half < 255) {
        const int rest = half - 244;
        return {{rest / 3, rest % 3, 0, 0}, 5, false};
    }
    return {{0, 0, 0, 0}, 5, false};
}

struct Field {
    int value = 0;
    int length = 0;
};

std::vector<Field> ReadParts(BitReader& bits, const Partition& partition, const std::array<int, 4>& counts) {
    std::vector<Field> fields;
    for (std::size_t part = 0; part < 4; ++part)
        for (int i = 0; i < counts[part]; ++i)
            fields.push_back({bits.ReadInt(partition.lengths[part]), partition.lengths[part]});
    return fields;
}

} // namespace

ScaleFactors ReadScaleFactors(BitReader& bits, const SideInfo& info, int granule, int channel,
                              const ScaleFactors& first) {
    const auto& keep = info.scfsi[static_cast<std::size_t>(channel)];
    const GranuleInfo& own =
        info.granules[static_cast<std::size_t>(granule)][static_cast<std::size_t>(channel)];
    const auto [length1, length2] =
        StandardTables().scaleFactorLengths[static_cast<std::size_t>(own.scalefacCompress)];
    ScaleFactors factors;
    factors.preflag = own.preflag;
    factors.longBand = first.longBand;
    if (own.ShortBlocks()) {
        if (own.mixed)
            for (std::size_t band = 0; band < 8; ++band)
                factors.longBand[band] = bits.ReadInt(length1);
        ReadShort(bits, own.mixed ? 3 : 0, length1, length2, factors);
        return factors;
    }
    constexpr std::array<std::size_t, 5> kGroups{0, 6, 11, 16, 21};
    for (std::size_t group = 0; group < 4; ++group) {
        if (granule == 1 && keep[group])
            continue;
        for (std::size_t band = kGroups[group]; band < kGroups[group + 1]; ++band)
            factors.longBand[band] = bits.ReadInt(group < 2 ? length1 : length2);
    }
    return factors;
}

ScaleFactors ReadScaleFactorsLsf(BitReader& bits, const Header& header, const GranuleInfo& granule,
                                 int channel) {
    // The mode is not looked at: a right channel with this extension is read so in plain stereo as well.
    const bool intensityRight = channel == 1 && (header.modeExtension & 1) != 0;
    const Partition partition = intensityRight ? IntensityPartition(granule.scalefacCompress)
                                               : OrdinaryPartition(granule.scalefacCompress);
    const std::size_t kind = granule.blockType != 2 ? 0 : granule.mixed ? 2 : 1;
    const std::vector<Field> fields =
        ReadParts(bits, partition, StandardTables().partitions[partition.row][kind]);

    ScaleFactors factors;
    factors.preflag = partition.preflag;
    const std::size_t longBands = kind == 0 ? 21 : kind == 1 ? 0 : 6;
    std::size_t next = 0;
    for (std::size_t band = 0; band < longBands; ++band) {
        factors.longBand[band] = fields.at(next).value;
        factors.longLength[band] = fields.at(next++).length;
    }
    if (kind == 0)
        return factors;
    for (std::size_t band = kind == 1 ? 0 : 3; band < 12; ++band)
        for (int& factor : factors.shortBand[band]) {
            factor = fields.at(next).value;
            factors.shortLength[band] = fields.at(next++).length;
        }
    return factors;
}

} // namespace test::model
