/// The frames of a media file as its index lists them.
///
/// A header counts as a frame by itself: neither a following header nor the frames before have a say. That
/// sets the scan apart from the first-frame search of the probe, which wants a layer II frame confirmed, and
/// from the decoder, which passes over frames that do not agree with the first one. A leading tag, too, is
/// looked for by a rule of its own.
#pragma once

#include "index/index_format.h"
#include "mpa/file_header_sources.h"
#include "mpa/frame_header.h"
#include "mpa/source_window.h"

#include <cstdint>
#include <optional>

namespace trnmpa {

/// Where the scan begins: 0, or behind an ID3v2 tag. "ID3" is looked for at the even offsets below 62, and
/// the size behind the first one found, taken with all 8 bits of its bytes, counts from the start of the
/// file, wherever in it the text stands. Nothing for a size of 256 MiB or more.
std::optional<std::int64_t> IndexedTagSize(SourceWindow& window);

/// Walks over the frames of one open media file, which must outlive it.
class FrameScan {
public:
    explicit FrameScan(CFileReader& media);

    /// Finds the first frame, which gets no entry, and stores its format in `header`. False when there is
    /// none where the search looks.
    bool Start(MpaIndexHeader& header);

    /// The next frame; nothing when no further header is found within the search's reach.
    std::optional<MpaIndexEntry> Next();

    /// The end of the last frame found.
    std::int64_t Position() const { return position_; }

private:
    std::optional<MpaFrameHeader> NextFrame();

    FileReaderHeaderSource source_;
    SourceWindow window_;
    std::int64_t position_ = 0;
};

} // namespace trnmpa
