/// Polyphase synthesis of both channels.
#pragma once

#include "decoder/kernels/windowing.h"

#include <cstdint>
#include <span>

namespace trnmpa {

/// The filter bank's memory, shared by the channels of one stream.
class SynthesisBank {
public:
    using Slot = std::span<const float, 32>;

    void Reset();

    /// Turns one time slot of 32 subband samples of a single channel into 32 samples at `pcm`.
    void SynthesiseMono(Slot subbands, bool invertFrequency, std::int16_t* pcm);

    /// The same for two channels: 32 interleaved pairs.
    void SynthesiseStereo(Slot left, Slot right, bool invertFrequency, std::int16_t* pcm);

    /// One time slot of one or two channels without frequency inversion, as layers I and II need it.
    void SynthesiseSlot(int channels, Slot left, Slot right, std::int16_t* pcm);

private:
    void SynthesiseChannel(int channel, Slot subbands, bool invertFrequency, std::int16_t* pcm, int stride);
    void StepPhase() { phase_ = (phase_ - 1) & (SynthesisRing::kSlots - 1); }

    SynthesisRing ring_[2];
    int phase_ = 0;
};

} // namespace trnmpa
