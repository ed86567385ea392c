#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_plain.h"
#include "decoder/kernels/transform_slots_lanes.h"

namespace trnmpa::plain {

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target) {
    const int all = channels * count;
    int first = 0;
    for (; first + 4 <= all; first += 4)
        TransformGroup<ArrayLanes<float, 4>>(slots, first, count, invertFrequency, target);
    for (; first + 2 <= all; first += 2)
        TransformGroup<ArrayLanes<float, 2>>(slots, first, count, invertFrequency, target);
    if (first < all)
        TransformGroup<ArrayLanes<float, 1>>(slots, first, count, false, target);
}

} // namespace trnmpa::plain
