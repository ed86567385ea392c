#include "decoder/kernels/kernel_sets.h"

#include <immintrin.h>

namespace trnmpa::avx2 {

void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output) {
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples + 2 * i));
        const __m256i doubled = _mm256_max_epi16(_mm256_adds_epi16(x, x), _mm256_set1_epi16(-32767));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(output + 2 * i), doubled);
    }
    plain::DoubleSamples(samples + 2 * i, count - i, output + 2 * i);
}

} // namespace trnmpa::avx2
