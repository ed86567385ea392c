/// Tags before and behind the sound.
#pragma once

#include "mpa/source_window.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mpatool {

struct FileTag {
    std::string name; ///< kind and version: "ID3v1", "ID3v2.4", "APEv2", "Lyrics3v1"
    std::int64_t offset = 0;
    std::int64_t bytes = 0;

    std::int64_t End() const { return offset + bytes; }
};

/// ID3v2 and APE tags one after the other from the start of the file; ID3v1, Lyrics3, APE and ID3v2 tags one
/// before the other up to its end. All in the order of the file; what they hold is not looked at.
struct FileTags {
    std::vector<FileTag> leading;
    std::vector<FileTag> trailing;

    /// What lies between them.
    std::int64_t Begin() const { return leading.empty() ? 0 : leading.back().End(); }
    std::int64_t End(std::int64_t fileBytes) const {
        return trailing.empty() ? fileBytes : trailing.front().offset;
    }
};

/// A leading tag that claims more than the file has ends with it; no trailing one reaches into the leading
/// ones. A limited number is looked for at either end.
FileTags FindTags(trnmpa::SourceWindow& window, std::int64_t fileBytes);

} // namespace mpatool
