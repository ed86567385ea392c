#pragma once

#include <cstdint>
#include <span>

namespace trnmpa {

/// Doubles 16-bit samples and clamps them to -32767..32767, which brings the built-in decoder's layer III
/// output to full scale. `output` has the size of `pcm`; an odd last byte is copied.
void DoubleAmplitude(std::span<const std::uint8_t> pcm, std::uint8_t* output);

} // namespace trnmpa
