#include "os/file.h"

#include "os/paths.h"
#include "os/posix/descriptor.h"
#include "os/transfer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace os {

namespace {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "files of 2 GiB and more need 64-bit offsets");

ssize_t ReadOnce(int descriptor, std::span<std::uint8_t> destination, std::int64_t position) {
    return Uninterrupted(
        [&] { return ::pread(descriptor, destination.data(), destination.size(), position); });
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
    handle_ = OpenRegularFile(path, O_RDONLY);
    return IsOpen();
}

void File::Close() {
    // After EINTR the descriptor is gone all the same: no second try.
    if (IsOpen())
        ::close(static_cast<int>(handle_));
    handle_ = kNoHandle;
}

bool File::IsOpen() const {
    return handle_ != kNoHandle;
}

std::size_t File::ReadAt(std::int64_t position, std::span<std::uint8_t> destination) const {
    if (!IsOpen() || position < 0)
        return 0;
    const auto done = TransferAll(destination.size(), [&](std::size_t before) {
        return ReadOnce(static_cast<int>(handle_), destination.subspan(before),
                        position + static_cast<std::int64_t>(before));
    });
    return done.value_or(0);
}

std::int64_t File::Length() const {
    struct stat status = {};
    if (!IsOpen() || ::fstat(static_cast<int>(handle_), &status) != 0)
        return 0;
    return status.st_size;
}

bool FileExists(const std::wstring& path) {
    struct stat status = {};
    const bool hasZero = path.find(L'\0') != std::wstring::npos;
    return !hasZero && ::stat(NarrowToUtf8(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

} // namespace os
