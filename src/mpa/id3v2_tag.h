/// A leading ID3v2 tag, by the two rules of the module.
///
/// The probe and the sample reader have always disagreed about the same tag, and files in use depend on both:
///
///                         probe (SkipId3v2Tag)                sample reader (SkipTagAndPadding)
///     "ID3" in any case   yes, unless the version byte        yes
///                         behind it is 0x33, the digit 3
///     size bytes          8 bits each, so that a wrong tag    7 bits each
///                         may claim more than 256 MiB
///     behind the tag      nothing                             goes on to the next byte 0xFF
///
/// Neither honours a footer flag, and neither skips a second tag.
#pragma once

#include "mpa/header_source.h"

namespace trnmpa {

/// The probe's rule, from the source's position, which is the start of the file. Sets `firstFrameOffset` to
/// where the search for frames begins: 0 without a tag, else the tag's end. False when the tag claims 256 MiB
/// or more; `firstFrameOffset` is then the claimed size without the tag's own header.
bool SkipId3v2Tag(HeaderSource& source, std::int64_t& firstFrameOffset);

/// The sample reader's rule, from the start of the source. Sets `dataStart` to 0 without a tag, else to the
/// first byte 0xFF at or behind the tag's end; false when there is none up to the end of the data.
bool SkipTagAndPadding(HeaderSource& source, std::int64_t& dataStart);

} // namespace trnmpa
