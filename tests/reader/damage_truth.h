/// Holding what was found in a damaged file against the truth about it.
#pragma once

#include "index/index_format.h"
#include "reader/search_model.h"
#include "support/damage/damaged_file.h"

#include <string>
#include <vector>

namespace test {

/// The pieces of a damaged file, by place.
class Truth {
public:
    explicit Truth(const DamagedFile& file) : file_(file), pieces_(file.Pieces()) {}

    const std::vector<Piece>& Pieces() const { return pieces_; }
    const CleanFrame& FrameOf(const Piece& piece) const { return file_.FrameOf(piece); }

    /// The piece that holds this byte; the file has it.
    const Piece& At(std::size_t offset) const;
    /// A whole frame begins there and is that long.
    bool IsWholeFrame(std::size_t offset, std::size_t length) const;

private:
    const DamagedFile& file_;
    std::vector<Piece> pieces_;
};

/// What the truth does not explain in a reading from its start on; empty when all is well. A whole frame that
/// is not delivered must be of another format or begin within a false sync: something taken that is no whole
/// frame. Whatever else is delivered must begin where no whole frame of the format lies, or where a false
/// sync left the search in the middle of one.
std::string UnexplainedReading(const Truth& truth, const ReadingModel& reading);

/// The same of what lies before the start of a reading without an index: an encoder's frame, frames that want
/// to be confirmed, and those of MPEG 2.5, which the first search can step over. A file that begins with a
/// whole frame of another kind opens.
std::string UnexplainedStart(const Truth& truth, const ReadingModel& reading);

/// The same of an index. There a whole frame may also be missing behind more than 4096 bytes without a
/// header, and, in MPEG 2.5, where no listed frame ends at it.
std::string UnexplainedIndex(const Truth& truth, std::size_t fileBytes,
                             const std::vector<trnmpa::MpaIndexEntry>& entries);

} // namespace test
