/// Layer III side information (ISO/IEC 11172-3, 2.4.1.7; ISO/IEC 13818-3, 2.4.1.7).
#pragma once

#include "decoder/frame_header.h"

#include <cstdint>
#include <span>

namespace trnmpa {

/// One granule of one channel.
struct GranuleInfo {
    std::uint32_t part23Length = 0; ///< bits of scale factors and Huffman data
    std::uint32_t bigValues = 0;    ///< pairs, at most 288
    std::uint32_t globalGain = 0;
    std::uint32_t scaleFactorCompress = 0;
    std::uint32_t windowSwitching = 0;
    std::uint32_t blockType = 0;
    std::uint32_t mixedBlock = 0;
    std::uint32_t tableSelect[3] = {};
    std::uint32_t subblockGain[3] = {};
    std::uint32_t region0Count = 0;
    std::uint32_t region1Count = 0;
    std::uint32_t preflag = 0;
    std::uint32_t scaleFactorScale = 0;
    std::uint32_t count1TableSelect = 0;

    bool IsShort() const { return blockType == 2; }
    bool IsMixedShort() const { return IsShort() && mixedBlock != 0; }
};

struct SideInfo {
    static constexpr int kMaximumBytes = 32;

    std::uint32_t mainDataBegin = 0;
    std::uint32_t privateBits = 0;
    std::uint32_t scaleFactorSelection[2][4] = {}; ///< by channel and band group (MPEG-1)
    GranuleInfo granule[2][2];                     ///< by granule and channel
};

/// Parses the side information of a frame, header.SideInfoBytes() bytes.
SideInfo ParseSideInfo(const DecoderHeader& header,
                       std::span<const std::uint8_t, SideInfo::kMaximumBytes> bytes);

} // namespace trnmpa
