/// Paths beyond the length that the system's calls take as they stand.
#pragma once

#include <string>

namespace os {

/// The form of `path` that the file calls take whatever its length: a path whose full form is too long for
/// them is made absolute and gets the prefix "\\?\" ("\\?\UNC\" for a share); any other path stays as it is.
/// Empty when the path holds a zero or has no full form.
std::wstring ExtendedPath(const std::wstring& path);

} // namespace os
