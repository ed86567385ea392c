/// The system's own words for what went wrong.
#pragma once

#include <string>

namespace os {

/// Text of the calling thread's last system error (errno, GetLastError), without a line break at its end. Ask
/// right after the call that failed.
std::wstring LastErrorText();

/// Why `path` cannot be read as a media file: missing, a folder, no permission. Empty when it can be opened.
std::wstring WhyUnreadable(const std::wstring& path);

} // namespace os
