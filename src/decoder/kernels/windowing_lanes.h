/// The synthesis window with lanes across outputs, four rows at once so that each tap is read once for them.
/// Private to the file that includes it.
#pragma once

#include "decoder/kernels/kernel_table.h"
#include "decoder/tables/synthesis_tables.h"

namespace trnmpa {
namespace {

inline constexpr int kWindowedRows = 4;

/// Sums of output n at [n], of output 32 - n at [16 + n], of output 16 at [32]; none at [16].
using WindowSums = float[33];

/// Outputs first to first + lanes - 1 of a row and those with which they share their values.
template <typename Lanes>
inline void WindowBlock(const float* const* newest, int first, WindowSums* sums) {
    Lanes low[kWindowedRows];
    Lanes high[kWindowedRows];
    for (int i = 0; i < kWindowedRows; ++i)
        low[i] = high[i] = Lanes(0.0f);
    const auto addTaps = [&](const float* taps, int offset) {
        const Lanes lowTaps = Lanes::Load(taps);
        const Lanes highTaps = Lanes::Load(taps + 16);
        for (int i = 0; i < kWindowedRows; ++i) {
            const Lanes values = Lanes::Load(newest[i] + offset);
            low[i] = low[i] + lowTaps * values;
            high[i] = high[i] + highTaps * values;
        }
    };
    for (int k = 0; k < 16; k += 2) {
        addTaps(tables::kFoldedWindow[k] + first, first - 32 * k);
        addTaps(tables::kFoldedWindow[k + 1] + first, first - 32 * (k + 1) + 16);
    }
    for (int i = 0; i < kWindowedRows; ++i) {
        low[i].Store(sums[i] + first);
        high[i].Store(sums[i] + 16 + first);
    }
}

template <typename Lanes>
inline void WindowRows(const float* const* newest, WindowSums* sums) {
    for (int first = 0; first < 16; first += Lanes::kCount)
        WindowBlock<Lanes>(newest, first, sums);
}

/// Output 16 of `count` rows, with lanes across rows; up to lanes - 1 more are written.
template <typename Lanes>
inline void WindowCentres(const float* newest, int count, float* centres) {
    for (int i = 0; i < count; i += Lanes::kCount) {
        Lanes sum(0.0f);
        for (int k = 1; k < 16; k += 2)
            sum = sum + Lanes(tables::kCentreWindow[k / 2]) * Lanes::Load(newest + i - k);
        sum.Store(centres + i);
    }
}

using Centres = float[kMaximumSlots + SynthesisMemory::kPadding];

/// Windows the four rows of two slots and two channels, or of four slots, from `slot` on.
template <typename Lanes>
inline void WindowSlotsFrom(const SynthesisRows* source, const Centres* centres, int channels, int slot,
                            WindowSums* sums) {
    const float* newest[kWindowedRows];
    for (int i = 0; i < kWindowedRows; ++i) {
        const int channel = i % channels;
        const int offset = slot + i / channels;
        newest[i] = source[channel].row + 32 * offset;
        sums[i][32] = centres[channel][offset];
    }
    WindowRows<Lanes>(newest, sums);
}

} // namespace
} // namespace trnmpa
