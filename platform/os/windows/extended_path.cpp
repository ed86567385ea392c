#include "os/windows/extended_path.h"

#include "os/paths.h"

#include <windows.h>

namespace os {

namespace {

/// Below MAX_PATH, since some calls keep room for a file name of 8 + 3 characters.
constexpr std::size_t kLongestPlainPath = MAX_PATH - 13;

bool IsDevicePath(const std::wstring& path) {
    return path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\");
}

} // namespace

std::wstring FullPath(const std::wstring& path) {
    std::wstring full;
    DWORD needed = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    while (needed > full.size()) {
        full.resize(needed);
        needed = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    }
    full.resize(needed);
    return full;
}

std::wstring ExtendedPath(const std::wstring& path) {
    if (path.find(L'\0') != std::wstring::npos)
        return {};
    if (IsDevicePath(path))
        return path;
    const std::wstring full = FullPath(path);
    if (full.empty())
        return {};
    if (full.size() <= kLongestPlainPath || IsDevicePath(full))
        return path;
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

} // namespace os
