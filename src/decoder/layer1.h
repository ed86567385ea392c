#pragma once

#include "decoder/bitstream.h"
#include "decoder/frame_header.h"
#include "decoder/synthesis.h"

#include <cstdint>

namespace trnmpa {

/// Decodes the body of a layer I frame (ISO/IEC 11172-3, 2.4.1.5), `bodyBytes` long, to `pcm`; gives the
/// number of values written. Kept although the header test lets no layer I frame through.
int DecodeLayer1(AMPBitstream& bits, const DecoderHeader& header, int bodyBytes, SynthesisBank& synthesis,
                 std::int16_t* pcm);

} // namespace trnmpa
