/// Whether the frames that an index lists are those that reading in order delivers.
#pragma once

#include "fileio/file_reader.h"
#include "index/builder/frame_scan.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// Scans the file as an index of it is built, in step with a walk over the frames that are delivered. Nothing
/// is written.
class IndexCompare {
public:
    /// Throws ToolError when the file cannot be opened.
    explicit IndexCompare(const std::wstring& path);

    /// The next frame that is delivered, by its place.
    void AddDelivered(std::int64_t offset);
    /// No more of them.
    void Finish();

    /// A place, and the frames delivered before it.
    struct Place {
        std::int64_t offset = 0;
        std::int64_t framesBefore = 0;
    };

    /// Where the index ends: behind its last frame. Nothing when none can be built.
    std::optional<Place> End() const;

    std::int64_t ListedOnly() const { return listedOnly_; }
    std::int64_t DeliveredOnly() const { return deliveredOnly_; }
    /// The first frame that only one of the two has. A last one that is cut off, which an index lists, does
    /// not count.
    std::optional<Place> FirstDifference() const { return firstDifference_; }

private:
    void Advance();
    void SkipEntry();
    void Differ(std::int64_t offset, std::int64_t& count);

    trnmpa::CFileReader media_;
    trnmpa::FrameScan scan_;
    bool hasIndex_ = false;
    std::optional<trnmpa::MpaIndexEntry> next_; ///< the entry that comes next
    std::int64_t delivered_ = 0;
    std::int64_t deliveredAtEnd_ = 0; ///< when the last entry had been read
    std::int64_t begin_ = 0;          ///< of the first entry
    std::int64_t listedOnly_ = 0;
    std::int64_t deliveredOnly_ = 0;
    std::optional<Place> firstDifference_;
};

} // namespace mpatool
