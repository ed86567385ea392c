#include "decoder/kernels/imdct_lanes.h"
#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_avx2.h"

namespace trnmpa::avx2 {

void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots) {
    for (int subband = 0; subband < count; subband += Doubles4::kCount)
        TransformSubbands<Doubles4>(lines + kLinesPerSubband * subband, blockType, overlap + subband,
                                    slots + subband);
}

} // namespace trnmpa::avx2
