#pragma once

#include <span>

namespace trnmpa {

/// The 32-point cosine transform of the polyphase synthesis:
///
///     output[n] = sum over m of input[m] cos(n (2m + 1) pi / 64),  n = 0..31
///
/// in single precision, by Lee's decomposition. With `invertOddInputs` the odd-numbered inputs count negated,
/// which is the frequency inversion of layer III in odd time slots (ISO/IEC 11172-3, 2.4.3.4.10.3).
void CosineTransform32(std::span<const float, 32> input, bool invertOddInputs, std::span<float, 32> output);

} // namespace trnmpa
