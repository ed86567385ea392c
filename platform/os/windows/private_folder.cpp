#include "os/private_folder.h"

#include "os/error_text.h"
#include "os/output_file.h"
#include "os/paths.h"
#include "os/windows/extended_path.h"

#include <windows.h>

namespace os {

namespace {

constexpr int kTries = 100;

/// Full, with a separator at its end; empty when the system does not tell.
std::wstring TemporaryFiles() {
    std::wstring folder(MAX_PATH + 1, L'\0');
    const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    folder.resize(length < folder.size() ? length : 0);
    return folder;
}

} // namespace

bool PrivateFolder::Fail() {
    errorText_ = LastErrorText();
    return false;
}

/// The user's temporary files are closed to others; what is made there inherits that.
bool PrivateFolder::Create(const std::wstring& nameStart) {
    const std::wstring stem = TemporaryFiles() + nameStart + std::to_wstring(GetCurrentProcessId()) + L"-";
    const ULONGLONG clock = GetTickCount64();
    for (int i = 0; i < kTries; ++i) {
        const std::wstring name = stem + std::to_wstring(clock + static_cast<ULONGLONG>(i));
        if (CreateDirectoryW(ExtendedPath(name).c_str(), nullptr) != 0) {
            path_ = name;
            return true;
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS)
            break;
    }
    return Fail();
}

/// Links to files want a right that few users have.
bool PrivateFolder::AddLibrary(const std::wstring& library) {
    if (path_.empty())
        return false;
    const std::wstring place = PathOf(library.substr(library.find_last_of(L"\\/:") + 1));
    constexpr BOOL kFailIfExists = TRUE;
    if (CopyFileW(ExtendedPath(library).c_str(), ExtendedPath(place).c_str(), kFailIfExists) == 0)
        return Fail();
    files_.push_back(place);
    // Else nobody could delete it again.
    SetFileAttributesW(ExtendedPath(place).c_str(), FILE_ATTRIBUTE_NORMAL);
    return true;
}

void PrivateFolder::Remove() {
    for (const std::wstring& file : files_)
        DeleteFileAt(file);
    files_.clear();
    if (!path_.empty())
        RemoveDirectoryW(ExtendedPath(path_).c_str());
    path_.clear();
}

} // namespace os
