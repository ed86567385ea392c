#include "os/stream_file.h"

#include "os/transfer.h"
#include "os/windows/disk_file.h"

#include <algorithm>
#include <utility>

namespace os {

namespace {

DWORD RightsOf(StreamAccess access) {
    switch (access) {
    case StreamAccess::kRead:
        return GENERIC_READ;
    case StreamAccess::kWrite:
        return GENERIC_WRITE;
    case StreamAccess::kReadWrite:
        break;
    }
    return GENERIC_READ | GENERIC_WRITE;
}

DWORD ShareModeOf(StreamSharing sharing) {
    switch (sharing) {
    case StreamSharing::kReaders:
        return FILE_SHARE_READ;
    case StreamSharing::kWriters:
        return FILE_SHARE_WRITE;
    case StreamSharing::kReadersAndWriters:
        return FILE_SHARE_READ | FILE_SHARE_WRITE;
    case StreamSharing::kNone:
        break;
    }
    return 0;
}

DWORD CountOf(std::size_t bytes) {
    constexpr std::size_t kMaximumBytes = std::size_t{1} << 30;
    return static_cast<DWORD>(std::min(bytes, kMaximumBytes));
}

} // namespace

bool StreamFile::Create(const std::wstring& path) {
    Close();
    handle_ =
        reinterpret_cast<std::intptr_t>(OpenDiskFile(path, GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS));
    return IsOpen();
}

bool StreamFile::Open(const std::wstring& path, StreamAccess access, StreamSharing sharing) {
    Close();
    handle_ = reinterpret_cast<std::intptr_t>(
        OpenDiskFile(path, RightsOf(access), ShareModeOf(sharing), OPEN_EXISTING));
    return IsOpen();
}

bool StreamFile::Close() {
    if (!IsOpen())
        return false;
    CloseHandle(ToHandle(std::exchange(handle_, kNoHandle)));
    return true;
}

std::optional<std::size_t> StreamFile::Read(std::span<std::uint8_t> destination) {
    if (!IsOpen())
        return std::nullopt;
    return TransferAll(destination.size(), [&](std::size_t done) -> std::int64_t {
        const std::span<std::uint8_t> rest = destination.subspan(done);
        DWORD bytes = 0;
        const BOOL good = ::ReadFile(ToHandle(handle_), rest.data(), CountOf(rest.size()), &bytes, nullptr);
        return good != 0 ? std::int64_t{bytes} : -1;
    });
}

std::optional<std::size_t> StreamFile::Write(std::span<const std::uint8_t> bytes) {
    if (!IsOpen())
        return std::nullopt;
    return TransferAll(bytes.size(), [&](std::size_t done) -> std::int64_t {
        const std::span<const std::uint8_t> rest = bytes.subspan(done);
        DWORD written = 0;
        const BOOL good =
            ::WriteFile(ToHandle(handle_), rest.data(), CountOf(rest.size()), &written, nullptr);
        return good != 0 ? std::int64_t{written} : -1;
    });
}

std::int64_t StreamFile::Seek(std::int64_t offset, std::uint32_t origin) {
    if (!IsOpen())
        return -1;
    LARGE_INTEGER place = {};
    place.QuadPart = offset;
    // The low half of a position may look like the failure; only the error tells them apart.
    SetLastError(NO_ERROR);
    const DWORD low =
        SetFilePointer(ToHandle(handle_), static_cast<LONG>(place.LowPart), &place.HighPart, origin);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR)
        return -1;
    place.LowPart = low;
    return place.QuadPart;
}

} // namespace os
