#include "decoder/kernels/alias_reduction_lanes.h"
#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_avx2.h"

namespace trnmpa::avx2 {

void ReduceAliases(float* spectrum, int boundaries) {
    ReduceAliasesInLanes<Doubles4>(spectrum, boundaries);
}

} // namespace trnmpa::avx2
