/// Huffman codes of a granule (ISO/IEC 11172-3, 2.4.1.7 and 2.4.3.4.6), requantised as they are read.
#pragma once

#include "decoder/bit_window.h"
#include "decoder/layer3/requantise.h"

#include <cstdint>

namespace trnmpa {

/// Reads `pairs` pairs of big values by table `table` (0 to 31) to line 2 `firstPair` and on. Tables without
/// codes give zeros.
void ReadPairs(BitWindow& window, std::uint32_t table, const LineGains& gains, int firstPair, int pairs,
               Spectrum spectrum);

/// Reads quadruples from line `first`, which is even, on, while there is room for four lines and `end`, the
/// position behind the granule's data, is not reached. Gives the index behind the last one; one that passes
/// the end does not count.
int ReadQuadruples(BitWindow& window, bool isTableB, const LineGains& gains, int first, int end,
                   Spectrum spectrum);

} // namespace trnmpa
