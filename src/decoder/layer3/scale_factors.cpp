#include "decoder/layer3/scale_factors.h"

#include "decoder/bit_window.h"
#include "decoder/tables/scale_factor_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr int kMixedLongBandsMpeg1 = 8;
constexpr int kMixedLongBandsLsf = 6;
constexpr int kMixedFirstShortBand = 3;
constexpr int kShortBandsRead = 12;
constexpr int kLongBandsRead = 21;

constexpr int kFieldsPerRefill = 9;
static_assert(kFieldsPerRefill * 5 <= BitWindow::kRefilledBits, "fields have up to 5 bits");

std::uint8_t ReadField(BitWindow& bits, int width) {
    return static_cast<std::uint8_t>(bits.Get(width));
}

void ReadShortBands(BitWindow& bits, int first, int last, int width, ScaleFactors& factors) {
    for (int band = first; band < last; ++band) {
        bits.Refill();
        for (auto& window : factors.shortBand)
            window[band] = ReadField(bits, width);
    }
}

void ReadLongBands(BitWindow& bits, int first, int last, int width, ScaleFactors& factors) {
    bits.Refill();
    for (int band = first; band < last; ++band)
        factors.longBand[band] = ReadField(bits, width);
}

void ClearLastShortBand(ScaleFactors& factors) {
    for (int window = 0; window < 3; ++window) {
        factors.shortBand[window][kShortBandsRead] = 0;
        factors.shortBits[window][kShortBandsRead] = 0;
    }
}

void ClearLastLongBands(ScaleFactors& factors) {
    for (int band = kLongBandsRead; band < 23; ++band) {
        factors.longBand[band] = 0;
        factors.longBits[band] = 0;
    }
}

/// The widths of the four parts and the row of the partition table.
struct LsfPartition {
    int width[4] = {};
    int row = 0;
    bool preflag = false;
};

LsfPartition IntensityRightPartition(int compress) {
    const int x = compress / 2;
    if (x < 180)
        return {{x / 36, x % 36 / 6, x % 36 % 6, 0}, 3};
    if (x < 244) {
        const int y = x - 180;
        return {{y % 64 / 16, y % 16 / 4, y % 4, 0}, 4};
    }
    if (x < 255) {
        const int y = x - 244;
        return {{y / 3, y % 3, 0, 0}, 5};
    }
    return {{}, 5};
}

LsfPartition OrdinaryPartition(int compress) {
    if (compress < 400)
        return {{compress / 16 / 5, compress / 16 % 5, compress % 16 / 4, compress % 4}, 0};
    if (compress < 500) {
        const int y = compress - 400;
        return {{y / 4 / 5, y / 4 % 5, y % 4, 0}, 1};
    }
    const int y = compress - 500;
    return {{y / 3, y % 3, 0, 0}, 2, true};
}

/// The fields of all four parts one after the other, with their widths.
struct LsfFields {
    std::uint8_t value[3 * kShortBandsRead] = {};
    std::uint8_t width[3 * kShortBandsRead] = {};
};

LsfFields ReadLsfFields(BitWindow& bits, const LsfPartition& partition, int kind) {
    LsfFields fields;
    int field = 0;
    for (int part = 0; part < 4; ++part) {
        const int width = partition.width[part];
        for (int i = tables::kLsfPartition[partition.row][kind][part]; i > 0; --i, ++field) {
            if (field % kFieldsPerRefill == 0)
                bits.Refill();
            fields.value[field] = ReadField(bits, width);
            fields.width[field] = static_cast<std::uint8_t>(width);
        }
    }
    return fields;
}

/// Long bands first, then short bands window by window.
void DistributeLsfFields(const LsfFields& fields, int longBands, int firstShortBand, ScaleFactors& factors) {
    std::copy_n(fields.value, longBands, factors.longBand);
    std::copy_n(fields.width, longBands, factors.longBits);
    int field = longBands;
    for (int band = firstShortBand; band < kShortBandsRead; ++band) {
        for (int window = 0; window < 3; ++window, ++field) {
            factors.shortBand[window][band] = fields.value[field];
            factors.shortBits[window][band] = fields.width[field];
        }
    }
}

} // namespace

void ReadScaleFactorsMpeg1(BitReader& bits, const GranuleInfo& info, const std::uint32_t (&selection)[4],
                           int granule, ScaleFactors& factors) {
    const int slen1 = tables::kScaleFactorBits[info.scaleFactorCompress][0];
    const int slen2 = tables::kScaleFactorBits[info.scaleFactorCompress][1];
    BitWindow window(bits);
    if (info.IsShort()) {
        if (info.mixedBlock != 0)
            ReadLongBands(window, 0, kMixedLongBandsMpeg1, slen1, factors);
        ReadShortBands(window, info.mixedBlock != 0 ? kMixedFirstShortBand : 0, 6, slen1, factors);
        ReadShortBands(window, 6, kShortBandsRead, slen2, factors);
        ClearLastShortBand(factors);
    } else {
        constexpr int kGroupStart[5] = {0, 6, 11, 16, kLongBandsRead};
        for (int group = 0; group < 4; ++group)
            if (granule == 0 || selection[group] == 0)
                ReadLongBands(window, kGroupStart[group], kGroupStart[group + 1], group < 2 ? slen1 : slen2,
                              factors);
        ClearLastLongBands(factors);
    }
    bits.SetPosition(window.Position());
}

void ReadScaleFactorsLsf(BitReader& bits, const DecoderHeader& header, int channel, GranuleInfo& info,
                         ScaleFactors& factors) {
    const int compress = static_cast<int>(info.scaleFactorCompress);
    // The mode extension counts here whatever the mode is; wanted.
    const bool isIntensityRight = channel == 1 && (header.modeExtension & 1) != 0;
    const LsfPartition partition =
        isIntensityRight ? IntensityRightPartition(compress) : OrdinaryPartition(compress);
    info.preflag = partition.preflag ? 1 : 0;

    const int kind = info.IsShort() ? (info.mixedBlock != 0 ? 2 : 1) : 0;
    BitWindow window(bits);
    const LsfFields fields = ReadLsfFields(window, partition, kind);
    bits.SetPosition(window.Position());
    if (!info.IsShort()) {
        DistributeLsfFields(fields, kLongBandsRead, kShortBandsRead, factors);
        ClearLastLongBands(factors);
        return;
    }
    const bool isMixed = info.mixedBlock != 0;
    DistributeLsfFields(fields, isMixed ? kMixedLongBandsLsf : 0, isMixed ? kMixedFirstShortBand : 0,
                        factors);
    ClearLastShortBand(factors);
}

} // namespace trnmpa
