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
    const auto backwards = [&](int n) {
        const __m128 x = _mm_loadu_ps(sums + n);
        return Round(_mm_shuffle_ps(x, x, _MM_SHUFFLE(0, 1, 2, 3)));
    };
    for (int i = 0; i < 2; ++i) {
        outputs[i] =
            _mm_packs_epi32(Round(_mm_loadu_ps(sums + 8 * i)), Round(_mm_loadu_ps(sums + 8 * i + 4)));
        outputs[2 + i] = _mm_packs_epi32(backwards(29 - 8 * i), backwards(25 - 8 * i));
    }
}

void StoreMono(const WindowSums& sums, __m128i* pcm) {
    __m128i outputs[4];
    RoundRow(sums, outputs);
    for (int i = 0; i < 4; ++i)
        _mm_storeu_si128(pcm + i, outputs[i]);
}

void StoreStereo(const WindowSums& left, const WindowSums& right, __m128i* pcm) {
    __m128i outputs[2][4];
    RoundRow(left, outputs[0]);
    RoundRow(right, outputs[1]);
    for (int i = 0; i < 4; ++i) {
        _mm_storeu_si128(pcm + 2 * i, _mm_unpacklo_epi16(outputs[0][i], outputs[1][i]));
        _mm_storeu_si128(pcm + 2 * i + 1, _mm_unpackhi_epi16(outputs[0][i], outputs[1][i]));
    }
}

void Store(const WindowSums* sums, int channels, std::int16_t* pcm) {
    auto* vectors = reinterpret_cast<__m128i*>(pcm);
    if (channels == 2) {
        StoreStereo(sums[0], sums[1], vectors);
        StoreStereo(sums[2], sums[3], vectors + 8);
        return;
    }
    for (int i = 0; i < kWindowedRows; ++i)
        StoreMono(sums[i], vectors + 4 * i);
}

} // namespace

void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    const int step = kWindowedRows / channels;
    if (count < step)
        return plain::WindowSlots(source, channels, count, pcm);
    Centres centres[2];
    for (int channel = 0; channel < channels; ++channel)
        WindowCentres<Floats4>(source[channel].centre, count, centres[channel]);
    for (int next = 0; next < count; next += step) {
        // The last round may do some slots again.
        const int slot = next + step <= count ? next : count - step;
        WindowSums sums[kWindowedRows];
        WindowSlotsFrom<Floats4>(source, centres, channels, slot, sums);
        Store(sums, channels, pcm + 32 * channels * slot);
    }
}

} // namespace trnmpa::sse2
