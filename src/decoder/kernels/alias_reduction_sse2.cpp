#include "decoder/kernels/alias_reduction_lanes.h"
#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_sse2.h"

namespace trnmpa::sse2 {

void ReduceAliases(float* spectrum, int boundaries) {
    ReduceAliasesInLanes<Doubles2>(spectrum, boundaries);
}

} // namespace trnmpa::sse2
