#include "decoder/kernels/kernel_sets.h"

#include <emmintrin.h>

namespace trnmpa::sse2 {

void DoubleSamples(const std::int16_t* samples, std::size_t count, std::int16_t* output) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples + i));
        const __m128i doubled = _mm_max_epi16(_mm_adds_epi16(x, x), _mm_set1_epi16(-32767));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(output + i), doubled);
    }
    plain::DoubleSamples(samples + i, count - i, output + i);
}

} // namespace trnmpa::sse2
