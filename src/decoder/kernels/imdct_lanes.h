/// The inverse MDCT over any kind of lanes in double precision. Everything here is private to the file that
/// includes it, so that code for different instruction sets is never merged.
#pragma once

#include "decoder/kernels/kernel_table.h"
#include "decoder/tables/hybrid_tables.h"

namespace trnmpa {
namespace {

// Both transforms come down to a DCT-IV, Y[n] = sum of X[k] cos((2n + 1)(2k + 1) pi / 4N). Since
// cos((2n + 1) a) + cos((2n - 1) a) = 2 cos(a) cos(2n a), the values S[n] = Y[n] + Y[n - 1] are a DCT-II of
// X[k] 2 cos((2k + 1) pi / 4N), and Y[0] = S[0] / 2. The even outputs of that DCT-II are one of half the
// size; its odd outputs are a DCT-IV of half the size again, which the same step resolves. The lines come
// with inverted sign; the first multiplication turns it back.

/// cos((2i + 1) j pi / 18) sums: output[j], j = 0..8, at output[j * stride].
template <typename Lanes>
inline void CosineTransform9(const Lanes* x, Lanes* output, int stride) {
    const Lanes kCos30(tables::kCosDegrees[0]);
    const Lanes kCos40(tables::kCosDegrees[1]);
    const Lanes kCos50(tables::kCosDegrees[2]);
    const Lanes kCos70(tables::kCosDegrees[3]);
    const Lanes kCos80(tables::kCosDegrees[4]);
    const Lanes kHalf(0.5);

    const Lanes e0 = x[0] + x[8];
    const Lanes e1 = x[1] + x[7];
    const Lanes e2 = x[2] + x[6];
    const Lanes e3 = x[3] + x[5];
    const Lanes outer = e0 + e2 + e3;
    const Lanes inner = e1 + x[4];
    const Lanes shared = kHalf * e1 - x[4];
    // cos 20 = cos 40 + cos 80 leaves two factors for the three remaining outputs.
    output[0 * stride] = outer + inner;
    output[2 * stride] = kCos40 * (e0 - e3) + kCos80 * (e0 - e2) + shared;
    output[4 * stride] = kCos40 * (e0 - e2) - kCos80 * (e2 - e3) - shared;
    output[6 * stride] = kHalf * outer - inner;
    output[8 * stride] = kCos80 * (e0 - e3) + kCos40 * (e2 - e3) - shared;

    const Lanes o0 = x[0] - x[8];
    const Lanes o1 = x[1] - x[7];
    const Lanes o2 = x[2] - x[6];
    const Lanes o3 = x[3] - x[5];
    const Lanes centre = kCos30 * o1;
    // cos 10 = cos 50 + cos 70 does the same here.
    output[1 * stride] = kCos50 * (o0 + o2) + kCos70 * (o0 + o3) + centre;
    output[3 * stride] = kCos30 * (o0 - o2 - o3);
    output[5 * stride] = kCos50 * (o0 + o3) - kCos70 * (o2 - o3) - centre;
    output[7 * stride] = kCos70 * (o0 + o2) + kCos50 * (o2 - o3) - centre;
}

/// DCT-IV of 18 values of inverted sign.
template <typename Lanes>
inline void InvertedDct4Of18(const Lanes* lines, Lanes* y) {
    Lanes sums[9];
    Lanes differences[9];
    for (int k = 0; k < 9; ++k) {
        const Lanes low = lines[k] * Lanes(-tables::kTwoCos72[k]);
        const Lanes high = lines[17 - k] * Lanes(-tables::kTwoCos72[17 - k]);
        sums[k] = low + high;
        differences[k] = (low - high) * Lanes(tables::kTwoCos36[k]);
    }
    CosineTransform9(sums, y, 2);
    CosineTransform9(differences, y + 1, 2);
    y[1] = y[1] * Lanes(0.5);
    for (int n = 3; n < 18; n += 2)
        y[n] = y[n] - y[n - 2];
    y[0] = y[0] * Lanes(0.5);
    for (int n = 1; n < 18; ++n)
        y[n] = y[n] - y[n - 1];
}

/// DCT-IV of the 6 values lines[0], lines[3], ... of inverted sign.
template <typename Lanes>
inline void InvertedDct4Of6(const Lanes* lines, Lanes* z) {
    Lanes sums[3];
    Lanes differences[3];
    for (int k = 0; k < 3; ++k) {
        const Lanes low = lines[3 * k] * Lanes(-tables::kTwoCos24[k]);
        const Lanes high = lines[3 * (5 - k)] * Lanes(-tables::kTwoCos24[5 - k]);
        sums[k] = low + high;
        differences[k] = (low - high) * Lanes(tables::kTwoCos12[k]);
    }
    const auto transform3 = [](const Lanes* x, Lanes* output) {
        const Lanes outer = x[0] + x[2];
        output[0] = outer + x[1];
        output[2] = Lanes(tables::kCosDegrees[0]) * (x[0] - x[2]);
        output[4] = Lanes(0.5) * outer - x[1];
    };
    transform3(sums, z);
    transform3(differences, z + 1);
    z[1] = z[1] * Lanes(0.5);
    z[3] = z[3] - z[1];
    z[5] = z[5] - z[3];
    z[0] = z[0] * Lanes(0.5);
    for (int n = 1; n < 6; ++n)
        z[n] = z[n] - z[n - 1];
}

/// Unfolds the DCT-IV of the long lines to 36 values and windows them. For i = 0..8, by the true window,
/// x[i] = y[i + 9], x[17 - i] = -y[i + 9], x[26 - i] = -y[i], x[27 + i] = -y[i]; `window` has the signs in
/// it.
template <typename Lanes>
inline void ExpandLong(const Lanes* lines, const double* window, Lanes* x) {
    Lanes y[18];
    InvertedDct4Of18(lines, y);
    for (int i = 0; i < 9; ++i) {
        x[i] = y[i + 9] * Lanes(window[i]);
        x[17 - i] = y[i + 9] * Lanes(window[17 - i]);
        x[26 - i] = y[i] * Lanes(window[26 - i]);
        x[27 + i] = y[i] * Lanes(window[27 + i]);
    }
}

/// Lays the three windowed short transforms, 6 values apart, into 36 values.
template <typename Lanes>
inline void ExpandShort(const Lanes* lines, Lanes* x) {
    const double* window = tables::kShortWindow;
    for (int i = 0; i < 36; ++i)
        x[i] = Lanes(0.0);
    for (int j = 0; j < 3; ++j) {
        Lanes z[6];
        InvertedDct4Of6(lines + j, z);
        Lanes* target = x + 6 * j + 6;
        for (int i = 0; i < 3; ++i) {
            target[i] = target[i] + z[3 + i] * Lanes(window[i]);
            target[5 - i] = target[5 - i] - z[3 + i] * Lanes(window[5 - i]);
            target[8 - i] = target[8 - i] - z[i] * Lanes(window[i + 3]);
            target[9 + i] = target[9 + i] - z[i] * Lanes(window[2 - i]);
        }
    }
}

/// As many subbands as there are lanes; `overlap` and `slots` as KernelTable::inverseMdct has them.
template <typename Lanes>
inline void TransformSubbands(const float* lines, int blockType, float* overlap, float* slots) {
    Lanes wide[18];
    Lanes::LoadLines(lines, wide);
    Lanes x[36];
    if (blockType == 2)
        ExpandShort(wide, x);
    else
        ExpandLong(wide, tables::kLongWindow[blockType], x);
    for (int i = 0; i < 18; ++i) {
        (Lanes::LoadFloats(overlap + i * kSubbands) + x[i]).StoreFloats(slots + i * kSubbands);
        x[18 + i].StoreFloats(overlap + i * kSubbands);
    }
}

} // namespace
} // namespace trnmpa
