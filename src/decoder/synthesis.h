/// Polyphase synthesis of both channels.
#pragma once

#include "decoder/kernels/synthesis_rows.h"

#include <cstdint>

namespace trnmpa {

/// The filter bank's memory, shared by the channels of one stream.
class SynthesisBank {
public:
    void Reset();

    /// Turns `count` (at most kMaximumSlots) time slots of 32 subband samples into 32 samples each at `pcm`,
    /// those of two channels interleaved. `slots` holds the slots of one channel after those of the other.
    /// `invertFrequency` is for layer III, whose slots come in even numbers (KernelTable::transformSlots).
    void Synthesise(int channels, int count, const float* slots, bool invertFrequency, std::int16_t* pcm);

private:
    void MakeRoom(int count);
    void RepeatSecondChannel(int count);

    SynthesisMemory memory_[2];
    int next_ = kPastSlots;          ///< row of the next slot
    bool usesSecondChannel_ = false; ///< since the last reset
};

} // namespace trnmpa
