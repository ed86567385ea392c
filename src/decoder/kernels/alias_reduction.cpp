#include "decoder/kernels/alias_reduction.h"

#include "decoder/tables/hybrid_tables.h"

namespace trnmpa {

void ReduceAliases(std::span<float, 576> spectrum, int boundaries) {
    float* boundary = spectrum.data() + 18;
    for (int i = 0; i < boundaries; ++i, boundary += 18) {
        for (int k = 0; k < 8; ++k) {
            const double upper = boundary[-1 - k];
            const double lower = boundary[k];
            boundary[-1 - k] = static_cast<float>(upper * tables::kAliasCs[k] - lower * tables::kAliasCa[k]);
            boundary[k] = static_cast<float>(lower * tables::kAliasCs[k] + upper * tables::kAliasCa[k]);
        }
    }
}

} // namespace trnmpa
