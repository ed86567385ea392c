/// What folders hold.
#pragma once

#include <string>
#include <vector>

namespace os {

/// The names in one folder, each kind sorted.
struct FolderListing {
    std::vector<std::wstring> files;   ///< regular files; links to them and links that lead nowhere too
    std::vector<std::wstring> folders; ///< without links to folders, so that no walk goes in circles
    std::wstring failure;              ///< the system's reason why names are missing; empty when none are
};

FolderListing ListFolder(const std::wstring& path);

} // namespace os
