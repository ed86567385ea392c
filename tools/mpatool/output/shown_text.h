/// Foreign text among the tool's own: file names may hold what steers a terminal or forges a line.
#pragma once

#include <string>
#include <string_view>

namespace mpatool {

/// A path for people to read, in UTF-8. Control characters, line separators, marks that turn the direction of
/// writing and bytes that are no text are spelled out: "\x1b", "\u202e".
std::string ShownPath(const std::wstring& path);

/// The same for a text of several lines, whose ends stay.
std::string ShownText(std::string_view text);

} // namespace mpatool
