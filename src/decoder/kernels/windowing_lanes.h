/// The synthesis window with lanes across outputs, four rows at once so that each tap is read once for them.
/// Private to the file that includes it.
#pragma once

#include "decoder/kernels/kernel_table.h"
#include "decoder/tables/synthesis_tables.h"

namespace trnmpa {
namespace {

inline constexpr int kWindowedRows = 4;

/// Sums of output n at [n], of output 32 - n at [16 + n], of output 16 at [32]; none at [16].
struct alignas(32) WindowSums {
    float of[33];
};

/// Where the values for taps k lie, counted from the newest row: in the first half of a row for even k, in
/// the second for odd k. Read from a table, they keep the compiler from taking two steps at once, for which
/// there are not registers enough.
inline constexpr std::ptrdiff_t kHalfRow[16] = {0,    -16,  -64,  -80,  -128, -144, -192, -208,
                                                -256, -272, -320, -336, -384, -400, -448, -464};

/// Outputs first to first + lanes - 1 of four rows, and those with which they share their values. Row i is
/// that of slot i / channels and channel i % channels from newest[channel] on.
template <typename Lanes, int kChannels>
inline void WindowBlock(const float* const* newest, int first, WindowSums* sums) {
    Lanes low[kWindowedRows];
    Lanes high[kWindowedRows];
    for (int i = 0; i < kWindowedRows; ++i)
        low[i] = high[i] = Lanes(0.0f);
    const float* const rows[2] = {newest[0] + first, newest[1] + first};
    const float* taps = tables::kFoldedWindow[0] + first;
    for (int k = 0; k < 16; ++k, taps += 32) {
        const Lanes lowTaps = Lanes::Load(taps);
        const Lanes highTaps = Lanes::Load(taps + 16);
        for (int i = 0; i < kWindowedRows; ++i) {
            const Lanes values = Lanes::Load(rows[i % kChannels] + kHalfRow[k] + i / kChannels * 32);
            low[i] = low[i] + lowTaps * values;
            high[i] = high[i] + highTaps * values;
        }
    }
    for (int i = 0; i < kWindowedRows; ++i) {
        low[i].Store(sums[i].of + first);
        high[i].Store(sums[i].of + 16 + first);
    }
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

/// Windows all rows and hands the sums of four to `store`, with the place of their PCM.
template <typename Lanes, int kChannels, typename Store>
inline void WindowInFours(const SynthesisRows* source, int count, std::int16_t* pcm, Store store) {
    constexpr int kStep = kWindowedRows / kChannels;
    Centres centres[kChannels];
    for (int channel = 0; channel < kChannels; ++channel)
        WindowCentres<Lanes>(source[channel].centre, count, centres[channel]);
    for (int next = 0; next < count; next += kStep) {
        // The last round may do some slots again.
        const int slot = next + kStep <= count ? next : count - kStep;
        const float* const newest[2] = {source[0].row + 32 * slot, source[kChannels - 1].row + 32 * slot};
        WindowSums sums[kWindowedRows];
        for (int first = 0; first < 16; first += Lanes::kCount)
            WindowBlock<Lanes, kChannels>(newest, first, sums);
        for (int i = 0; i < kWindowedRows; ++i)
            sums[i].of[32] = centres[i % kChannels][slot + i / kChannels];
        store(sums, pcm + 32 * kChannels * slot);
    }
}

} // namespace
} // namespace trnmpa
