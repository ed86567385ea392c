#include "os/folder.h"

#include "os/error_text.h"
#include "os/windows/extended_path.h"

#include <algorithm>
#include <string_view>
#include <windows.h>

namespace os {

namespace {

/// Folders behind a cloud store's reparse points are folders all the same.
bool IsLink(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (entry.dwReserved0 == IO_REPARSE_TAG_SYMLINK || entry.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

void AddEntry(const WIN32_FIND_DATAW& entry, FolderListing& listing) {
    const std::wstring_view name = entry.cFileName;
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        listing.files.emplace_back(name);
    else if (name != L"." && name != L".." && !IsLink(entry))
        listing.folders.emplace_back(name);
}

} // namespace

FolderListing ListFolder(const std::wstring& path) {
    FolderListing listing;
    WIN32_FIND_DATAW entry = {};
    // An empty path would become that of the root.
    const std::wstring pattern = path.empty() ? L"" : ExtendedPath(path + L"\\*");
    const HANDLE search = FindFirstFileW(pattern.c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        listing.failure = LastErrorText();
        return listing;
    }
    do {
        AddEntry(entry, listing);
    } while (FindNextFileW(search, &entry) != 0);
    if (GetLastError() != ERROR_NO_MORE_FILES)
        listing.failure = LastErrorText();
    FindClose(search);
    std::ranges::sort(listing.files);
    std::ranges::sort(listing.folders);
    return listing;
}

} // namespace os
