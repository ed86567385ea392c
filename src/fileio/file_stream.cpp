#include "fileio/file_stream.h"

#include <exception>
#include <optional>

namespace trnmpa {

namespace {

std::optional<os::StreamAccess> AccessOf(std::uint32_t mode) {
    switch (mode & 0x3) {
    case kStreamRead:
        return os::StreamAccess::kRead;
    case kStreamWrite:
        return os::StreamAccess::kWrite;
    case kStreamReadWrite:
        return os::StreamAccess::kReadWrite;
    default:
        return std::nullopt;
    }
}

os::StreamSharing SharingOf(std::uint32_t mode) {
    switch (mode & 0xF0) {
    case kStreamShareRead:
        return os::StreamSharing::kReaders;
    case kStreamShareWrite:
        return os::StreamSharing::kWriters;
    case kStreamShareBoth:
        return os::StreamSharing::kReadersAndWriters;
    default:
        return os::StreamSharing::kNone;
    }
}

std::uint32_t ResultOf(std::optional<std::size_t> passed) {
    return passed ? static_cast<std::uint32_t>(*passed) : kTransferFailed;
}

} // namespace

unsigned long CFileStream::AddRef() {
    return users_.Add();
}

unsigned long CFileStream::GetRef() {
    return users_.Get();
}

unsigned long CFileStream::Release() {
    const std::uint32_t left = users_.Remove();
    if (left == 0)
        delete this;
    return left;
}

std::int32_t CFileStream::Open(const std::wstring& path, std::uint32_t mode) {
    Close();
    try {
        if (mode == kStreamCreate)
            return file_.Create(path) ? 1 : 0;
        const std::optional<os::StreamAccess> access = AccessOf(mode);
        return access && file_.Open(path, *access, SharingOf(mode)) ? 1 : 0;
    } catch (const std::exception&) {
        return 0;
    }
}

std::int32_t CFileStream::Close() {
    return file_.Close() ? 1 : 0;
}

std::uint32_t CFileStream::Read(void* buffer, std::uint32_t count) {
    if (!file_.IsOpen())
        return 0;
    if (buffer == nullptr)
        return count == 0 ? 0 : kTransferFailed;
    return ResultOf(file_.Read({static_cast<std::uint8_t*>(buffer), count}));
}

std::uint32_t CFileStream::Write(const void* buffer, std::uint32_t count) {
    if (!file_.IsOpen())
        return 0;
    if (buffer == nullptr)
        return count == 0 ? 0 : kTransferFailed;
    return ResultOf(file_.Write({static_cast<const std::uint8_t*>(buffer), count}));
}

std::int64_t CFileStream::Seek(std::int64_t offset, std::uint32_t origin) {
    return file_.IsOpen() ? file_.Seek(offset, origin) : 0;
}

std::int64_t CFileStream::GetLength() {
    const std::int64_t position = GetPosition();
    const std::int64_t length = Seek(0, kSeekFromEnd);
    Seek(position, kSeekFromStart);
    return length;
}

std::int64_t CFileStream::GetPosition() {
    return Seek(0, kSeekFromPosition);
}

} // namespace trnmpa
