#include "decoder/layer3/scale_factors.h"

#include "decoder/tables/scale_factor_tables.h"

namespace trnmpa {

namespace {

constexpr int kMixedLongBandsMpeg1 = 8;
constexpr int kMixedLongBandsLsf = 6;
constexpr int kMixedFirstShortBand = 3;
constexpr int kShortBandsRead = 12;
constexpr int kLongBandsRead = 21;

std::uint8_t ReadField(AMPBitstream& bits, int width) {
    return width > 0 ? static_cast<std::uint8_t>(bits.Get(width)) : std::uint8_t{0};
}

void ReadShortBands(AMPBitstream& bits, int first, int last, int width, ScaleFactors& factors) {
    for (int band = first; band < last; ++band)
        for (auto& window : factors.shortBand)
            window[band] = ReadField(bits, width);
}

void ReadLongBands(AMPBitstream& bits, int first, int last, int width, ScaleFactors& factors) {
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

/// Hands out the fields of the four parts one after the other.
class LsfFieldReader {
public:
    LsfFieldReader(AMPBitstream& bits, const LsfPartition& partition, int kind)
        : bits_(bits), partition_(partition), counts_(tables::kLsfPartition[partition.row][kind]) {}

    void ReadNext(std::uint8_t& value, std::uint8_t& width) {
        while (part_ < 3 && readInPart_ == counts_[part_]) {
            ++part_;
            readInPart_ = 0;
        }
        ++readInPart_;
        width = static_cast<std::uint8_t>(partition_.width[part_]);
        value = ReadField(bits_, width);
    }

private:
    AMPBitstream& bits_;
    const LsfPartition& partition_;
    const std::uint8_t* counts_;
    int part_ = 0;
    int readInPart_ = 0;
};

} // namespace

void ReadScaleFactorsMpeg1(AMPBitstream& bits, const GranuleInfo& info, const std::uint32_t (&selection)[4],
                           int granule, ScaleFactors& factors) {
    const int slen1 = tables::kScaleFactorBits[info.scaleFactorCompress][0];
    const int slen2 = tables::kScaleFactorBits[info.scaleFactorCompress][1];
    if (info.IsShort()) {
        if (info.mixedBlock != 0)
            ReadLongBands(bits, 0, kMixedLongBandsMpeg1, slen1, factors);
        ReadShortBands(bits, info.mixedBlock != 0 ? kMixedFirstShortBand : 0, 6, slen1, factors);
        ReadShortBands(bits, 6, kShortBandsRead, slen2, factors);
        ClearLastShortBand(factors);
        return;
    }
    constexpr int kGroupStart[5] = {0, 6, 11, 16, kLongBandsRead};
    for (int group = 0; group < 4; ++group)
        if (granule == 0 || selection[group] == 0)
            ReadLongBands(bits, kGroupStart[group], kGroupStart[group + 1], group < 2 ? slen1 : slen2,
                          factors);
    ClearLastLongBands(factors);
}

void ReadScaleFactorsLsf(AMPBitstream& bits, const DecoderHeader& header, int channel, GranuleInfo& info,
                         ScaleFactors& factors) {
    const int compress = static_cast<int>(info.scaleFactorCompress);
    // The mode extension counts here whatever the mode is; wanted.
    const bool isIntensityRight = channel == 1 && (header.modeExtension & 1) != 0;
    const LsfPartition partition =
        isIntensityRight ? IntensityRightPartition(compress) : OrdinaryPartition(compress);
    info.preflag = partition.preflag ? 1 : 0;

    const int kind = info.IsShort() ? (info.mixedBlock != 0 ? 2 : 1) : 0;
    LsfFieldReader reader(bits, partition, kind);
    const int longBands = info.IsMixedShort() ? kMixedLongBandsLsf : info.IsShort() ? 0 : kLongBandsRead;
    for (int band = 0; band < longBands; ++band)
        reader.ReadNext(factors.longBand[band], factors.longBits[band]);
    if (!info.IsShort()) {
        ClearLastLongBands(factors);
        return;
    }
    for (int band = info.mixedBlock != 0 ? kMixedFirstShortBand : 0; band < kShortBandsRead; ++band)
        for (int window = 0; window < 3; ++window)
            reader.ReadNext(factors.shortBand[window][band], factors.shortBits[window][band]);
    ClearLastShortBand(factors);
}

} // namespace trnmpa
