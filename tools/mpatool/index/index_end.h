/// The end of a finished index, held against the media file.
#pragma once

#include <cstdint>
#include <string>

namespace mpatool {

/// A scan takes a read that fails for the end of the file and stops there. Throws ToolError unless the
/// `mediaBytes` bytes of the file can be read on from `end`, the end of the last frame listed, as far as the
/// search for another one looks.
void RequireReadableBehind(const std::wstring& media, std::int64_t end, std::int64_t mediaBytes);

} // namespace mpatool
