/// The media file that the index builder reads.
#pragma once

#include "trcommontoolsr/file_access.h"

#include <cstdint>
#include <string>

namespace trnmpa {

/// Reads a file through the family's buffered file access; its results are passed on unchanged. Positions and
/// lengths are bytes, 64-bit. Not thread-safe.
class CFileReader {
public:
    CFileReader();
    virtual ~CFileReader();
    CFileReader(const CFileReader&) = delete;
    CFileReader& operator=(const CFileReader&) = delete;

    /// Opens `path` and stands at its start; an earlier file is closed. 1 on success.
    std::int32_t Open(const std::wstring& path);
    void Close();

    /// Reads up to `count` bytes and gives how many arrived; 0 when `count` is not positive.
    std::int32_t Read(void* buffer, std::int32_t count);

    /// Both 0 when not open.
    std::int64_t GetPosition() const;
    std::int64_t GetLength() const;

    /// Behind the end is allowed. 1 on success.
    std::int32_t SetPosition(std::int64_t position);

private:
    TRCT_FileAccess file_;
};

} // namespace trnmpa
