/// The file that the index builder writes.
#pragma once

#include "trcommontoolsr/file_ex.h"

#include <cstdint>
#include <string>

namespace trnmpa {

/// Writes a file; every failure is a result of 0. Not thread-safe.
class CFileWriter {
public:
    CFileWriter();
    virtual ~CFileWriter();
    CFileWriter(const CFileWriter&) = delete;
    CFileWriter& operator=(const CFileWriter&) = delete;

    /// Makes an empty file, or empties an existing one, and stands at its start. 1 on success.
    std::int32_t Open(const std::wstring& path);

    /// The position in bytes, cut to 32 bits; 0 when not open.
    std::int32_t GetPosition();

    /// Moves to `position` bytes from the start. 1 on success.
    std::int32_t SetPosition(std::uint32_t position);

    /// Writes all `count` bytes and gives `count`, or 0 when not all of them arrived.
    std::int32_t Write(const void* buffer, std::uint32_t count);

    /// Gives 1, also when nothing is open.
    std::int32_t Close();

private:
    TRCT_FileEx file_;
    std::int64_t handle_ = 0;
};

} // namespace trnmpa
