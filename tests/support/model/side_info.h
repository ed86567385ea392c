/// Layer III side information (ISO/IEC 11172-3 clause 2.4.1.7, ISO/IEC 13818-3 clause 2.4.1.7).
#pragma once

#include "support/model/header.h"

#include <array>
#include <cstdint>
#include <span>

namespace test::model {

/// One channel of one granule.
struct GranuleInfo {
    int part23Length = 0; ///< bits of scale factors and Huffman codes
    int bigValues = 0;    ///< pairs, at most 288
    int globalGain = 0;
    int scalefacCompress = 0;
    bool windowSwitching = false;
    int blockType = 0;
    bool mixed = false;
    std::array<int, 3> tableSelect{};
    std::array<int, 3> subblockGain{};
    int region0Count = 0;
    int region1Count = 0;
    bool preflag = false; ///< MPEG-1 only; the scale factors tell it at the lower sampling frequencies
    bool scalefacScale = false;
    int count1Table = 0; ///< 0 is table A

    bool ShortBlocks() const { return windowSwitching && blockType == 2; }
};

struct SideInfo {
    int mainDataBegin = 0; ///< bytes
    int privateBits = 0;
    std::array<std::array<bool, 4>, 2> scfsi{};           ///< [channel][group of bands]
    std::array<std::array<GranuleInfo, 2>, 2> granules{}; ///< [granule][channel]
};

SideInfo ParseSideInfo(const Header& header, std::span<const std::uint8_t> bytes);

} // namespace test::model
