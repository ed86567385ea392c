#include "decoder/kernels/kernel_sets.h"

namespace trnmpa::plain {

void ScaleSamples(const std::int32_t* samples, const std::int32_t* centres, const double* factors, int slots,
                  float* subbands) {
    for (int slot = 0; slot < slots; ++slot, samples += kSubbands, subbands += kSubbands)
        for (int i = 0; i < kSubbands; ++i)
            subbands[i] = static_cast<float>((samples[i] - centres[i]) * factors[i]);
}

} // namespace trnmpa::plain
