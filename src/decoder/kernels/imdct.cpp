#include "decoder/kernels/imdct_lanes.h"
#include "decoder/kernels/kernel_sets.h"

namespace trnmpa::plain {

namespace {

void TransformSubband(const float* lines, int blockType, float* overlap, float* slots) {
    double wide[18];
    for (int i = 0; i < 18; ++i)
        wide[i] = static_cast<double>(lines[i]);
    double x[36];
    if (blockType == 2)
        ExpandShort(wide, x);
    else
        ExpandLong(wide, tables::kLongWindow[blockType], x);
    for (int i = 0; i < 18; ++i) {
        slots[i * kSubbands] = static_cast<float>(static_cast<double>(overlap[i * kSubbands]) + x[i]);
        overlap[i * kSubbands] = static_cast<float>(x[18 + i]);
    }
}

} // namespace

void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots) {
    for (int subband = 0; subband < count; ++subband)
        TransformSubband(lines + kLinesPerSubband * subband, blockType, overlap + subband, slots + subband);
}

} // namespace trnmpa::plain
