#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_avx2.h"
#include "decoder/kernels/lanes_sse2.h"
#include "decoder/kernels/transform_slots_lanes.h"

namespace trnmpa::avx2 {

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target) {
    const int all = channels * count;
    if (all % 2 != 0 || all < 8)
        return sse2::TransformSlots(slots, channels, count, invertFrequency, target);
    int first = 0;
    for (; first + 8 <= all; first += 8)
        TransformGroup<Floats8>(slots, first, count, invertFrequency, target);
    // The last group may do some slots again.
    if (all - first > 4)
        TransformGroup<Floats8>(slots, all - 8, count, invertFrequency, target);
    else if (all > first)
        TransformGroup<Floats4>(slots, all - 4, count, invertFrequency, target);
}

} // namespace trnmpa::avx2
