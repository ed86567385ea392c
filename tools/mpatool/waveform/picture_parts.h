/// The parts that a picture is drawn of, one over the other.
#pragma once

#include "mpatool/waveform/picture.h"
#include "mpatool/waveform/time_axis.h"

#include <vector>

namespace mpatool {

/// The box of a column over the whole height of a plot.
Box ColumnBox(const Box& plot, const Columns& columns, std::size_t column);

/// The file's name and what the colours mean.
void DrawTitle(Drawing& drawing, const Layout& layout, const PictureFacts& facts);

void DrawTimeAxis(Drawing& drawing, const Layout& layout, const std::vector<TimeMark>& marks);

/// The channels: peaks, RMS on top, marks at the edges where full scale is reached.
void DrawChannels(Drawing& drawing, const Layout& layout, const PictureFacts& facts);

/// The lanes below them.
void DrawLanes(Drawing& drawing, const Layout& layout, const PictureFacts& facts);

} // namespace mpatool
