#include "decoder/layer2.h"

#include "decoder/tables/layer2_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr int kSubbands = 32;
constexpr int kGranules = 12;
constexpr int kSlotsPerGranule = 3;
constexpr int kScaleFactorParts = 3;
constexpr int kLsfTable = 4;
constexpr int kNoTable = -1;

/// What the body says before the samples.
struct Layer2Frame {
    int channels = 0;
    int bound = 0;        ///< subbands from here on share allocation and samples
    int subbandLimit = 0; ///< subbands from here on are empty
    std::uint8_t quantisationClass[kSubbands][2] = {};
    double factor[kSubbands][2][kScaleFactorParts] = {};

    bool IsShared(int subband) const { return subband >= bound; }
};

using SubbandSlots = float[2][kGranules * kSlotsPerGranule][kSubbands];

int ChooseTable(const DecoderHeader& header) {
    if (header.lowSamplingFrequency != 0)
        return kLsfTable;
    return tables::kAllocationTable[header.channels - 1][header.sampleRateIndex][header.bitRateIndex];
}

void ReadAllocation(AMPBitstream& bits, int table, Layer2Frame& frame) {
    int subband = 0;
    for (int group = 0; group < 4; ++group) {
        const int width = tables::kAllocationGroupBits[table][group];
        for (int i = 0; i < tables::kAllocationGroupSubbands[table][group]; ++i, ++subband) {
            for (int channel = 0; channel < frame.channels; ++channel) {
                const bool repeated = frame.IsShared(subband) && channel == 1;
                frame.quantisationClass[subband][channel] =
                    repeated ? frame.quantisationClass[subband][0]
                             : tables::kAllocationClass[table][group][bits.GetLinear(width)];
            }
        }
    }
    frame.subbandLimit = subband;
    frame.bound = std::min(frame.bound, subband);
}

/// Reads the scale factors of one subband and channel by their selection (2.4.2.5).
void ReadScaleFactorParts(AMPBitstream& bits, std::uint32_t selection, double classFactor,
                          double (&factor)[kScaleFactorParts]) {
    const auto read = [&] { return classFactor * tables::kScaleFactor[bits.GetLinear(6)]; };
    factor[0] = read();
    switch (selection) {
    case 0:
        factor[1] = read();
        factor[2] = read();
        break;
    case 1:
        factor[1] = factor[0];
        factor[2] = read();
        break;
    case 2:
        factor[1] = factor[0];
        factor[2] = factor[0];
        break;
    default:
        factor[1] = read();
        factor[2] = factor[1];
        break;
    }
}

void ReadScaleFactors(AMPBitstream& bits, Layer2Frame& frame) {
    std::uint32_t selection[kSubbands][2] = {};
    for (int subband = 0; subband < frame.subbandLimit; ++subband)
        for (int channel = 0; channel < frame.channels; ++channel)
            if (frame.quantisationClass[subband][channel] != 0)
                selection[subband][channel] = bits.GetLinear(2);
    for (int subband = 0; subband < frame.subbandLimit; ++subband) {
        for (int channel = 0; channel < frame.channels; ++channel) {
            const int quantisationClass = frame.quantisationClass[subband][channel];
            if (quantisationClass != 0)
                ReadScaleFactorParts(bits, selection[subband][channel],
                                     tables::kClassFactor[quantisationClass], frame.factor[subband][channel]);
        }
    }
}

constexpr bool IsGrouped(int quantisationClass) {
    return quantisationClass == 1 || quantisationClass == 2 || quantisationClass == 4;
}

/// Reads the three samples of one subband and granule, centred on zero.
void ReadSamples(AMPBitstream& bits, int quantisationClass, std::int32_t (&samples)[kSlotsPerGranule]) {
    const int codeBits = tables::kClassCodeBits[quantisationClass];
    const std::int32_t levels = tables::kClassLevels[quantisationClass];
    const std::int32_t centre = (levels - 1) / 2;
    if (!IsGrouped(quantisationClass)) {
        for (std::int32_t& sample : samples)
            sample = static_cast<std::int32_t>(bits.GetLinear(codeBits)) - centre;
        return;
    }
    auto code = static_cast<std::int32_t>(bits.GetLinear(codeBits));
    const bool isLastCode = code == (1 << codeBits) - 1;
    for (std::int32_t& sample : samples) {
        sample = isLastCode ? 0 : code % levels - centre;
        code /= levels;
    }
}

void ReadGranule(AMPBitstream& bits, const Layer2Frame& frame, int granule, SubbandSlots& slots) {
    const int part = granule / (kGranules / kScaleFactorParts);
    for (int subband = 0; subband < frame.subbandLimit; ++subband) {
        std::int32_t samples[kSlotsPerGranule] = {};
        for (int channel = 0; channel < frame.channels; ++channel) {
            const int quantisationClass = frame.quantisationClass[subband][channel];
            if (quantisationClass == 0)
                continue;
            if (channel == 0 || !frame.IsShared(subband))
                ReadSamples(bits, quantisationClass, samples);
            const double factor = frame.factor[subband][channel][part];
            for (int i = 0; i < kSlotsPerGranule; ++i)
                slots[channel][granule * kSlotsPerGranule + i][subband] =
                    static_cast<float>(samples[i] * factor);
        }
    }
}

} // namespace

int DecodeLayer2(AMPBitstream& bits, const DecoderHeader& header, int bodyBytes, SynthesisBank& synthesis,
                 std::int16_t* pcm) {
    bits.FillLinear(bodyBytes);
    Layer2Frame frame;
    frame.channels = header.channels;
    frame.bound = header.JointStereoBound();
    const int table = ChooseTable(header);
    if (table != kNoTable) {
        ReadAllocation(bits, table, frame);
        ReadScaleFactors(bits, frame);
    }
    SubbandSlots slots = {};
    for (int granule = 0; granule < kGranules; ++granule)
        ReadGranule(bits, frame, granule, slots);
    synthesis.Synthesise(frame.channels, kGranules * kSlotsPerGranule, slots[0][0], false, pcm);
    return kGranules * kSlotsPerGranule * kSubbands * frame.channels;
}

} // namespace trnmpa
