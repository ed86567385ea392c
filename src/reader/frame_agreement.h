#pragma once

#include "decoder/decoder_interface.h"

namespace trnmpa {

/// True when both records describe frames of one stream. Frame length and bit rate may differ.
bool FramesAgree(const AMPFrameInfo& x, const AMPFrameInfo& y);

} // namespace trnmpa
