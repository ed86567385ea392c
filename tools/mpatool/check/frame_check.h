/// What can be wrong within a frame that has been found.
#pragma once

#include <cstdint>
#include <span>

namespace mpatool {

struct FrameFaults {
    bool hasWrongCrc = false;
    std::int32_t missingBytes = 0; ///< Layer III: main data before the frame that are not there
    std::int32_t excessBytes = 0;  ///< Layer III: main data that would lie behind the frame
};

/// Looks at frame after frame in the order in which they are decoded.
class FrameCheck {
public:
    /// `frame` holds a whole frame with a header that the decoder accepts. Of a Layer II frame without an
    /// allocation table (a combination of mode and bit rate that the standard forbids) the CRC is not looked
    /// at: nothing tells how much it covers.
    FrameFaults Check(std::span<const std::uint8_t> frame);

private:
    std::int64_t unusedBytes_ = 0; ///< at the end of the main data so far, used by no frame
};

} // namespace mpatool
