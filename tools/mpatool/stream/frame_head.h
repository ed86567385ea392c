/// What stands at the front of a frame that has been found.
#pragma once

#include "decoder/bit_reader.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/side_info.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace mpatool {

/// The bytes behind header and CRC word that tell how a frame is made up, with zeros behind them.
class FrameHead {
public:
    static constexpr std::size_t kHeaderBytes = 4;
    static constexpr std::size_t kCrcBytes = 2;
    static constexpr std::size_t kBytes = 64;

    FrameHead(std::span<const std::uint8_t> frame, std::size_t from) {
        from = std::min(from, frame.size());
        std::copy_n(frame.begin() + static_cast<std::ptrdiff_t>(from), std::min(kBytes, frame.size() - from),
                    bytes_.begin());
    }

    trnmpa::BitReader Bits() const { return {bytes_.data(), static_cast<int>(kBytes)}; }
    std::span<const std::uint8_t, trnmpa::SideInfo::kMaximumBytes> SideInfo() const {
        return std::span(bytes_).first<trnmpa::SideInfo::kMaximumBytes>();
    }

private:
    std::array<std::uint8_t, kBytes + trnmpa::BitReader::kZerosBehind> bytes_{};
};

/// The place of a Layer III frame's side information in it.
inline std::size_t SideInfoStart(const trnmpa::DecoderHeader& header) {
    return FrameHead::kHeaderBytes + (header.hasCrc != 0 ? FrameHead::kCrcBytes : 0);
}

/// The side information of a Layer III frame; what is missing of it counts as zeros.
inline trnmpa::SideInfo SideInfoOf(const trnmpa::DecoderHeader& header, std::span<const std::uint8_t> frame) {
    return ParseSideInfo(header, FrameHead(frame, SideInfoStart(header)).SideInfo());
}

} // namespace mpatool
