#include "decoder/kernels/imdct_lanes.h"
#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_plain.h"

namespace trnmpa::plain {

void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots) {
    int subband = 0;
    for (; subband + 4 <= count; subband += 4)
        TransformSubbands<ArrayLanes<double, 4>>(lines + kLinesPerSubband * subband, blockType,
                                                 overlap + subband, slots + subband);
    for (; subband < count; ++subband)
        TransformSubbands<ArrayLanes<double, 1>>(lines + kLinesPerSubband * subband, blockType,
                                                 overlap + subband, slots + subband);
}

} // namespace trnmpa::plain
