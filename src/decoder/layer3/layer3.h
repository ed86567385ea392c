/// Layer III frames: the chain from main data to PCM.
#pragma once

#include "decoder/bitstream.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/hybrid.h"
#include "decoder/layer3/side_info.h"
#include "decoder/synthesis.h"

#include <cstdint>

namespace trnmpa {

/// Decodes one layer III stream frame by frame. Holds the overlap between granules and the work buffers.
class Layer3Decoder {
public:
    void Reset();

    /// Decodes a frame whose main data is already in the reservoir: `mainDataBytes` of it belong to this
    /// frame. Gives the number of values written to `pcm`.
    int DecodeFrame(AMPBitstream& bits, const DecoderHeader& header, SideInfo& info, int mainDataBytes,
                    SynthesisBank& synthesis, std::int16_t* pcm);

private:
    void ReadGranule(AMPBitstream& bits, const DecoderHeader& header, SideInfo& info, int granule);
    void ReadChannel(AMPBitstream& bits, const DecoderHeader& header, SideInfo& info, int granule,
                     int channel);
    void SynthesiseGranule(const DecoderHeader& header, const SideInfo& info, int granule,
                           SynthesisBank& synthesis, std::int16_t* pcm);

    HybridMemory memory_[2];
    ScaleFactors factors_[2];
    float spectrum_[2][kGranuleLines] = {};
    int nonZeroCount_[2] = {};
    alignas(32) GranuleSlots slots_[2] = {};
};

} // namespace trnmpa
