#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_sse2.h"
#include "decoder/kernels/windowing_lanes.h"

namespace trnmpa::sse2 {

namespace {

/// To integers, ties to even. What is too large would wrap; what is too small comes out as the smallest.
__m128i Round(__m128 sums) {
    return _mm_cvtps_epi32(_mm_min_ps(sums, _mm_set1_ps(32767.0f)));
}

/// Outputs 0 to 15 from the front of the sums, 16 to 31 from their end backwards, 8 in each vector.
void RoundRow(const WindowSums& sums, __m128i* outputs) {
    // The sum behind the 4 from n on, then they themselves from the last to the second.
    const auto backwards = [&](int n) {
        const __m128 x = _mm_load_ps(sums.of + n);
        const __m128 behind = _mm_load_ss(sums.of + n + 4);
        return Round(_mm_move_ss(_mm_shuffle_ps(x, x, _MM_SHUFFLE(1, 2, 3, 0)), behind));
    };
    for (int i = 0; i < 2; ++i) {
        outputs[i] =
            _mm_packs_epi32(Round(_mm_load_ps(sums.of + 8 * i)), Round(_mm_load_ps(sums.of + 8 * i + 4)));
        outputs[2 + i] = _mm_packs_epi32(backwards(28 - 8 * i), backwards(24 - 8 * i));
    }
}

/// The four rows of four slots.
void StoreMono(const WindowSums* sums, std::int16_t* pcm) {
    auto* vectors = reinterpret_cast<__m128i*>(pcm);
    for (int i = 0; i < kWindowedRows; ++i, vectors += 4) {
        __m128i outputs[4];
        RoundRow(sums[i], outputs);
        for (int k = 0; k < 4; ++k)
            _mm_storeu_si128(vectors + k, outputs[k]);
    }
}

/// Left and right of two slots.
void StoreStereo(const WindowSums* sums, std::int16_t* pcm) {
    auto* vectors = reinterpret_cast<__m128i*>(pcm);
    for (int i = 0; i < kWindowedRows; i += 2, vectors += 8) {
        __m128i left[4];
        __m128i right[4];
        RoundRow(sums[i], left);
        RoundRow(sums[i + 1], right);
        for (int k = 0; k < 4; ++k) {
            _mm_storeu_si128(vectors + 2 * k, _mm_unpacklo_epi16(left[k], right[k]));
            _mm_storeu_si128(vectors + 2 * k + 1, _mm_unpackhi_epi16(left[k], right[k]));
        }
    }
}

} // namespace

void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    if (channels * count < kWindowedRows)
        return plain::WindowSlots(source, channels, count, pcm);
    if (channels == 2)
        WindowInFours<Floats4, 2>(source, count, pcm, StoreStereo);
    else
        WindowInFours<Floats4, 1>(source, count, pcm, StoreMono);
}

} // namespace trnmpa::sse2
