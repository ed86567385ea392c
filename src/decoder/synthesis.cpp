#include "decoder/synthesis.h"

#include "decoder/kernels/cosine_transform.h"

namespace trnmpa {

void SynthesisBank::Reset() {
    ring_[0] = {};
    ring_[1] = {};
    phase_ = 0;
}

void SynthesisBank::SynthesiseMono(Slot subbands, bool invertFrequency, std::int16_t* pcm) {
    SynthesiseChannel(0, subbands, invertFrequency, pcm, 1);
    StepPhase();
}

void SynthesisBank::SynthesiseStereo(Slot left, Slot right, bool invertFrequency, std::int16_t* pcm) {
    SynthesiseChannel(0, left, invertFrequency, pcm, 2);
    SynthesiseChannel(1, right, invertFrequency, pcm + 1, 2);
    StepPhase();
}

void SynthesisBank::SynthesiseSlot(int channels, Slot left, Slot right, std::int16_t* pcm) {
    if (channels == 1)
        SynthesiseMono(left, false, pcm);
    else
        SynthesiseStereo(left, right, false, pcm);
}

void SynthesisBank::SynthesiseChannel(int channel, Slot subbands, bool invertFrequency, std::int16_t* pcm,
                                      int stride) {
    SynthesisRing& ring = ring_[channel];
    CosineTransform32(subbands, invertFrequency, ring.slot[phase_]);
    float samples[32];
    WindowSlots(ring, phase_, samples);
    for (int n = 0; n < 32; ++n)
        pcm[n * stride] = RoundToPcm(samples[n]);
}

} // namespace trnmpa
