/// Which frames of a file can be reached: the rules of the searches told once more, plainly and byte by byte.
#pragma once

#include "support/model/header.h"
#include "support/test_files.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace test {

/// A header that the decoder's search stopped at, and what was taken for its frame.
struct TakenFrame {
    std::size_t searchedFrom = 0; ///< where the search began
    std::size_t offset = 0;       ///< of the header
    std::size_t taken = 0;        ///< bytes consumed: the whole frame, or the head of one that is passed over
    bool isDelivered = false;
    model::Header header;
};

/// How one reading from the start goes.
struct ReadingModel {
    bool opens = false;
    std::size_t first = 0; ///< the first frame that is found
    std::size_t start = 0; ///< where the reading begins: there, or behind an "Info" frame
    model::Header format;  ///< of the frame that the others must agree with
    std::vector<TakenFrame> frames;
    /// The header whose frame reaches behind the end of the file, which ends the reading. Nothing where it
    /// ends in the search for one.
    std::optional<std::size_t> cutFrame;
    bool isCutInCrcWord = false;

    std::vector<TakenFrame> Delivered() const;
};

/// Without an index: a tag is skipped, the first frame looked for within 4096 bytes (in Layer II with another
/// header at its end), an "Info" frame passed over. From there on:
/// - a header counts when it is valid and agrees with the first one in version bit, layer and sample-rate
///   index; bytes that cannot begin one are stepped over, however many;
/// - a frame that agrees in sample rate and channels too is delivered, the search goes on at its end;
/// - of another the header, CRC word and side information are taken, the search goes on behind them;
/// - a frame that reaches behind the end of the file ends everything.
ReadingModel ReadingWithoutIndex(const Bytes& file);

/// With an index whose first entry is that place; the frame there says what the others must agree with.
ReadingModel ReadingFrom(const Bytes& file, std::size_t firstEntry);

} // namespace test
