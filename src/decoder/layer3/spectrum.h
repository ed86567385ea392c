#pragma once

#include "decoder/bit_reader.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/requantise.h"
#include "decoder/layer3/side_info.h"

namespace trnmpa {

/// Reads and requantises the big values and the quadruples of one granule and channel. `end` is the position
/// behind the granule's data: quadruples stop there, big values are read to their full number. Gives the
/// non-zero count, the index behind the last line that is not zero; all lines from it on are set to zero.
/// Behind the bits must lie AMPBitstream::kZerosBehind zero bytes.
int ReadSpectrum(BitReader& bits, const DecoderHeader& header, const GranuleInfo& info,
                 const LineGains& gains, int end, Spectrum spectrum);

} // namespace trnmpa
