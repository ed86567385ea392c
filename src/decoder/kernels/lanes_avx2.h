/// Lanes of the AVX2 kernels: 8 floats, 4 doubles. Private to the file that includes it.
#pragma once

#include <immintrin.h>

namespace trnmpa {
namespace {

struct Floats8 {
    static constexpr int kCount = 8;
    __m256 v;

    Floats8() = default;
    explicit Floats8(__m256 value) : v(value) {}
    explicit Floats8(float value) : v(_mm256_set1_ps(value)) {}

    static Floats8 Load(const float* p) { return Floats8(_mm256_loadu_ps(p)); }
    void Store(float* p) const { _mm256_storeu_ps(p, v); }
    Floats8 operator+(Floats8 b) const { return Floats8(_mm256_add_ps(v, b.v)); }
    Floats8 operator-(Floats8 b) const { return Floats8(_mm256_sub_ps(v, b.v)); }
    Floats8 operator*(Floats8 b) const { return Floats8(_mm256_mul_ps(v, b.v)); }

    /// The value with lanes 1, 3, 5 and 7 negated.
    Floats8 WithOddNegated() const {
        return Floats8(_mm256_xor_ps(v, _mm256_setr_ps(0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f)));
    }

    /// x[i] takes element i of 8 rows that begin `stride` elements apart.
    static void LoadTransposed(const float* rows, int stride, Floats8* x) {
        for (int half = 0; half < 2; ++half) {
            __m256 row[4];
            for (int i = 0; i < 4; ++i) {
                const float* p = rows + i * stride + 4 * half;
                row[i] = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p)),
                                              _mm_loadu_ps(p + 4 * stride), 1);
            }
            TransposeQuarters(row);
            for (int i = 0; i < 4; ++i)
                x[4 * half + i] = Floats8(row[i]);
        }
    }

    /// Lane i of x[0], x[1], ... goes to the row rows[i], from `offset` on.
    static void StoreTransposed(const Floats8* x, float* const* rows, int offset) {
        __m256 low[4] = {x[0].v, x[1].v, x[2].v, x[3].v};
        __m256 high[4] = {x[4].v, x[5].v, x[6].v, x[7].v};
        TransposeQuarters(low);
        TransposeQuarters(high);
        for (int i = 0; i < 4; ++i) {
            _mm256_storeu_ps(rows[i] + offset, _mm256_permute2f128_ps(low[i], high[i], 0x20));
            _mm256_storeu_ps(rows[i + 4] + offset, _mm256_permute2f128_ps(low[i], high[i], 0x31));
        }
    }

private:
    /// Transposes the low 4 by 4 elements and the high ones.
    static void TransposeQuarters(__m256* row) {
        const __m256 even01 = _mm256_unpacklo_ps(row[0], row[1]);
        const __m256 odd01 = _mm256_unpackhi_ps(row[0], row[1]);
        const __m256 even23 = _mm256_unpacklo_ps(row[2], row[3]);
        const __m256 odd23 = _mm256_unpackhi_ps(row[2], row[3]);
        row[0] = _mm256_shuffle_ps(even01, even23, _MM_SHUFFLE(1, 0, 1, 0));
        row[1] = _mm256_shuffle_ps(even01, even23, _MM_SHUFFLE(3, 2, 3, 2));
        row[2] = _mm256_shuffle_ps(odd01, odd23, _MM_SHUFFLE(1, 0, 1, 0));
        row[3] = _mm256_shuffle_ps(odd01, odd23, _MM_SHUFFLE(3, 2, 3, 2));
    }
};

/// Computes in double precision on values that are stored in single.
struct Doubles4 {
    static constexpr int kCount = 4;
    __m256d v;

    Doubles4() = default;
    explicit Doubles4(__m256d value) : v(value) {}
    explicit Doubles4(double value) : v(_mm256_set1_pd(value)) {}

    static Doubles4 Load(const double* p) { return Doubles4(_mm256_loadu_pd(p)); }
    static Doubles4 LoadFloats(const float* p) { return Doubles4(_mm256_cvtps_pd(_mm_loadu_ps(p))); }
    void StoreFloats(float* p) const { _mm_storeu_ps(p, _mm256_cvtpd_ps(v)); }
    Doubles4 operator+(Doubles4 b) const { return Doubles4(_mm256_add_pd(v, b.v)); }
    Doubles4 operator-(Doubles4 b) const { return Doubles4(_mm256_sub_pd(v, b.v)); }
    Doubles4 operator*(Doubles4 b) const { return Doubles4(_mm256_mul_pd(v, b.v)); }

    /// The same from the highest address to the lowest.
    static Doubles4 LoadReversedFloats(const float* p) {
        return Doubles4(_mm256_cvtps_pd(Reversed(_mm_loadu_ps(p))));
    }
    void StoreReversedFloats(float* p) const { _mm_storeu_ps(p, Reversed(_mm256_cvtpd_ps(v))); }

    /// x[i] takes element i of 4 rows of 18.
    static void LoadLines(const float* lines, Doubles4* x) {
        for (int i = 0; i < 16; i += 4)
            LoadSquare(lines + i, x + i);
        const __m128 low = LoadPairs(lines + 16);
        const __m128 high = LoadPairs(lines + 18 * 2 + 16);
        x[16] = Doubles4(_mm256_cvtps_pd(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))));
        x[17] = Doubles4(_mm256_cvtps_pd(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))));
    }

private:
    static __m128 Reversed(__m128 x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(0, 1, 2, 3)); }

    /// Two elements of a row and the two below them. As integer vectors, which may be any type's memory at
    /// any address; a double may not.
    static __m128 LoadPairs(const float* p) {
        const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        const __m128i second = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 18));
        return _mm_castsi128_ps(_mm_unpacklo_epi64(first, second));
    }

    static void LoadSquare(const float* lines, Doubles4* x) {
        __m128 row[4];
        for (int i = 0; i < 4; ++i)
            row[i] = _mm_loadu_ps(lines + 18 * i);
        _MM_TRANSPOSE4_PS(row[0], row[1], row[2], row[3]);
        for (int i = 0; i < 4; ++i)
            x[i] = Doubles4(_mm256_cvtps_pd(row[i]));
    }
};

} // namespace
} // namespace trnmpa
