#include "decoder/layer1.h"

#include "decoder/tables/layer2_tables.h"

namespace trnmpa {

namespace {

constexpr int kSubbands = 32;
constexpr int kSlotsPerFrame = 12;

struct Layer1Allocation {
    std::uint8_t allocation[kSubbands][2] = {};
    double factor[kSubbands][2] = {};
};

void ReadAllocation(BitReader& bits, int channels, int bound, Layer1Allocation& frame) {
    for (int subband = 0; subband < kSubbands; ++subband) {
        for (int channel = 0; channel < channels; ++channel) {
            const bool shared = subband >= bound && channel == 1;
            frame.allocation[subband][channel] =
                shared ? frame.allocation[subband][0] : static_cast<std::uint8_t>(bits.Get(4));
        }
    }
}

// Allocation a takes the level count of layer II's class a, not 2^(a + 1) - 1; wanted.
void ReadScaleFactors(BitReader& bits, int channels, Layer1Allocation& frame) {
    for (int subband = 0; subband < kSubbands; ++subband) {
        for (int channel = 0; channel < channels; ++channel) {
            const int allocation = frame.allocation[subband][channel];
            if (allocation != 0)
                frame.factor[subband][channel] =
                    tables::kClassFactor[allocation] * tables::kScaleFactor[bits.Get(6)];
        }
    }
}

void ReadSlot(BitReader& bits, int channels, int bound, const Layer1Allocation& frame,
              float (&slot)[2][kSubbands]) {
    for (int subband = 0; subband < kSubbands; ++subband) {
        int value = 0;
        for (int channel = 0; channel < channels; ++channel) {
            const int allocation = frame.allocation[subband][channel];
            const bool shared = subband >= bound && channel == 1;
            if (allocation != 0 && !shared)
                value = static_cast<int>(bits.Get(allocation + 1)) - ((1 << allocation) - 1);
            slot[channel][subband] =
                allocation != 0 ? static_cast<float>(value * frame.factor[subband][channel]) : 0.0f;
        }
    }
}

} // namespace

int DecodeLayer1(AMPBitstream& bits, const DecoderHeader& header, int bodyBytes, SynthesisBank& synthesis,
                 std::int16_t* pcm) {
    bits.FillLinear(bodyBytes);
    const int bound = header.JointStereoBound();
    Layer1Allocation frame;
    BitReader& reader = bits.Reader();
    ReadAllocation(reader, header.channels, bound, frame);
    ReadScaleFactors(reader, header.channels, frame);
    for (int i = 0; i < kSlotsPerFrame; ++i) {
        float slot[2][kSubbands] = {};
        ReadSlot(reader, header.channels, bound, frame, slot);
        synthesis.Synthesise(header.channels, 1, slot[0], false, pcm + i * kSubbands * header.channels);
    }
    return kSlotsPerFrame * kSubbands * header.channels;
}

} // namespace trnmpa
