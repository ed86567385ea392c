/// Lanes of the SSE2 kernels: 4 floats, 2 doubles. Private to the file that includes it.
#pragma once

#include <emmintrin.h>

namespace trnmpa {
namespace {

struct Floats4 {
    static constexpr int kCount = 4;
    __m128 v;

    Floats4() = default;
    explicit Floats4(__m128 value) : v(value) {}
    explicit Floats4(float value) : v(_mm_set1_ps(value)) {}

    static Floats4 Load(const float* p) { return Floats4(_mm_loadu_ps(p)); }
    void Store(float* p) const { _mm_storeu_ps(p, v); }
    Floats4 operator+(Floats4 b) const { return Floats4(_mm_add_ps(v, b.v)); }
    Floats4 operator-(Floats4 b) const { return Floats4(_mm_sub_ps(v, b.v)); }
    Floats4 operator*(Floats4 b) const { return Floats4(_mm_mul_ps(v, b.v)); }

    /// The value with lanes 1 and 3 negated.
    Floats4 WithOddNegated() const { return Floats4(_mm_xor_ps(v, _mm_setr_ps(0.0f, -0.0f, 0.0f, -0.0f))); }

    /// x[i] takes element i of 4 rows that begin `stride` elements apart.
    static void LoadTransposed(const float* rows, int stride, Floats4* x) {
        for (int i = 0; i < 4; ++i)
            x[i] = Load(rows + i * stride);
        _MM_TRANSPOSE4_PS(x[0].v, x[1].v, x[2].v, x[3].v);
    }

    /// Lane i of x[0], x[1], ... goes to the row rows[i], from `offset` on.
    static void StoreTransposed(const Floats4* x, float* const* rows, int offset) {
        __m128 row[4] = {x[0].v, x[1].v, x[2].v, x[3].v};
        _MM_TRANSPOSE4_PS(row[0], row[1], row[2], row[3]);
        for (int i = 0; i < 4; ++i)
            _mm_storeu_ps(rows[i] + offset, row[i]);
    }
};

/// Computes in double precision on values that are stored in single.
struct Doubles2 {
    static constexpr int kCount = 2;
    __m128d v;

    Doubles2() = default;
    explicit Doubles2(__m128d value) : v(value) {}
    explicit Doubles2(double value) : v(_mm_set1_pd(value)) {}

    static Doubles2 Load(const double* p) { return Doubles2(_mm_loadu_pd(p)); }
    static Doubles2 LoadFloats(const float* p) { return Doubles2(_mm_cvtps_pd(LoadPair(p))); }
    void StoreFloats(float* p) const { StorePair(p, _mm_cvtpd_ps(v)); }
    Doubles2 operator+(Doubles2 b) const { return Doubles2(_mm_add_pd(v, b.v)); }
    Doubles2 operator-(Doubles2 b) const { return Doubles2(_mm_sub_pd(v, b.v)); }
    Doubles2 operator*(Doubles2 b) const { return Doubles2(_mm_mul_pd(v, b.v)); }

    /// The same from the highest address to the lowest.
    static Doubles2 LoadReversedFloats(const float* p) {
        const __m128 pair = LoadPair(p);
        return Doubles2(_mm_cvtps_pd(_mm_shuffle_ps(pair, pair, _MM_SHUFFLE(3, 2, 0, 1))));
    }
    void StoreReversedFloats(float* p) const {
        const __m128 pair = _mm_cvtpd_ps(v);
        StorePair(p, _mm_shuffle_ps(pair, pair, _MM_SHUFFLE(3, 2, 0, 1)));
    }

    /// x[i] takes element i of 2 rows of 18.
    static void LoadLines(const float* lines, Doubles2* x) {
        for (int i = 0; i < 18; i += 2) {
            const __m128 pairs = _mm_unpacklo_ps(LoadPair(lines + i), LoadPair(lines + 18 + i));
            x[i] = Doubles2(_mm_cvtps_pd(pairs));
            x[i + 1] = Doubles2(_mm_cvtps_pd(_mm_movehl_ps(pairs, pairs)));
        }
    }

private:
    // As integer vectors, which may be any type's memory at any address; a double may not.
    static __m128 LoadPair(const float* p) {
        return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
    }
    static void StorePair(float* p, __m128 pair) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_castps_si128(pair));
    }
};

} // namespace
} // namespace trnmpa
