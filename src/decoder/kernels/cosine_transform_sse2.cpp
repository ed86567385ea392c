#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_sse2.h"
#include "decoder/kernels/transform_slots_lanes.h"

namespace trnmpa::sse2 {

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target) {
    const int all = channels * count;
    if (all % 2 != 0 || all < 4)
        return plain::TransformSlots(slots, channels, count, invertFrequency, target);
    int first = 0;
    for (; first + 4 <= all; first += 4)
        TransformGroup<Floats4>(slots, first, count, invertFrequency, target);
    // The last group may do two slots again.
    if (first < all)
        TransformGroup<Floats4>(slots, all - 4, count, invertFrequency, target);
}

} // namespace trnmpa::sse2
