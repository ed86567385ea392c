#pragma once

#include "decoder/decoder_interface.h"

namespace trnmpa {

/// True when both records describe frames of one stream. Frame length and bit rate may differ.
bool FramesAgree(const AMPFrameInfo& x, const AMPFrameInfo& y);

/// Reads headers up to the next frame that agrees with `stream`. At the end of the data the decoder throws.
void ReadAgreeingHeader(IAMPDecoder& decoder, const AMPFrameInfo& stream);

} // namespace trnmpa
