#include "decoder/kernels/kernel_sets.h"

#include <immintrin.h>

namespace trnmpa::avx2 {

void ScaleSamples(const std::int32_t* samples, const std::int32_t* centres, const double* factors, int slots,
                  float* subbands) {
    const auto load = [](const std::int32_t* p) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    };
    for (int i = 0; i < kSubbands; i += 4) {
        const __m256d factor = _mm256_loadu_pd(factors + i);
        const __m128i centre = load(centres + i);
        for (int slot = 0; slot < slots; ++slot) {
            const int place = kSubbands * slot + i;
            const __m256d centred = _mm256_cvtepi32_pd(_mm_sub_epi32(load(samples + place), centre));
            _mm_storeu_ps(subbands + place, _mm256_cvtpd_ps(_mm256_mul_pd(centred, factor)));
        }
    }
}

} // namespace trnmpa::avx2
