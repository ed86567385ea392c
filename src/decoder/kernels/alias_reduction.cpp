#include "decoder/kernels/kernel_sets.h"

#include "decoder/tables/hybrid_tables.h"

namespace trnmpa::plain {

void ReduceAliases(float* spectrum, int boundaries) {
    float* boundary = spectrum + kLinesPerSubband;
    for (int i = 0; i < boundaries; ++i, boundary += kLinesPerSubband) {
        for (int k = 0; k < 8; ++k) {
            const double upper = boundary[-1 - k];
            const double lower = boundary[k];
            boundary[-1 - k] = static_cast<float>(upper * tables::kAliasCs[k] - lower * tables::kAliasCa[k]);
            boundary[k] = static_cast<float>(lower * tables::kAliasCs[k] + upper * tables::kAliasCa[k]);
        }
    }
}

} // namespace trnmpa::plain
