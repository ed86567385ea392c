/// Tags before and behind the sound.
#pragma once

#include "mpa/source_window.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mpatool {

struct FileTag {
    std::string name;
    std::int64_t offset = 0;
    std::int64_t bytes = 0;

    std::int64_t End() const { return offset + bytes; }
};

/// ID3v2 and APE tags one after the other from the start of the file. A tag that claims more than the file
/// has ends with it.
std::vector<FileTag> LeadingTags(trnmpa::SourceWindow& window, std::int64_t fileBytes);

/// ID3v1, Lyrics3, APE and ID3v2 tags one before the other up to the end of the file, none of which reaches
/// before `begin`; the first one in the file comes first.
std::vector<FileTag> TrailingTags(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t fileBytes);

} // namespace mpatool
