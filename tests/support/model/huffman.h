/// The Huffman coded lines of a granule (ISO/IEC 11172-3 clauses 2.4.2.7 and 2.4.3.4.2, table B.7).
#pragma once

#include "support/model/bit_reader.h"
#include "support/model/header.h"
#include "support/model/side_info.h"

#include <array>

namespace test::model {

struct QuantisedLines {
    std::array<int, 576> values{};
    int end = 0; ///< lines that were coded; all from here on are 0
};

/// First lines of regions 1 and 2, neither behind the end of the big values.
struct Regions {
    int first = 0;
    int second = 0;
};

Regions RegionsOf(const Header& header, const GranuleInfo& granule);

/// Reads from the end of the scale factors; `endBit` is the bit position behind the granule's last one. Big
/// values are read even behind it, quadruples are started only before it, and one that passes it is dropped.
QuantisedLines ReadLines(BitReader& bits, const Header& header, const GranuleInfo& granule,
                         std::size_t endBit);

} // namespace test::model
