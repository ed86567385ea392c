#include "os/profile.h"

#include "os/windows/extended_path.h"

#include <string_view>
#include <windows.h>

namespace os {

namespace {

std::wstring WithoutPrefix(const std::wstring& path) {
    constexpr std::wstring_view kPrefix = L"\\\\?\\";
    constexpr std::wstring_view kSharePrefix = L"\\\\?\\UNC\\";
    if (path.starts_with(kSharePrefix))
        return L"\\\\" + path.substr(kSharePrefix.size());
    return path.starts_with(kPrefix) ? path.substr(kPrefix.size()) : path;
}

/// The call takes no path of MAX_PATH characters and more, in no form; the short names of the folders may
/// help.
std::wstring PathForProfile(const std::wstring& path) {
    if (path.size() < MAX_PATH)
        return path;
    const std::wstring extended = ExtendedPath(path);
    std::wstring shortPath(extended.size() + 1, L'\0');
    const DWORD length =
        GetShortPathNameW(extended.c_str(), shortPath.data(), static_cast<DWORD>(shortPath.size()));
    if (length == 0 || length >= shortPath.size())
        return path;
    shortPath.resize(length);
    return WithoutPrefix(shortPath);
}

} // namespace

int ReadProfileInt(const std::wstring& path, const std::wstring& section, const std::wstring& key,
                   int fallback) {
    const std::wstring place = PathForProfile(path);
    return static_cast<int>(GetPrivateProfileIntW(section.c_str(), key.c_str(), fallback, place.c_str()));
}

} // namespace os
