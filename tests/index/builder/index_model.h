/// The index builder told once more, plainly and byte by byte, to compare the real one with.
#pragma once

#include "support/test_files.h"

#include <cstdint>

namespace test {

/// What must come of indexing a media file with a fresh builder.
struct IndexModel {
    bool opens = false; ///< SetInputFile gives 1
    Bytes index;        ///< the finished index file; of a file that does not open, the placeholder header
    std::uint32_t percent = 0;
    std::uint32_t framesIndexed = 0;
};

IndexModel ModelOfIndexing(const Bytes& media);

} // namespace test
