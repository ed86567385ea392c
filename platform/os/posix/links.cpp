#include "os/links.h"

#include "os/output_file.h"
#include "os/paths.h"

#include <fcntl.h>
#include <unistd.h>

namespace os {

namespace {

/// A symbolic link is this user's own file and can be deleted in any folder where it could be made.
bool MakeLink(const std::string& path, const std::string& link) {
    const std::string name = path.substr(path.rfind('/') + 1);
    if (::symlink(name.c_str(), link.c_str()) == 0)
        return true;
    // A hard link to a symbolic one is a copy of that and may lead across file systems.
    constexpr int kNotFollowing = 0;
    return ::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, link.c_str(), kNotFollowing) == 0;
}

} // namespace

bool LinkBeside(const std::wstring& path, const std::wstring& link) {
    if (path.find(L'\0') != std::wstring::npos || link.find(L'\0') != std::wstring::npos ||
        !MakeLink(NarrowToUtf8(path), NarrowToUtf8(link)))
        return false;
    if (IsSameFile(path, link))
        return true;
    DeleteFileAt(link);
    return false;
}

} // namespace os
