#include "decoder/kernels/scale_lines.h"

#include "decoder/tables/requantise_tables.h"

namespace trnmpa {

void ScaleLines(std::span<const std::int32_t> lines, float gain, std::span<float> spectrum) {
    const double factor = static_cast<double>(gain);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::int32_t line = lines[i];
        const double power = line < 0 ? tables::kFourThirdsPower[-line] : -tables::kFourThirdsPower[line];
        spectrum[i] = static_cast<float>(factor * power);
    }
}

} // namespace trnmpa
