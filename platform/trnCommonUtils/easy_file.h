/// Stand-in for the library trnCommonUtils: block-reading file access.
#pragma once

#include "os/automation_string.h"
#include "os/block_reader.h"

#include <cstdint>

/// Reads a file in blocks. One object holds one open file; positions and lengths are bytes. Not thread-safe.
/// The argument `wait` is the library's own; the stand-in ignores it.
class TRN_EasyFile {
public:
    /// Size of the blocks in bytes. 0 stands for 64 KiB; the stand-in never holds more than 4 MiB.
    void SetReadBlockSize(std::uint32_t bytes);

    /// Opens `path` for reading; an earlier file is closed. 1 on success, else 0 (every read then gives 0
    /// bytes). Throws std::bad_alloc.
    std::int32_t Open(CComBSTR path);
    void Close();

    /// Reads up to `count` bytes and gives how many were read, 0 when no file is open.
    std::uint32_t Read(void* buffer, std::uint32_t count, std::int32_t wait);

    /// 0 when no file is open.
    std::int64_t GetPos() const;

    /// Moves the position, from the start of the file; behind the end is allowed. 1 on success, 0 below 0 or
    /// when no file is open.
    std::int32_t SetPos(std::int64_t position, std::int32_t wait);

    /// Length of the file; `refresh` asks the system again (the stand-in always does). 0 when no file is
    /// open.
    std::int64_t GetFileSize(bool refresh) const;

private:
    os::BlockReader reader_;
};
