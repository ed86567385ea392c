#pragma once

#include <cstdint>
#include <span>

namespace trnmpa {

/// spectrum[i] = -sign(lines[i]) |lines[i]|^(4/3) x gain, the product in double precision. Magnitudes are at
/// most 8206.
void ScaleLines(std::span<const std::int32_t> lines, float gain, std::span<float> spectrum);

} // namespace trnmpa
