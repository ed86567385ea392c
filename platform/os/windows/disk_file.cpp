#include "os/windows/disk_file.h"

#include "os/windows/extended_path.h"

namespace os {

HANDLE OpenDiskFile(const std::wstring& path, DWORD access, DWORD sharing, DWORD creation) {
    const std::wstring name = ExtendedPath(path);
    if (name.empty()) {
        SetLastError(ERROR_INVALID_NAME);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle =
        CreateFileW(name.c_str(), access, sharing, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE || GetFileType(handle) == FILE_TYPE_DISK)
        return handle;
    CloseHandle(handle);
    SetLastError(ERROR_INVALID_NAME);
    return INVALID_HANDLE_VALUE;
}

} // namespace os
