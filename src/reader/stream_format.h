/// What both engines make of an index header or of a stream's first frame.
#pragma once

#include "decoder/decoder_interface.h"
#include "index/index_format.h"
#include "os/wave_format.h"

#include <cstdint>

namespace trnmpa {

/// PCM of that shape, the sizes worked out from it; any numbers will do, as an index claims them.
WAVEFORMATEX PcmFormat(std::uint16_t channels, std::uint32_t sampleRate, std::uint16_t bitsPerSample);

/// The PCM that the stream decodes to. The two differ in the extra size (18 and 0), as hosts know them.
WAVEFORMATEX PcmFormatOf(const MpaIndexHeader& header);
WAVEFORMATEX PcmFormatOf(const AMPFrameInfo& frame);

/// The stream's frames as the index header describes them. `pcmBytes` is 0 when the header's numbers give no
/// size that a frame can have; no decoded frame then agrees with it.
AMPFrameInfo FrameInfoOf(const MpaIndexHeader& header);

} // namespace trnmpa
