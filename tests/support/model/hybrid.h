/// Reordering, alias reduction and the inverse transform of layer III
/// (ISO/IEC 11172-3 clauses 2.4.3.4.8, 2.4.3.4.10.1 to 2.4.3.4.10.4).
#pragma once

#include "support/model/requantise.h"

#include <array>

namespace test::model {

/// One granule of one channel: [time slot][subband].
using SubbandSamples = std::array<std::array<double, 32>, 18>;

/// Second halves of the last transforms: [subband][time slot].
using Overlap = std::array<std::array<double, 18>, 32>;

/// Short blocks: from band, window, line to band, line, window. Other blocks stay as they are.
Spectrum Reorder(const Header& header, const GranuleInfo& granule, const Spectrum& spectrum);

/// Eight butterflies at each subband boundary: at all 31, unmixed short blocks included, which this decoder
/// does on purpose; at the first alone in mixed short blocks.
Spectrum ReduceAliases(const GranuleInfo& granule, const Spectrum& spectrum);

/// The windowed transform of 18 lines, 36 values, by its sum.
std::array<double, 36> Transform(int blockType, const double* lines);

/// Transform, overlap with the granule before, and inversion of the odd samples of odd subbands.
SubbandSamples Hybrid(const GranuleInfo& granule, const Spectrum& spectrum, Overlap& overlap);

} // namespace test::model
