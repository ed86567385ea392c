#include "decoder/kernels/kernel_sets.h"

#include <emmintrin.h>

namespace trnmpa::sse2 {

void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples + 2 * i));
        const __m128i doubled = _mm_max_epi16(_mm_adds_epi16(x, x), _mm_set1_epi16(-32767));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(output + 2 * i), doubled);
    }
    plain::DoubleSamples(samples + 2 * i, count - i, output + 2 * i);
}

} // namespace trnmpa::sse2
