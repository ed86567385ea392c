#pragma once

#include <cstdint>
#include <span>

namespace trnmpa {

/// subbands[i] = (samples[i] - centres[i]) x factors[i], the product in double precision.
void ScaleSamples(std::span<const std::int32_t, 32> samples, std::span<const std::int32_t, 32> centres,
                  std::span<const double, 32> factors, std::span<float, 32> subbands);

} // namespace trnmpa
