#include "os/file.h"

#include "os/windows/extended_path.h"

#include <algorithm>
#include <utility>
#include <windows.h>

namespace os {

namespace {

HANDLE ToHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

HANDLE OpenForReading(const std::wstring& path) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

DWORD ReadOnce(HANDLE handle, std::span<std::uint8_t> destination, std::int64_t position) {
    constexpr std::size_t kMaximumBytes = std::size_t{1} << 30;
    const auto wanted = static_cast<DWORD>(std::min(destination.size(), kMaximumBytes));
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD bytes = 0;
    return ::ReadFile(handle, destination.data(), wanted, &bytes, &place) != 0 ? bytes : 0;
}

} // namespace

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, kNoHandle)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = std::exchange(other.handle_, kNoHandle);
    }
    return *this;
}

File::~File() {
    Close();
}

bool File::Open(const std::wstring& path) {
    Close();
    const std::wstring name = ExtendedPath(path);
    if (name.empty())
        return false;
    const HANDLE handle = OpenForReading(name);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    handle_ = reinterpret_cast<std::intptr_t>(handle);
    if (GetFileType(handle) == FILE_TYPE_DISK)
        return true;
    Close();
    return false;
}

void File::Close() {
    if (IsOpen())
        CloseHandle(ToHandle(handle_));
    handle_ = kNoHandle;
}

bool File::IsOpen() const {
    return handle_ != kNoHandle;
}

std::size_t File::ReadAt(std::int64_t position, std::span<std::uint8_t> destination) const {
    if (!IsOpen() || position < 0)
        return 0;
    std::size_t done = 0;
    while (done < destination.size()) {
        const DWORD bytes = ReadOnce(ToHandle(handle_), destination.subspan(done),
                                     position + static_cast<std::int64_t>(done));
        if (bytes == 0)
            break;
        done += bytes;
    }
    return done;
}

std::int64_t File::Length() const {
    LARGE_INTEGER length = {};
    if (!IsOpen() || GetFileSizeEx(ToHandle(handle_), &length) == 0)
        return 0;
    return length.QuadPart;
}

bool FileExists(const std::wstring& path) {
    const std::wstring name = ExtendedPath(path);
    const DWORD attributes = name.empty() ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

} // namespace os
