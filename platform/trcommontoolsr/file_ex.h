/// Stand-in for the library trcommontoolsr: files to write.
#pragma once

#include "os/automation_string.h"
#include "os/output_file.h"

#include <cstdint>

/// The library's settings of a file object. What the numbers mean is the library's own business; the stand-in
/// ignores them.
struct TRCT_FILE_EX_SETTINGS {
    std::int32_t leading[4] = {};
    CComBSTR text;
    std::int32_t trailing[2] = {};
};

/// The values of the system's own file calls, as far as they are used.
inline constexpr std::uint32_t TRCT_ACCESS_READ_WRITE = 0xC0000000;
inline constexpr std::uint32_t TRCT_SHARE_READ_WRITE = 3;
inline constexpr std::uint32_t TRCT_CREATE_ALWAYS = 2;
inline constexpr std::uint32_t TRCT_ATTRIBUTE_NORMAL = 128;
inline constexpr std::uint32_t TRCT_SEEK_CURRENT = 1;

/// Writes a file, unbuffered. One object holds one open file; positions are bytes. Not thread-safe.
///
/// Storage paths lead where TRCT_FileAccess finds them.
class TRCT_FileEx {
public:
    /// Gives 1.
    std::int32_t Initialize(const TRCT_FILE_EX_SETTINGS& settings);

    /// Makes an empty file; an existing regular file of that name is emptied. Gives a handle, which says just
    /// whether it worked: 0 when not. The stand-in serves one combination of the arguments behind `path`:
    /// TRCT_ACCESS_READ_WRITE, TRCT_SHARE_READ_WRITE, no security attributes, TRCT_CREATE_ALWAYS,
    /// TRCT_ATTRIBUTE_NORMAL and no template; anything else gives 0.
    std::int64_t Create(CComBSTR path, std::uint32_t access, std::uint32_t sharing, void* security,
                        std::uint32_t creation, std::uint32_t attributes, std::int64_t templateHandle);

    /// Moves by `distance` from `origin` (the stand-in serves TRCT_SEEK_CURRENT with 0) and gives the new
    /// position; 0 when no file is open.
    std::int64_t Seek(std::int64_t distance, std::uint32_t origin);

    /// Moves to `position` from the start. 1 on success, else 0.
    std::int32_t SetPosition(std::int64_t position);

    /// Writes `count` bytes and gives how many arrived; 0 when not all did, or no file is open.
    std::uint32_t Write(const void* buffer, std::uint32_t count);

    /// Closes the open file, if any. Gives 1; 0 when the system reports only now that something was not
    /// written.
    std::int32_t Close();

private:
    os::OutputFile file_;
    std::int64_t position_ = 0;
    bool open_ = false;
};
