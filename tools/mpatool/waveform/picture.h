/// The picture of a stream.
#pragma once

#include "mpatool/waveform/drawing.h"
#include "mpatool/waveform/frame_columns.h"
#include "mpatool/waveform/layout.h"
#include "mpatool/waveform/peak_columns.h"

#include <cstdint>
#include <string>

namespace mpatool {

struct PictureFacts {
    std::string title;            ///< UTF-8
    std::uint32_t sampleRate = 0; ///< Hz
    const Columns& columns;       ///< as many as `layout` is wide
    const PeakColumns& peaks;
    const FrameColumns* frames = nullptr; ///< none where no lane needs them
};

/// Draws the picture, as far as `layout` has room for its parts.
Drawing DrawPicture(std::int32_t width, std::int32_t height, const Layout& layout, const PictureFacts& facts);

} // namespace mpatool
