#include "os/error_text.h"

#include "os/windows/extended_path.h"

#include <windows.h>

namespace os {

std::wstring LastErrorText() {
    const DWORD code = GetLastError();
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                  0, text, static_cast<DWORD>(sizeof text / sizeof *text), nullptr);
    while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r' || text[length - 1] == L' '))
        --length;
    if (length == 0)
        return L"system error " + std::to_wstring(code);
    return std::wstring(text, length);
}

std::wstring WhyUnreadable(const std::wstring& path) {
    const std::wstring name = ExtendedPath(path);
    if (name.empty())
        return L"Not a file name";
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return L"Is a directory";
    const HANDLE file =
        CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return LastErrorText();
    CloseHandle(file);
    return {};
}

} // namespace os
