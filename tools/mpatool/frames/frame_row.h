/// One line of the frame table, in its three written forms.
#pragma once

#include "mpa/frame_walk.h"

#include <cstdint>
#include <string>

namespace mpatool {

struct FrameRow {
    std::int64_t number = 0;      ///< from 0; with an index, the number of its entry
    std::int64_t firstSample = 0; ///< per channel; below 0 for what the decoder's delay leaves out
    trnmpa::WalkedFrame frame;
};

/// Each appends to `text`, which saves a string for each of millions of frames.
void AppendReadable(std::string& text, const FrameRow& row);
void AppendCsv(std::string& text, const FrameRow& row);
/// An object without a line end.
void AppendJson(std::string& text, const FrameRow& row);

/// The lines above the rows.
std::string ReadableHeading();
std::string CsvHeading();

} // namespace mpatool
