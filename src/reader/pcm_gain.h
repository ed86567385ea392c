#pragma once

#include <cstdint>
#include <span>

namespace trnmpa {

/// Doubles samples of 8 (unsigned), 16, 24 or 32 bits and clamps them to a range that is symmetric about zero
/// (-32767..32767 for 16 bits), which brings the built-in decoder's layer III output to full scale. `output`
/// has the size of `pcm`; samples of another width, and what is less than a sample at the end, are copied.
void DoubleAmplitude(std::span<const std::uint8_t> pcm, std::uint16_t bitsPerSample, std::uint8_t* output);

} // namespace trnmpa
