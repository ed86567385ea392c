#include "os/links.h"

#include "os/output_file.h"
#include "os/windows/extended_path.h"

#include <windows.h>

namespace os {

namespace {

constexpr DWORD kWithoutPrivilege = 2; // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE

bool MakeLink(const std::wstring& path, const std::wstring& link) {
    const std::wstring target = ExtendedPath(path);
    const std::wstring name = ExtendedPath(link);
    if (target.empty() || name.empty())
        return false;
    // A hard link shares the attribute, and nothing that has it can be deleted.
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        return false;
    if (CreateHardLinkW(name.c_str(), target.c_str(), nullptr) != 0)
        return true;
    const std::wstring plain = path.substr(path.find_last_of(L"\\/:") + 1);
    return CreateSymbolicLinkW(name.c_str(), plain.c_str(), kWithoutPrivilege) != 0;
}

} // namespace

bool LinkBeside(const std::wstring& path, const std::wstring& link) {
    if (KindOfPath(link) != PathKind::kMissing || !MakeLink(path, link))
        return false;
    if (IsSameFile(path, link))
        return true;
    DeleteFileAt(link);
    return false;
}

} // namespace os
