/// WAV headers.
#pragma once

#include "os/wave_format.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mpatool {

/// Interleaved little-endian PCM: unsigned samples of 8 bits, signed ones of 16, 24 or 32.
struct PcmFormat {
    std::uint32_t sampleRate = 0; ///< Hz
    std::uint16_t channels = 0;
    std::uint16_t bitsPerSample = 16;

    std::uint16_t BytesPerSample() const {
        return static_cast<std::uint16_t>(channels * (bitsPerSample / 8));
    }

    bool operator==(const PcmFormat&) const = default;
};

WAVEFORMATEX ToWaveFormat(const PcmFormat& format);

/// The header that stands before `dataBytes` bytes of PCM. Since the amount is known beforehand, the header
/// is true from the start, also in a pipe: 44 bytes of RIFF while all sizes fit its 32 bits, else the 80
/// bytes of RF64 (EBU Tech 3306), which has 64-bit sizes.
std::vector<std::uint8_t> WaveHeader(const PcmFormat& format, std::uint64_t dataBytes);

/// What stands behind the PCM: a byte where it has an odd number of them, else nothing.
std::vector<std::uint8_t> WavePadding(std::uint64_t dataBytes);

} // namespace mpatool
