#include "decoder/kernels/kernel_sets.h"
#include "decoder/kernels/lanes_avx2.h"
#include "decoder/kernels/windowing_lanes.h"

namespace trnmpa::avx2 {

namespace {

/// To integers, ties to even. What is too large would wrap; what is too small comes out as the smallest.
__m256i Round(__m256 sums) {
    return _mm256_cvtps_epi32(_mm256_min_ps(sums, _mm256_set1_ps(32767.0f)));
}

/// Outputs 0 to 15 from the front of the sums, 16 to 31 from their end backwards, 16 in each vector: 0 to 3,
/// 8 to 11, 4 to 7, 12 to 15.
void RoundRow(const WindowSums& sums, __m256i* outputs) {
    // The sum behind the 8 from n on, then they themselves from the last to the second.
    const auto backwards = [&](int n) {
        const __m256i order = _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1);
        const __m256 x = _mm256_permutevar8x32_ps(_mm256_load_ps(sums.of + n), order);
        return Round(_mm256_blend_ps(x, _mm256_broadcast_ss(sums.of + n + 8), 1));
    };
    outputs[0] = _mm256_packs_epi32(Round(_mm256_load_ps(sums.of)), Round(_mm256_load_ps(sums.of + 8)));
    outputs[1] = _mm256_packs_epi32(backwards(24), backwards(16));
}

/// The four rows of four slots.
void StoreMono(const WindowSums* sums, std::int16_t* pcm) {
    auto* vectors = reinterpret_cast<__m256i*>(pcm);
    for (int i = 0; i < kWindowedRows; ++i, vectors += 2) {
        __m256i outputs[2];
        RoundRow(sums[i], outputs);
        for (int k = 0; k < 2; ++k)
            _mm256_storeu_si256(vectors + k, _mm256_permute4x64_epi64(outputs[k], _MM_SHUFFLE(3, 1, 2, 0)));
    }
}

/// Left and right of two slots.
void StoreStereo(const WindowSums* sums, std::int16_t* pcm) {
    auto* vectors = reinterpret_cast<__m256i*>(pcm);
    for (int i = 0; i < kWindowedRows; i += 2, vectors += 4) {
        __m256i left[2];
        __m256i right[2];
        RoundRow(sums[i], left);
        RoundRow(sums[i + 1], right);
        for (int k = 0; k < 2; ++k) {
            _mm256_storeu_si256(vectors + 2 * k, _mm256_unpacklo_epi16(left[k], right[k]));
            _mm256_storeu_si256(vectors + 2 * k + 1, _mm256_unpackhi_epi16(left[k], right[k]));
        }
    }
}

} // namespace

void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    if (channels * count < kWindowedRows)
        return sse2::WindowSlots(source, channels, count, pcm);
    if (channels == 2)
        WindowInFours<Floats8, 2>(source, count, pcm, StoreStereo);
    else
        WindowInFours<Floats8, 1>(source, count, pcm, StoreMono);
}

} // namespace trnmpa::avx2
