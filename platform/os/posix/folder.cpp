#include "os/folder.h"

#include "os/error_text.h"
#include "os/paths.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>

namespace os {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

void AddEntry(DIR* folder, const char* name, FolderListing& listing) {
    const int descriptor = ::dirfd(folder);
    struct stat status = {};
    if (::fstatat(descriptor, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return; // gone since
    if (S_ISDIR(status.st_mode)) {
        listing.folders.push_back(WidenUtf8(name));
        return;
    }
    const bool leadsSomewhere = !S_ISLNK(status.st_mode) || ::fstatat(descriptor, name, &status, 0) == 0;
    if (!leadsSomewhere || S_ISREG(status.st_mode))
        listing.files.push_back(WidenUtf8(name));
}

} // namespace

FolderListing ListFolder(const std::wstring& path) {
    FolderListing listing;
    errno = ENOENT; // of a path with a zero in it
    const Folder folder(path.find(L'\0') == std::wstring::npos ? ::opendir(NarrowToUtf8(path).c_str())
                                                               : nullptr);
    if (folder == nullptr) {
        listing.failure = LastErrorText();
        return listing;
    }
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(folder.get());
        if (entry == nullptr)
            break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            AddEntry(folder.get(), entry->d_name, listing);
    }
    if (errno != 0)
        listing.failure = LastErrorText();
    std::ranges::sort(listing.files);
    std::ranges::sort(listing.folders);
    return listing;
}

} // namespace os
