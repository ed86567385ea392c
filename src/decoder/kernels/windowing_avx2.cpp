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
    const auto backwards = [&](int n) {
        const __m256i order = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
        return Round(_mm256_permutevar8x32_ps(_mm256_loadu_ps(sums + n), order));
    };
    outputs[0] = _mm256_packs_epi32(Round(_mm256_loadu_ps(sums)), Round(_mm256_loadu_ps(sums + 8)));
    outputs[1] = _mm256_packs_epi32(backwards(25), backwards(17));
}

void StoreMono(const WindowSums& sums, __m256i* pcm) {
    __m256i outputs[2];
    RoundRow(sums, outputs);
    for (int i = 0; i < 2; ++i)
        _mm256_storeu_si256(pcm + i, _mm256_permute4x64_epi64(outputs[i], _MM_SHUFFLE(3, 1, 2, 0)));
}

void StoreStereo(const WindowSums& left, const WindowSums& right, __m256i* pcm) {
    __m256i outputs[2][2];
    RoundRow(left, outputs[0]);
    RoundRow(right, outputs[1]);
    for (int i = 0; i < 2; ++i) {
        _mm256_storeu_si256(pcm + 2 * i, _mm256_unpacklo_epi16(outputs[0][i], outputs[1][i]));
        _mm256_storeu_si256(pcm + 2 * i + 1, _mm256_unpackhi_epi16(outputs[0][i], outputs[1][i]));
    }
}

void Store(const WindowSums* sums, int channels, std::int16_t* pcm) {
    auto* vectors = reinterpret_cast<__m256i*>(pcm);
    if (channels == 2) {
        StoreStereo(sums[0], sums[1], vectors);
        StoreStereo(sums[2], sums[3], vectors + 4);
        return;
    }
    for (int i = 0; i < kWindowedRows; ++i)
        StoreMono(sums[i], vectors + 2 * i);
}

} // namespace

void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm) {
    const int step = kWindowedRows / channels;
    if (count < step)
        return sse2::WindowSlots(source, channels, count, pcm);
    Centres centres[2];
    for (int channel = 0; channel < channels; ++channel)
        WindowCentres<Floats8>(source[channel].centre, count, centres[channel]);
    for (int next = 0; next < count; next += step) {
        // The last round may do some slots again.
        const int slot = next + step <= count ? next : count - step;
        WindowSums sums[kWindowedRows];
        WindowSlotsFrom<Floats8>(source, centres, channels, slot, sums);
        Store(sums, channels, pcm + 32 * channels * slot);
    }
}

} // namespace trnmpa::avx2
