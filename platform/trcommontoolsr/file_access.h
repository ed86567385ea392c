/// Stand-in for the library trcommontoolsr: plain file access.
#pragma once

#include "os/automation_string.h"
#include "os/block_reader.h"

#include <cstdint>
#include <string>

/// What the module hands to TRCT_FileAccess::Initialize, and the one mode of OpenFile.
inline constexpr std::int32_t TRCT_INITIAL_VALUE = 32;
inline constexpr std::int32_t TRCT_OPEN_FOR_READING = 1;

/// Reads a file. One object holds one open file; positions and lengths are bytes. Not thread-safe.
///
/// Paths that contain "dqs:\" name files of the family's storage; the stand-in looks what follows it up below
/// the folder set with SetStorageFolder and fails cleanly when none is set.
class TRCT_FileAccess {
public:
    TRCT_FileAccess() = default;

    /// `value` is the library's own setting; the stand-in ignores it. Gives 1.
    std::int32_t Initialize(std::int32_t value);

    /// Opens `path` for reading (TRCT_OPEN_FOR_READING) and stands at its start; an earlier file is
    /// closed in any case. 1 on success, else 0.
    std::int32_t OpenFile(CComBSTR path, std::int32_t mode);

    /// Closes the open file, if any. Gives 1.
    std::int32_t CloseFile();

    /// Reads up to `count` bytes and gives how many were read, 0 when no file is open.
    std::uint32_t Read(void* buffer, std::uint32_t count);

    /// Both 0 when no file is open.
    std::int64_t GetPosition() const;
    std::int64_t GetLength() const;

    /// Moves the position, from the start of the file; behind the end is allowed. 1 on success, 0 below 0 or
    /// when no file is open.
    std::int32_t SetPosition(std::int64_t position);

    /// The folder that stands for the storage behind "dqs:\" paths, for the whole process; empty for none
    /// (the default). Backslashes (and slashes) of the storage path separate folders; names that are dots and
    /// blanks only, or hold a colon, are refused, so that no storage path leads out of the folder. Any thread
    /// may call this; files that are open stay open.
    static void SetStorageFolder(const std::wstring& folder);

private:
    os::BlockReader reader_;
};

/// The library's file-exists test (imported by ordinal 3): non-zero when a file of that name exists (a folder
/// does not count). Resolves storage paths as TRCT_FileAccess does. Throws std::bad_alloc.
std::int32_t TRCT_FileExists(CComBSTR path);
