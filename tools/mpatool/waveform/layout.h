/// What stands where in a picture of a stream.
#pragma once

#include "mpatool/waveform/drawing.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace mpatool {

/// What a picture is to show.
struct Contents {
    std::size_t channels = 1;
    bool bitRate = false; ///< a lane below the channels
    bool frames = false;  ///< two lanes: block types and reservoir
};

/// All plots lie one below the other and are equally wide. Small pictures do without words.
struct Layout {
    std::int32_t scale = 1; ///< of text and distances
    std::vector<Box> channels;
    std::optional<Box> bitRate;
    std::optional<Box> blocks;
    std::optional<Box> reservoir;
    bool hasTitle = false;
    bool hasLabels = false; ///< left of the plots
    bool hasAxis = false;

    std::int32_t Left() const { return channels.front().left; }
    std::int32_t PlotWidth() const { return channels.front().width; }
    std::int32_t Top() const { return channels.front().top; }
    std::int32_t Bottom() const;
};

inline constexpr std::int32_t kSmallestWidth = 100;
inline constexpr std::int32_t kLargestWidth = 20'000;
inline constexpr std::int32_t kSmallestHeight = 50;
inline constexpr std::int32_t kLargestHeight = 5000;
inline constexpr std::int32_t kUsualWidth = 1600;
inline constexpr std::int32_t kUsualHeight = 480;

/// `width` and `height` lie within the bounds above.
Layout LayOut(std::int32_t width, std::int32_t height, const Contents& contents);

} // namespace mpatool
