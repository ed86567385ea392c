#include "os/file.h"

#include "os/paths.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace os {

namespace {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "files of 2 GiB and more need 64-bit offsets");

int OpenForReading(const char* path) {
    // Non-blocking: opening a pipe without a writer would wait for ever. Regular files take no notice.
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    int descriptor = -1;
    do {
        descriptor = ::open(path, kFlags);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

ssize_t ReadOnce(int descriptor, std::span<std::uint8_t> destination, std::int64_t position) {
    ssize_t bytes = -1;
    do {
        bytes = ::pread(descriptor, destination.data(), destination.size(), position);
    } while (bytes < 0 && errno == EINTR);
    return bytes;
}

bool HasZero(const std::wstring& path) {
    return path.find(L'\0') != std::wstring::npos;
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
    if (HasZero(path))
        return false;
    const int descriptor = OpenForReading(NarrowToUtf8(path).c_str());
    if (descriptor < 0)
        return false;
    handle_ = descriptor;
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        return true;
    Close();
    return false;
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
    std::size_t done = 0;
    while (done < destination.size()) {
        const ssize_t bytes = ReadOnce(static_cast<int>(handle_), destination.subspan(done),
                                       position + static_cast<std::int64_t>(done));
        if (bytes <= 0)
            break;
        done += static_cast<std::size_t>(bytes);
    }
    return done;
}

std::int64_t File::Length() const {
    struct stat status = {};
    if (!IsOpen() || ::fstat(static_cast<int>(handle_), &status) != 0)
        return 0;
    return status.st_size;
}

bool FileExists(const std::wstring& path) {
    struct stat status = {};
    return !HasZero(path) && ::stat(NarrowToUtf8(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

} // namespace os
