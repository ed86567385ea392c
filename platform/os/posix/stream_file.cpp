#include "os/stream_file.h"

#include "os/posix/descriptor.h"
#include "os/transfer.h"

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace os {

namespace {

int FlagsOf(StreamAccess access) {
    switch (access) {
    case StreamAccess::kRead:
        return O_RDONLY;
    case StreamAccess::kWrite:
        return O_WRONLY;
    case StreamAccess::kReadWrite:
        break;
    }
    return O_RDWR;
}

} // namespace

bool StreamFile::Create(const std::wstring& path) {
    Close();
    handle_ = OpenRegularFile(path, O_RDWR | O_CREAT | O_TRUNC);
    return IsOpen();
}

bool StreamFile::Open(const std::wstring& path, StreamAccess access, StreamSharing) {
    Close();
    handle_ = OpenRegularFile(path, FlagsOf(access));
    return IsOpen();
}

bool StreamFile::Close() {
    if (!IsOpen())
        return false;
    // After EINTR the descriptor is gone all the same: no second try.
    ::close(static_cast<int>(std::exchange(handle_, kNoHandle)));
    return true;
}

std::optional<std::size_t> StreamFile::Read(std::span<std::uint8_t> destination) {
    if (!IsOpen())
        return std::nullopt;
    return TransferAll(destination.size(), [&](std::size_t done) {
        const std::span<std::uint8_t> rest = destination.subspan(done);
        return Uninterrupted([&] { return ::read(static_cast<int>(handle_), rest.data(), rest.size()); });
    });
}

std::optional<std::size_t> StreamFile::Write(std::span<const std::uint8_t> bytes) {
    if (!IsOpen())
        return std::nullopt;
    return TransferAll(bytes.size(), [&](std::size_t done) {
        const std::span<const std::uint8_t> rest = bytes.subspan(done);
        return Uninterrupted([&] { return ::write(static_cast<int>(handle_), rest.data(), rest.size()); });
    });
}

std::int64_t StreamFile::Seek(std::int64_t offset, std::uint32_t origin) {
    constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (!IsOpen() || origin >= std::size(kOrigins))
        return -1;
    static_assert(sizeof(off_t) == sizeof offset, "files of 2 GiB and more need 64-bit offsets");
    return ::lseek(static_cast<int>(handle_), offset, kOrigins[origin]);
}

} // namespace os
