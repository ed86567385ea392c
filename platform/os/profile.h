/// Integers from INI files.
#pragma once

#include <string>

namespace os {

/// The integer of `key` in `section` of the INI file `path`, read as GetPrivateProfileIntW reads it;
/// `fallback` when the file, the section or the key is missing.
int ReadProfileInt(const std::wstring& path, const std::wstring& section, const std::wstring& key,
                   int fallback);

} // namespace os
