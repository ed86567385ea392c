#include "os/log_output.h"

#include "os/windows/extended_path.h"

#include <array>
#include <cstdio>
#include <windows.h>

namespace os {

std::wstring EnvironmentVariable(const wchar_t* name) {
    std::wstring value;
    DWORD needed = GetEnvironmentVariableW(name, nullptr, 0);
    while (needed > value.size()) {
        value.resize(needed);
        needed = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    }
    value.resize(needed);
    return value;
}

std::string LocalTime() {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02u %02u:%02u:%02u.%03u", unsigned{now.wYear},
                  unsigned{now.wMonth}, unsigned{now.wDay}, unsigned{now.wHour}, unsigned{now.wMinute},
                  unsigned{now.wSecond}, unsigned{now.wMilliseconds});
    return text.data();
}

bool AppendToFile(const std::wstring& path, std::string_view bytes) {
    const std::wstring name = ExtendedPath(path);
    const HANDLE file = CreateFileW(name.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    DWORD written = 0;
    const BOOL done = WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
    return done != 0 && written == bytes.size();
}

} // namespace os
