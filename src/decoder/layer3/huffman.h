/// Huffman decoding of a granule's spectrum (ISO/IEC 11172-3, 2.4.1.7 and 2.4.3.4.6).
#pragma once

#include "decoder/bitstream.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/side_info.h"

#include <cstdint>
#include <span>

namespace trnmpa {

inline constexpr int kGranuleLines = 576;

/// Reads the big values and the quadruples of one granule and channel. `endBitsRemaining` is where the
/// granule's data ends: quadruples stop there, big values are read to their full number. Gives the non-zero
/// count: lines from it on are zero and are not written.
int DecodeSpectrum(AMPBitstream& bits, const DecoderHeader& header, const GranuleInfo& info,
                   int endBitsRemaining, std::span<std::int32_t, kGranuleLines> lines);

} // namespace trnmpa
