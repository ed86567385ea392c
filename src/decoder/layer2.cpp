#include "decoder/layer2.h"

#include "decoder/bit_window.h"
#include "decoder/kernels/kernel_table.h"
#include "decoder/layer2_samples.h"
#include "decoder/tables/layer2_tables.h"

namespace trnmpa {

namespace {

constexpr int kSlotsPerGranule = GranuleSamples::kSlots;
constexpr int kGranules = 12;
constexpr int kScaleFactorParts = 3;
constexpr int kLsfTable = 4;
constexpr int kNoTable = -1;

/// What the body says before the samples.
struct Layer2Frame {
    int channels = 0;
    int bound = 0;        ///< subbands from here on share allocation and samples
    int subbandLimit = 0; ///< subbands from here on are empty
    std::uint8_t quantisationClass[kSubbands][2] = {};
    double factor[kScaleFactorParts][2][kSubbands] = {};

    bool IsShared(int subband) const { return subband >= bound; }
};

using SubbandSlots = float[2][kGranules * kSlotsPerGranule][kSubbands];

int ChooseTable(const DecoderHeader& header) {
    if (header.lowSamplingFrequency != 0)
        return kLsfTable;
    return tables::kAllocationTable[header.channels - 1][header.sampleRateIndex][header.bitRateIndex];
}

void ReadAllocation(BitWindow& bits, int table, Layer2Frame& frame) {
    int subband = 0;
    for (int group = 0; group < 4; ++group) {
        const int width = tables::kAllocationGroupBits[table][group];
        for (int i = 0; i < tables::kAllocationGroupSubbands[table][group]; ++i, ++subband) {
            bits.Refill();
            for (int channel = 0; channel < frame.channels; ++channel) {
                const bool repeated = frame.IsShared(subband) && channel == 1;
                frame.quantisationClass[subband][channel] =
                    repeated ? frame.quantisationClass[subband][0]
                             : tables::kAllocationClass[table][group][bits.Get(width)];
            }
        }
    }
    frame.subbandLimit = subband;
}

/// How many bits of scale factors, 6 each, are read and where under a 64-bit window's top each part's lies,
/// by selection (2.4.2.5).
struct ScaleFactorSelection {
    int bits;
    int shift[kScaleFactorParts];
};
constexpr ScaleFactorSelection kSelection[5] = {
    {18, {58, 52, 46}}, {12, {58, 58, 52}}, {6, {58, 58, 58}}, {12, {58, 52, 52}}, {0, {58, 58, 58}}};

/// The last row of kSelection for a subband without samples, read without a branch: where they are is hard to
/// foresee.
std::uint32_t ReadSelection(BitWindow& bits, int quantisationClass) {
    const bool hasSamples = quantisationClass != 0;
    return bits.Get(2 * hasSamples) | 4u * !hasSamples;
}

void ReadScaleFactorParts(BitWindow& bits, const ScaleFactorSelection& selection, double classFactor,
                          Layer2Frame& frame, int channel, int subband) {
    const std::uint64_t window = bits.Bits();
    bits.Skip(selection.bits);
    for (int part = 0; part < kScaleFactorParts; ++part) {
        const auto index = window >> selection.shift[part] & 63;
        frame.factor[part][channel][subband] = classFactor * tables::kScaleFactor[index];
    }
}

void ReadScaleFactors(BitWindow& bits, Layer2Frame& frame) {
    std::uint32_t selection[kSubbands][2];
    for (int subband = 0; subband < frame.subbandLimit; ++subband) {
        bits.Refill();
        for (int channel = 0; channel < frame.channels; ++channel)
            selection[subband][channel] = ReadSelection(bits, frame.quantisationClass[subband][channel]);
    }
    for (int subband = 0; subband < frame.subbandLimit; ++subband) {
        bits.Refill();
        for (int channel = 0; channel < frame.channels; ++channel)
            ReadScaleFactorParts(bits, kSelection[selection[subband][channel]],
                                 tables::kClassFactor[frame.quantisationClass[subband][channel]], frame,
                                 channel, subband);
    }
}

SampleLayout LayOutSamples(const Layer2Frame& frame) {
    SampleLayout layout;
    for (int subband = 0; subband < frame.subbandLimit; ++subband) {
        if (frame.IsShared(subband)) {
            layout.AddShared(frame.quantisationClass[subband][0], subband);
            continue;
        }
        for (int channel = 0; channel < frame.channels; ++channel)
            layout.Add(frame.quantisationClass[subband][channel], channel, subband);
    }
    return layout;
}

} // namespace

int DecodeLayer2(AMPBitstream& bits, const DecoderHeader& header, int bodyBytes, SynthesisBank& synthesis,
                 std::int16_t* pcm) {
    bits.FillLinear(bodyBytes);
    BitReader reader = bits.Reader();
    Layer2Frame frame;
    frame.channels = header.channels;
    frame.bound = header.JointStereoBound();
    const int table = ChooseTable(header);
    if (table != kNoTable) {
        BitWindow window(reader);
        ReadAllocation(window, table, frame);
        ReadScaleFactors(window, frame);
        reader.SetPosition(window.Position());
    }
    const SampleLayout layout = LayOutSamples(frame);
    GranuleSamples samples = {};
    SubbandSlots slots;
    for (int granule = 0; granule < kGranules; ++granule) {
        ReadSamples(reader, layout, samples);
        const auto& factors = frame.factor[granule / (kGranules / kScaleFactorParts)];
        for (int channel = 0; channel < frame.channels; ++channel)
            Kernels().scaleSamples(samples.value[channel][0], layout.Centres(channel).data(),
                                   factors[channel], kSlotsPerGranule,
                                   slots[channel][granule * kSlotsPerGranule]);
    }
    synthesis.Synthesise(frame.channels, kGranules * kSlotsPerGranule, slots[0][0], false, pcm);
    return kGranules * kSlotsPerGranule * kSubbands * frame.channels;
}

} // namespace trnmpa
