#include "decoder/kernels/imdct_lanes.h"
#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_sse2.h"

namespace trnmpa::sse2 {

void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots) {
    for (int subband = 0; subband < count; subband += Doubles2::kCount)
        TransformSubbands<Doubles2>(lines + kLinesPerSubband * subband, blockType, overlap + subband,
                                    slots + subband);
}

} // namespace trnmpa::sse2
