#include "os/output_file.h"

#include "os/console.h"
#include "os/error_text.h"
#include "os/paths.h"
#include "os/windows/disk_file.h"
#include "os/windows/extended_path.h"

#include <algorithm>
#include <atomic>
#include <string_view>
#include <utility>

namespace os {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Closes a handle at the end of its life.
class ScopedHandle {
public:
    explicit ScopedHandle(HANDLE handle) : handle_(handle) {}
    ~ScopedHandle() {
        if (IsValid())
            CloseHandle(handle_);
    }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;

    bool IsValid() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

/// Opens without any access, which suffices to ask about the file.
HANDLE OpenToAsk(const std::wstring& path) {
    return CreateFileW(ExtendedPath(path).c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool IsConsoleHandle(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

bool WriteToConsole(HANDLE console, std::span<const std::uint8_t> bytes) {
    const std::wstring text =
        WidenUtf8(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    DWORD written = 0;
    return WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
}

} // namespace

PathKind KindOfPath(const std::wstring& path) {
    // Merely opening a pipe's name would take one of its connections.
    if (path.starts_with(L"\\\\.\\"))
        return PathKind::kDevice;
    const ScopedHandle file(OpenToAsk(path));
    if (!file.IsValid()) {
        const DWORD reason = GetLastError();
        return reason == ERROR_FILE_NOT_FOUND || reason == ERROR_PATH_NOT_FOUND ? PathKind::kMissing
                                                                                : PathKind::kFile;
    }
    if (GetFileType(file.Get()) != FILE_TYPE_DISK)
        return PathKind::kDevice;
    BY_HANDLE_FILE_INFORMATION info = {};
    GetFileInformationByHandle(file.Get(), &info);
    return (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::kFolder : PathKind::kFile;
}

bool IsSameFile(const std::wstring& first, const std::wstring& second) {
    const ScopedHandle one(OpenToAsk(first));
    const ScopedHandle two(OpenToAsk(second));
    BY_HANDLE_FILE_INFORMATION a = {};
    BY_HANDLE_FILE_INFORMATION b = {};
    return one.IsValid() && two.IsValid() && GetFileInformationByHandle(one.Get(), &a) != 0 &&
           GetFileInformationByHandle(two.Get(), &b) != 0 &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
           a.nFileIndexLow == b.nFileIndexLow;
}

std::wstring ResolveLinks(const std::wstring& path) {
    const ScopedHandle file(OpenToAsk(path));
    if (!file.IsValid())
        return path;
    std::wstring resolved(32768, L'\0');
    const DWORD length =
        GetFinalPathNameByHandleW(file.Get(), resolved.data(), static_cast<DWORD>(resolved.size()), 0);
    if (length == 0 || length >= resolved.size())
        return path;
    resolved.resize(length);
    return resolved;
}

std::wstring TemporaryNameBeside(const std::wstring& path) {
    static std::atomic<unsigned> counter = 0;
    const std::size_t separator = path.find_last_of(L"\\/:");
    const std::wstring folder = separator == std::wstring::npos ? L"" : path.substr(0, separator + 1);
    return folder + L".unfinished-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(counter++);
}

std::wstring MoveFileTo(const std::wstring& from, const std::wstring& to, bool replace) {
    const std::wstring source = ExtendedPath(from);
    const std::wstring target = ExtendedPath(to);
    const DWORD flags = replace ? MOVEFILE_REPLACE_EXISTING : 0;
    return MoveFileExW(source.c_str(), target.c_str(), flags) != 0 ? L"" : LastErrorText();
}

bool DeleteFileAt(const std::wstring& path) {
    return DeleteFileW(ExtendedPath(path).c_str()) != 0;
}

bool OutputFile::Create(const std::wstring& path) {
    const HANDLE handle = CreateFileW(ExtendedPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    return Keep(reinterpret_cast<std::intptr_t>(handle), true);
}

bool OutputFile::CreateAlways(const std::wstring& path) {
    const HANDLE handle =
        OpenDiskFile(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS);
    return Keep(reinterpret_cast<std::intptr_t>(handle), true);
}

bool OutputFile::OpenExisting(const std::wstring& path) {
    const HANDLE handle =
        CreateFileW(ExtendedPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return Keep(reinterpret_cast<std::intptr_t>(handle), true);
}

bool OutputFile::OpenStandardOutput() {
    return Keep(reinterpret_cast<std::intptr_t>(GetStdHandle(STD_OUTPUT_HANDLE)), false);
}

bool OutputFile::SetPosition(std::int64_t position) {
    LARGE_INTEGER place = {};
    place.QuadPart = position;
    return SetFilePointerEx(ToHandle(handle_), place, nullptr, FILE_BEGIN) != 0;
}

WriteResult OutputFile::Write(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kMaximumBytes = std::size_t{1} << 20;
    if (IsConsoleHandle(ToHandle(handle_)) && WriteToConsole(ToHandle(handle_), bytes))
        return WriteResult::kDone;
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMaximumBytes));
        if (WriteFile(ToHandle(handle_), bytes.data(), wanted, &written, nullptr) == 0) {
            const DWORD reason = GetLastError();
            errorText_ = LastErrorText();
            const bool closed = reason == ERROR_BROKEN_PIPE || reason == ERROR_NO_DATA;
            return closed ? WriteResult::kClosedPipe : WriteResult::kFailed;
        }
        if (written == 0) {
            // Neither an error nor any progress: trying again could go on for ever.
            SetLastError(ERROR_WRITE_FAULT);
            errorText_ = LastErrorText();
            return WriteResult::kFailed;
        }
        bytes = bytes.subspan(written);
        if (!bytes.empty() && InterruptRequested())
            return WriteResult::kInterrupted;
    }
    return WriteResult::kDone;
}

bool OutputFile::Close() {
    const std::intptr_t handle = std::exchange(handle_, kNoHandle);
    if (handle == kNoHandle || !owned_)
        return true;
    if (CloseHandle(ToHandle(handle)) != 0)
        return true;
    errorText_ = LastErrorText();
    return false;
}

bool OutputFile::Keep(std::intptr_t handle, bool owned) {
    if (handle == kNoHandle || handle == 0) {
        errorText_ = LastErrorText();
        return false;
    }
    Close();
    handle_ = handle;
    owned_ = owned;
    return true;
}

} // namespace os
