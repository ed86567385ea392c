/// Joint stereo (ISO/IEC 11172-3, 2.4.3.4.9; ISO/IEC 13818-3, 2.4.3.2).
#pragma once

#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/requantise.h"
#include "decoder/layer3/scale_factors.h"

#include <cstdint>
#include <span>

namespace trnmpa {

/// Position of lines without intensity processing.
inline constexpr std::uint8_t kNoIntensity = 7;

/// The right channel's part in the stereo of a granule.
struct RightChannel {
    const GranuleInfo& info;
    const BandLayout& layout;
    const ScaleFactors& factors;
};

/// Finds the intensity position of every line: the bands from the top down in which `right` is zero.
void FindIntensityPositions(const DecoderHeader& header, const RightChannel& channel,
                            std::span<const float, kGranuleLines> right,
                            std::span<std::uint8_t, kGranuleLines> positions);

/// Undoes M/S and intensity stereo on both spectra, in bitstream order, and updates their non-zero counts.
void ProcessStereo(const DecoderHeader& header, const RightChannel& channel, Spectrum left, Spectrum right,
                   int (&nonZeroCount)[2]);

} // namespace trnmpa
