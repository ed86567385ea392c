/// The decoder's inner loops, in a version for each instruction set. All versions of a loop give the same
/// bits: their lanes run across values that do not depend on each other, and each value is computed as the
/// plain version computes it. Pointers need no more alignment than their type has: 4 bytes for floats.
#pragma once

#include "decoder/kernels/synthesis_rows.h"

#include <cstddef>
#include <cstdint>

namespace trnmpa {

/// Subbands and lines of a layer III granule.
inline constexpr int kSubbands = 32;
inline constexpr int kLinesPerSubband = 18;

/// Subbands that inverseMdct takes at once.
inline constexpr int kSubbandGroup = 4;

struct KernelTable {
    /// The 32-point cosine transform of the polyphase synthesis:
    ///
    ///     C[n] = sum over m of slot[m] cos(n (2m + 1) pi / 64),  n = 0..31
    ///
    /// in single precision, by Lee's decomposition. `slots` holds `count` time slots of 32 values for each of
    /// `channels` channels, one channel after the other; they go to consecutive rows of `target[channel]`.
    /// With `invertFrequency` the odd-numbered values of odd time slots count negated, which is the frequency
    /// inversion of layer III (ISO/IEC 11172-3, 2.4.3.4.10.3); `count` is even then.
    void (*transformSlots)(const float* slots, int channels, int count, bool invertFrequency,
                           const SynthesisRows* target);

    /// The 512-tap window of the polyphase synthesis (ISO/IEC 11172-3, 2.4.3.2.2) over the `count` rows (at
    /// most kMaximumSlots) from source[channel] on, each with the 15 rows before it. Each output is a
    /// single-precision sum from the newest row to the oldest, rounded to the nearest integer, ties to even,
    /// and clipped to 16 bits. Writes 32 values a row, those of two channels interleaved.
    void (*windowSlots)(const SynthesisRows* source, int channels, int count, std::int16_t* pcm);

    /// left, right = (left + right) / sqrt(2), (left - right) / sqrt(2) of `count` lines, in double
    /// precision.
    void (*undoMidSide)(float* left, float* right, std::size_t count);

    /// Eight butterflies at each of the first `boundaries` (0 to 31) boundaries between adjacent subbands of
    /// 18 lines (ISO/IEC 11172-3, 2.4.3.4.10.1) in double precision.
    void (*reduceAliases)(float* spectrum, int boundaries);

    /// The inverse MDCT of `count` subbands, a multiple of kSubbandGroup (the plain version takes any
    /// number), with window and overlap (ISO/IEC 11172-3, 2.4.3.4.10.2). `lines` holds 18 lines a subband
    /// with inverted sign, for block type 2 the three windows interleaved. `overlap` and `slots` are 18 rows
    /// of kSubbands values, from the first of the subbands on: the time samples go to `slots`; `overlap`
    /// gives its old content to them and is left with the second half of the window. Double precision inside.
    void (*inverseMdct)(const float* lines, int blockType, int count, float* overlap, float* slots);

    /// Layer II's samples as they were coded, 0 to levels - 1, to subband samples: (samples - centres) x
    /// factors, the product in double precision. `slots` time slots of kSubbands values that share centres
    /// and factors.
    void (*scaleSamples)(const std::int32_t* samples, const std::int32_t* centres, const double* factors,
                         int slots, float* subbands);

    /// Doubles `count` 16-bit samples, at any address, and clamps them to -32767..32767. The areas may be the
    /// same.
    void (*doubleSamples)(const std::uint8_t* samples, std::size_t count, std::uint8_t* output);
};

/// The versions of the loops, by instruction set, as bits of a mask.
enum KernelSet : unsigned { kPlainKernels = 1, kSse2Kernels = 2, kAvx2Kernels = 4, kAllKernels = ~0u };

/// The fastest kernels that processor, system and mask allow.
const KernelTable& Kernels();

/// Those of the portable C++ alone; the truth for all others.
const KernelTable& PlainKernels();

/// Narrows what Kernels() may choose, for tests and measurements; the plain version stays in any case. Gives
/// the sets that are left.
unsigned SetKernelMask(unsigned mask);

/// The sets of this build that this processor and its operating system can run.
unsigned AvailableKernels();

} // namespace trnmpa
