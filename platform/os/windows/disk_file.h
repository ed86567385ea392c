/// What the file classes of this system share.
#pragma once

#include <cstdint>
#include <string>
#include <windows.h>

namespace os {

inline HANDLE ToHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

/// A handle to the file `path` on a disk, opened as CreateFileW does it; INVALID_HANDLE_VALUE, with a reason
/// in GetLastError, also for folders, pipes, devices and paths with a zero in them.
HANDLE OpenDiskFile(const std::wstring& path, DWORD access, DWORD sharing, DWORD creation);

} // namespace os
