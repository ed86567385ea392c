#include "os/file.h"

#include "os/transfer.h"
#include "os/windows/disk_file.h"
#include "os/windows/extended_path.h"

#include <algorithm>
#include <utility>

namespace os {

namespace {

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
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    handle_ = reinterpret_cast<std::intptr_t>(OpenDiskFile(path, GENERIC_READ, kShareAll, OPEN_EXISTING));
    return IsOpen();
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
    const auto done = TransferAll(destination.size(), [&](std::size_t before) -> std::int64_t {
        return ReadOnce(ToHandle(handle_), destination.subspan(before),
                        position + static_cast<std::int64_t>(before));
    });
    return done.value_or(0);
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
