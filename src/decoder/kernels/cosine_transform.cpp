#include "decoder/kernels/cosine_transform_lanes.h"
#include "decoder/kernels/kernel_sets.h"

namespace trnmpa::plain {

namespace {

void StoreRow(const float* c, float* row, float* centre) {
    for (int n = 0; n < 16; ++n) {
        row[n] = c[16 + n];
        row[16 + n] = c[16 - n];
    }
    *centre = c[0];
}

void TransformSlot(const float* slot, bool invertOddValues, float* row, float* centre) {
    float c[32];
    if (invertOddValues) {
        float inverted[32];
        for (int i = 0; i < 32; i += 2) {
            inverted[i] = slot[i];
            inverted[i + 1] = -slot[i + 1];
        }
        CosineTransform<32>(inverted, c);
    } else {
        CosineTransform<32>(slot, c);
    }
    StoreRow(c, row, centre);
}

} // namespace

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target) {
    for (int channel = 0; channel < channels; ++channel) {
        for (int slot = 0; slot < count; ++slot, slots += 32)
            TransformSlot(slots, invertFrequency && slot % 2 != 0, target[channel].row + 32 * slot,
                          target[channel].centre + slot);
    }
}

} // namespace trnmpa::plain
