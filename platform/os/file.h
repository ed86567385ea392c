/// The operating system's files, read-only, behind one small class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace os {

/// An open file for reading at any position. Positions and lengths are bytes, 64-bit. Not thread-safe.
class File {
public:
    File() = default;
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    ~File();

    /// Opens `path` for reading, sharing it with other readers and writers; an earlier file is closed in any
    /// case. Any Unicode path works, on Windows also beyond 260 characters. False when there is no such
    /// readable regular file: directories, pipes and devices are refused, and so is a path with a zero in it.
    bool Open(const std::wstring& path);
    void Close();
    bool IsOpen() const;

    /// Reads up to `destination.size()` bytes at `position`; gives how many were read: fewer only at the end
    /// of the file or after a read error, 0 when not open.
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> destination) const;

    /// The file's present length; 0 when not open or unknown.
    std::int64_t Length() const;

private:
    static constexpr std::intptr_t kNoHandle = -1;
    std::intptr_t handle_ = kNoHandle;
};

/// True when a file (not a directory) of that name exists.
bool FileExists(const std::wstring& path);

} // namespace os
