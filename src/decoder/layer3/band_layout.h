/// How a granule's 576 lines, in bitstream order, divide into scale-factor bands and windows.
#pragma once

#include "decoder/frame_header.h"
#include "decoder/layer3/side_info.h"

#include <array>
#include <cstdint>
#include <span>

namespace trnmpa {

/// One long band, or one window of one short band.
struct BandSegment {
    std::uint16_t start = 0;
    std::uint16_t width = 0;
    std::uint8_t band = 0;
    std::uint8_t window = 0;
    bool isShort = false;

    constexpr int End() const { return start + width; }
};

/// The segments of a granule from line 0 to 576 without gaps. Three consecutive short segments are the three
/// windows of one band.
struct BandLayout {
    static constexpr int kMaximumSegments = 39;
    static constexpr int kPairs = 288;
    std::array<BandSegment, kMaximumSegments> segment = {};
    int count = 0;
    int longCount = 0;      ///< the long bands, from band 0 on, come first
    int firstShortBand = 0; ///< then three windows each of the short bands from this one on
    /// Which segment lines 2i and 2i + 1 are in. All segments have an even start.
    std::array<std::uint8_t, kPairs> segmentOfPair = {};

    std::span<const BandSegment> Segments() const {
        return {segment.data(), static_cast<std::size_t>(count)};
    }
};

const BandLayout& LayoutOf(const DecoderHeader& header, const GranuleInfo& info);

} // namespace trnmpa
