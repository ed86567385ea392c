/// A leading ID3v2 tag, by the rules of the probe, the sample reader and the slice reader.
///
/// They have always disagreed about the same tag, and files in use depend on each:
///
///                         probe (SkipId3v2Tag)         readers (SkipTagAndPadding)
///     "ID3" in any case   yes, unless the version      yes
///                         byte behind it is 0x33,
///                         the digit 3
///     size bytes          8 bits each                  sample reader 7 bits each, slice reader 8
///     behind the tag      nothing                      goes on to the next byte 0xFF
///
/// With 8 bits a wrong tag may claim 256 MiB or more, which is refused. Neither rule honours a footer flag or
/// skips a second tag. (The index builder looks for tags by yet another rule.)
#pragma once

#include "mpa/header_source.h"

namespace trnmpa {

/// The probe's rule, from the source's position, which is the start of the file. Sets `firstFrameOffset` to
/// where the search for frames begins: 0 without a tag, else the tag's end. False when the tag claims 256 MiB
/// or more; `firstFrameOffset` is then the claimed size without the tag's own header.
bool SkipId3v2Tag(HeaderSource& source, std::int64_t& firstFrameOffset);

/// How many bits of each size byte count.
enum class TagSizeBits : std::uint8_t { kSeven = 0x7F, kEight = 0xFF };

/// The readers' rule, from the start of the source. Sets `dataStart` to 0 without a tag, else to the first
/// byte 0xFF at or behind the tag's end; false when there is none up to the end of the data, or the tag
/// claims 256 MiB or more.
bool SkipTagAndPadding(HeaderSource& source, std::int64_t& dataStart,
                       TagSizeBits sizeBits = TagSizeBits::kSeven);

} // namespace trnmpa
