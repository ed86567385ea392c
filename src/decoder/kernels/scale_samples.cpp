#include "decoder/kernels/scale_samples.h"

namespace trnmpa {

void ScaleSamples(std::span<const std::int32_t, 32> samples, std::span<const std::int32_t, 32> centres,
                  std::span<const double, 32> factors, std::span<float, 32> subbands) {
    for (std::size_t i = 0; i < subbands.size(); ++i)
        subbands[i] = static_cast<float>((samples[i] - centres[i]) * factors[i]);
}

} // namespace trnmpa
