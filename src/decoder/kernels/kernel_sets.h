/// The versions of the kernels; KernelTable tells what each does. A file that is compiled for
/// more than every processor has may hold no code that the linker could merge with another file's: no
/// templates or inline functions with external linkage.
#pragma once

#include "decoder/kernels/kernel_table.h"

namespace trnmpa {

/// 1 / sqrt(2), of mid/side stereo.
inline constexpr double kHalfRoot = 0.7071067811865476;

namespace plain {

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target);
void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm);
void UndoMidSide(float* left, float* right, std::size_t count);
void ReduceAliases(float* spectrum, int boundaries);
void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots);
void ScaleSamples(const std::int32_t* samples, const std::int32_t* centres, const double* factors, int slots,
                  float* subbands);
void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output);

} // namespace plain

// On 64-bit x86 processors.
namespace sse2 {

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target);
void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm);
void UndoMidSide(float* left, float* right, std::size_t count);
void ReduceAliases(float* spectrum, int boundaries);
void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots);
void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output);

} // namespace sse2

namespace avx2 {

void TransformSlots(const float* slots, int channels, int count, bool invertFrequency,
                    const SynthesisRows* target);
void WindowSlots(const SynthesisRows* source, int channels, int count, std::int16_t* pcm);
void UndoMidSide(float* left, float* right, std::size_t count);
void ReduceAliases(float* spectrum, int boundaries);
void InverseMdct(const float* lines, int blockType, int count, float* overlap, float* slots);
void ScaleSamples(const std::int32_t* samples, const std::int32_t* centres, const double* factors, int slots,
                  float* subbands);
void DoubleSamples(const std::uint8_t* samples, std::size_t count, std::uint8_t* output);

} // namespace avx2

} // namespace trnmpa
