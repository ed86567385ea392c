#include "decoder/synthesis.h"

#include "decoder/kernels/kernel_table.h"

#include <algorithm>
#include <cstring>

namespace trnmpa {

void SynthesisBank::Reset() {
    memory_[0] = {};
    memory_[1] = {};
    next_ = kPastSlots;
    usesSecondChannel_ = false;
}

void SynthesisBank::Synthesise(int channels, int count, const float* slots, bool invertFrequency,
                               std::int16_t* pcm) {
    MakeRoom(count);
    const SynthesisRows rows[2] = {memory_[0].At(next_), memory_[1].At(next_)};
    const KernelTable& kernels = Kernels();
    kernels.transformSlots(slots, channels, count, invertFrequency, rows);
    kernels.windowSlots(rows, channels, count, pcm);
    usesSecondChannel_ |= channels == 2;
    if (channels == 1 && usesSecondChannel_)
        RepeatSecondChannel(count);
    next_ += count;
}

void SynthesisBank::MakeRoom(int count) {
    if (next_ + count <= SynthesisMemory::kRows)
        return;
    const int first = next_ - kPastSlots;
    for (SynthesisMemory& memory : memory_) {
        std::memmove(memory.row, memory.row + first, kPastSlots * sizeof memory.row[0]);
        std::memmove(memory.centre, memory.centre + first, kPastSlots * sizeof memory.centre[0]);
    }
    next_ = kPastSlots;
}

/// Both channels step through a ring of kPastSlots slots together; one that pauses finds its old slots again,
/// round after round.
void SynthesisBank::RepeatSecondChannel(int count) {
    SynthesisMemory& memory = memory_[1];
    for (int slot = next_; slot < next_ + count; ++slot) {
        std::copy_n(memory.row[slot - kPastSlots], 32, memory.row[slot]);
        memory.centre[slot] = memory.centre[slot - kPastSlots];
    }
}

} // namespace trnmpa
