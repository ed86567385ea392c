#pragma once

#include "decoder/bitstream.h"
#include "decoder/frame_header.h"
#include "decoder/synthesis.h"

#include <cstdint>

namespace trnmpa {

/// Decodes the body of a layer II frame (ISO/IEC 11172-3, 2.4.1.6), `bodyBytes` long, to `pcm`; gives the
/// number of values written. A combination of mode and bit rate that the standard forbids decodes to zeros.
int DecodeLayer2(AMPBitstream& bits, const DecoderHeader& header, int bodyBytes, SynthesisBank& synthesis,
                 std::int16_t* pcm);

} // namespace trnmpa
