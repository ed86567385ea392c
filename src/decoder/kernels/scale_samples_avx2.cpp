#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_avx2.h"
#include "decoder/kernels/scale_samples_lanes.h"

namespace trnmpa::avx2 {

void ScaleSamples(const std::int32_t* samples, const std::int32_t* centres, const double* factors, int slots,
                  float* subbands) {
    ScaleSamplesInLanes<Doubles4>(samples, centres, factors, slots, subbands);
}

} // namespace trnmpa::avx2
