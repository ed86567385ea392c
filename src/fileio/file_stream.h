/// The unbuffered file stream.
#pragma once

#include "fileio/file_stream_interface.h"
#include "fileio/reference_count.h"
#include "os/stream_file.h"

namespace trnmpa {

/// Each operation is a call of the operating system. Any Unicode path works; folders, pipes, devices and
/// paths with a zero in them are refused without waiting. Nothing is thrown.
class CFileStream : public IFileStream {
public:
    CFileStream() = default;

    unsigned long AddRef() override;
    unsigned long GetRef() override;
    unsigned long Release() override;
    std::int32_t Open(const std::wstring& path, std::uint32_t mode) override;
    std::int32_t Close() override;
    std::uint32_t Read(void* buffer, std::uint32_t count) override;
    std::uint32_t Write(const void* buffer, std::uint32_t count) override;
    /// A Seek that fails leaves the position where it was.
    std::int64_t Seek(std::int64_t offset, std::uint32_t origin) override;
    std::int64_t GetLength() override;
    std::int64_t GetPosition() override;
    ~CFileStream() override = default;

private:
    os::StreamFile file_;
    ReferenceCount users_;
};

} // namespace trnmpa
