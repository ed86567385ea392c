#include "decoder/kernels/imdct.h"

#include "decoder/tables/hybrid_tables.h"

namespace trnmpa {

// Both transforms come down to a DCT-IV, Y[n] = sum of X[k] cos((2n + 1)(2k + 1) pi / 4N). Since
// cos((2n + 1) a) + cos((2n - 1) a) = 2 cos(a) cos(2n a), the values S[n] = Y[n] + Y[n - 1] are a DCT-II of
// X[k] 2 cos((2k + 1) pi / 4N), and Y[0] = S[0] / 2. The even outputs of that DCT-II are one of half the
// size; its odd outputs are a DCT-IV of half the size again, which the same step resolves. The lines come
// with inverted sign; the first multiplication turns it back.

namespace {

/// cos((2i + 1) j pi / 18) sums: output[j], j = 0..8, at output[j * stride].
inline void CosineTransform9(const double* x, double* output, int stride) {
    constexpr double kCos30 = tables::kCosDegrees[0];
    constexpr double kCos40 = tables::kCosDegrees[1];
    constexpr double kCos50 = tables::kCosDegrees[2];
    constexpr double kCos70 = tables::kCosDegrees[3];
    constexpr double kCos80 = tables::kCosDegrees[4];

    const double e0 = x[0] + x[8];
    const double e1 = x[1] + x[7];
    const double e2 = x[2] + x[6];
    const double e3 = x[3] + x[5];
    const double outer = e0 + e2 + e3;
    const double inner = e1 + x[4];
    const double shared = 0.5 * e1 - x[4];
    // cos 20 = cos 40 + cos 80 leaves two factors for the three remaining outputs.
    output[0 * stride] = outer + inner;
    output[2 * stride] = kCos40 * (e0 - e3) + kCos80 * (e0 - e2) + shared;
    output[4 * stride] = kCos40 * (e0 - e2) - kCos80 * (e2 - e3) - shared;
    output[6 * stride] = 0.5 * outer - inner;
    output[8 * stride] = kCos80 * (e0 - e3) + kCos40 * (e2 - e3) - shared;

    const double o0 = x[0] - x[8];
    const double o1 = x[1] - x[7];
    const double o2 = x[2] - x[6];
    const double o3 = x[3] - x[5];
    const double centre = kCos30 * o1;
    // cos 10 = cos 50 + cos 70 does the same here.
    output[1 * stride] = kCos50 * (o0 + o2) + kCos70 * (o0 + o3) + centre;
    output[3 * stride] = kCos30 * (o0 - o2 - o3);
    output[5 * stride] = kCos50 * (o0 + o3) - kCos70 * (o2 - o3) - centre;
    output[7 * stride] = kCos70 * (o0 + o2) + kCos50 * (o2 - o3) - centre;
}

/// DCT-IV of 18 values of inverted sign.
void InvertedDct4Of18(const float* lines, double* y) {
    double sums[9];
    double differences[9];
    for (int k = 0; k < 9; ++k) {
        const double low = static_cast<double>(-lines[k]) * tables::kTwoCos72[k];
        const double high = static_cast<double>(-lines[17 - k]) * tables::kTwoCos72[17 - k];
        sums[k] = low + high;
        differences[k] = (low - high) * tables::kTwoCos36[k];
    }
    CosineTransform9(sums, y, 2);
    CosineTransform9(differences, y + 1, 2);
    y[1] *= 0.5;
    for (int n = 3; n < 18; n += 2)
        y[n] -= y[n - 2];
    y[0] *= 0.5;
    for (int n = 1; n < 18; ++n)
        y[n] -= y[n - 1];
}

/// DCT-IV of the 6 values lines[0], lines[3], ... of inverted sign.
void InvertedDct4Of6(const float* lines, double* z) {
    double sums[3];
    double differences[3];
    for (int k = 0; k < 3; ++k) {
        const double low = static_cast<double>(-lines[3 * k]) * tables::kTwoCos24[k];
        const double high = static_cast<double>(-lines[3 * (5 - k)]) * tables::kTwoCos24[5 - k];
        sums[k] = low + high;
        differences[k] = (low - high) * tables::kTwoCos12[k];
    }
    constexpr double kCos30 = tables::kCosDegrees[0];
    const auto transform3 = [](const double* x, double* output) {
        const double outer = x[0] + x[2];
        output[0] = outer + x[1];
        output[2] = kCos30 * (x[0] - x[2]);
        output[4] = 0.5 * outer - x[1];
    };
    transform3(sums, z);
    transform3(differences, z + 1);
    z[1] *= 0.5;
    z[3] -= z[1];
    z[5] -= z[3];
    z[0] *= 0.5;
    for (int n = 1; n < 6; ++n)
        z[n] -= z[n - 1];
}

/// Unfolds the DCT-IV to 36 values, windows them and overlaps: x[i] = -y[i + 9], x[17 - i] = y[i + 9],
/// x[26 - i] = y[i], x[27 + i] = y[i] for i = 0..8, by the negated window.
void OverlapLong(const double* y, const double* window, float* overlap, float* output, int stride) {
    for (int i = 0; i < 9; ++i) {
        output[i * stride] = static_cast<float>(overlap[i] - y[i + 9] * window[i]);
        output[(17 - i) * stride] = static_cast<float>(overlap[17 - i] + y[i + 9] * window[17 - i]);
    }
    for (int i = 0; i < 9; ++i) {
        overlap[8 - i] = static_cast<float>(y[i] * window[26 - i]);
        overlap[9 + i] = static_cast<float>(y[i] * window[27 + i]);
    }
}

/// Lays the three windowed short transforms, 6 values apart, into the 36 values of one subband.
void AssembleShort(const float* lines, double* x) {
    const double* window = tables::kImdctWindow[2];
    for (int j = 0; j < 3; ++j) {
        double z[6];
        InvertedDct4Of6(lines + j, z);
        double* target = x + 6 * j + 6;
        for (int i = 0; i < 3; ++i) {
            target[i] += z[3 + i] * window[i];
            target[5 - i] -= z[3 + i] * window[5 - i];
            target[8 - i] -= z[i] * window[i + 3];
            target[9 + i] -= z[i] * window[2 - i];
        }
    }
}

void OverlapShort(const float* lines, float* overlap, float* output, int stride) {
    double x[36] = {};
    AssembleShort(lines, x);
    for (int i = 0; i < 18; ++i) {
        output[i * stride] = static_cast<float>(overlap[i] + x[i]);
        overlap[i] = static_cast<float>(x[18 + i]);
    }
}

} // namespace

void InverseMdct(std::span<const float, 18> lines, int blockType, std::span<float, 18> overlap, float* output,
                 int stride) {
    if (blockType == 2) {
        OverlapShort(lines.data(), overlap.data(), output, stride);
        return;
    }
    double y[18];
    InvertedDct4Of18(lines.data(), y);
    OverlapLong(y, tables::kImdctWindow[blockType], overlap.data(), output, stride);
}

void FlushOverlap(std::span<float, 18> overlap, float* output, int stride) {
    for (int i = 0; i < 18; ++i) {
        output[i * stride] = overlap[static_cast<std::size_t>(i)];
        overlap[static_cast<std::size_t>(i)] = 0.0f;
    }
}

} // namespace trnmpa
