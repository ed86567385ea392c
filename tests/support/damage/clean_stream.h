/// A whole stream and where its frames lie: what damage is done to.
#pragma once

#include "support/bitstream/stream.h"
#include "support/model/header.h"
#include "support/test_files.h"

#include <cstddef>
#include <vector>

namespace test {

struct CleanFrame {
    std::size_t offset = 0;
    std::size_t length = 0; ///< bytes, header included
    model::Header header;
};

struct CleanStream {
    Bytes bytes;
    std::vector<CleanFrame> frames; ///< back to back from offset 0
};

/// The frames of a written stream.
CleanStream CleanStreamOf(const bitstream::Stream& stream);

/// The first frames of a file, at most `mostFrames` of them, which must lie back to back from its start. An
/// encoder's frame with "Info" or "Xing" counts as a frame. Throws std::invalid_argument for another file.
CleanStream FirstFramesOf(const Bytes& file, std::size_t mostFrames);

} // namespace test
