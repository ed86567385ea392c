/// What `mpatool check` finds in a file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mpatool {

enum class FindingKind {
    kLeadingTag,
    kTrailingTag,
    kPositions, ///< index and decoder see different frames
    kJunk,
    kCutFrame,    ///< another frame begins within a frame
    kSearchEnds,  ///< too many bytes without a header for the search of an index
    kFramesInTag, ///< bytes of a trailing tag that look like frames
    kCrc,
    kUnderrun, ///< main data that a frame points back to are not there
    kOverrun,  ///< main data would reach behind the frame
    kFormatChange,
    kTruncated,
    kIndex,      ///< the index beside the file is not of this file
    kUnreadable, ///< the module refuses the file or fails within it
};
inline constexpr std::size_t kFindingKinds = static_cast<std::size_t>(FindingKind::kUnreadable) + 1;

/// The name, shared by kinds that are one thing to users: "junk", "lost sync".
const char* FindingName(FindingKind kind);
/// "2 stretches of junk".
std::string FindingCountText(FindingKind kind, std::int64_t count);
/// False for what is merely worth knowing.
bool IsDamage(FindingKind kind);

/// One place, or several close together.
struct Finding {
    FindingKind kind = FindingKind::kJunk;
    std::int64_t offset = 0;
    std::int64_t end = 0;    ///< behind the last byte
    std::int64_t bytes = 0;  ///< what the kind counts in bytes, over all places
    std::int64_t frames = 0; ///< what it counts in frames
    std::int64_t places = 1;
    std::int64_t before = 0; ///< frames delivered before the place; of the last one when there are several
    double seconds = 0.0;    ///< of the sound at the first place
    std::string detail;      ///< what one place has to say for itself
};

/// One line about it, without its place.
std::string FindingText(const Finding& finding);

/// The findings of one file. Neighbours of one kind, with at most one frame between them, become one; of the
/// rest a limited number is kept and all are counted.
class FindingList {
public:
    static constexpr std::size_t kMostListed = 1000;

    void Add(const Finding& finding);

    /// By their places in the file.
    std::vector<Finding> Sorted() const;

    /// Findings that are counted but not kept.
    std::int64_t Unlisted() const { return unlisted_; }
    std::int64_t Count(FindingKind kind) const { return counts_[static_cast<std::size_t>(kind)]; }
    bool HasDamage() const;

private:
    struct Last {
        Finding finding;
        std::size_t place = kMostListed; ///< in the list; kMostListed: not kept
        bool exists = false;
    };

    std::vector<Finding> listed_;
    std::array<Last, kFindingKinds> last_;
    std::array<std::int64_t, kFindingKinds> counts_{};
    std::int64_t unlisted_ = 0;
};

} // namespace mpatool
