/// Comparing an index with its media file.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace mpatool {

struct IndexVerdict {
    enum class Kind { kGood, kStale, kMissing };

    Kind kind = Kind::kGood;
    std::int64_t frames = 0; ///< entries found right
    std::string difference;  ///< of a stale index: the first one
};

/// Walks over the media file as a new index would be built. `progress` is told how far it is, in bytes of
/// the media file and in entries. Writes nothing. Throws ToolError when either file cannot be read, and
/// Interrupted.
IndexVerdict VerifyIndex(const std::wstring& file,
                         const std::function<void(std::int64_t bytes, std::int64_t entries)>& progress);

} // namespace mpatool
