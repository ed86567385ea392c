/// Layer III scale factors (ISO/IEC 11172-3, 2.4.2.7; ISO/IEC 13818-3, 2.4.3.2).
#pragma once

#include "decoder/bit_reader.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/side_info.h"

#include <cstdint>

namespace trnmpa {

/// Scale factors of one channel, kept from the first granule of a frame to the second and zero at its start.
struct ScaleFactors {
    std::uint8_t longBand[23] = {};
    std::uint8_t shortBand[3][13] = {}; ///< by window and band

    /// Width in bits of each field as read, where the lower sampling frequencies need it (intensity stereo).
    std::uint8_t longBits[23] = {};
    std::uint8_t shortBits[3][13] = {};
};

/// Reads the scale factors of MPEG-1. In the second granule (`granule` 1) a long block keeps the band groups
/// whose `selection` flag is set.
void ReadScaleFactorsMpeg1(BitReader& bits, const GranuleInfo& info, const std::uint32_t (&selection)[4],
                           int granule, ScaleFactors& factors);

/// Reads the scale factors of the lower sampling frequencies; sets the preflag of `info`.
void ReadScaleFactorsLsf(BitReader& bits, const DecoderHeader& header, int channel, GranuleInfo& info,
                         ScaleFactors& factors);

} // namespace trnmpa
