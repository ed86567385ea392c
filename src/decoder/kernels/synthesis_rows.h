#pragma once

namespace trnmpa {

/// Where a channel's transformed time slots lie, one row a slot, older ones in front. With C the 32 values of
/// the transform, a row is C[16], C[17], ... C[31], C[16], C[15], ... C[1]: in the order in which the window
/// meets them. C[0], which meets the middle output alone, lies apart.
struct SynthesisRows {
    float* row = nullptr;    ///< 32 values a slot; fastest when aligned to 32 bytes
    float* centre = nullptr; ///< C[0] of each slot
};

/// Slots that are transformed and windowed at once, at most, and those before them that are kept.
inline constexpr int kMaximumSlots = 36;
inline constexpr int kPastSlots = 16;

/// One channel's memory. The last kPastSlots rows in front of the next one are the filter's state.
struct SynthesisMemory {
    static constexpr int kRows = kPastSlots + kMaximumSlots;
    /// Vectors of centres may reach this far over the end.
    static constexpr int kPadding = 8;

    alignas(32) float row[kRows][32] = {};
    float centre[kRows + kPadding] = {};

    SynthesisRows At(int slot) { return {row[slot], centre + slot}; }
};

} // namespace trnmpa
