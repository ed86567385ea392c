/// The operating system's files to read and write at a position of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace os {

enum class StreamAccess { kRead, kWrite, kReadWrite };

/// Who else may have the file open meanwhile. Windows holds the others to it, and refuses to open what others
/// have open with more. Other systems know no such thing: there it says nothing, everybody shares.
enum class StreamSharing { kNone, kReaders, kWriters, kReadersAndWriters };

/// An open regular file, unbuffered, with one position for reading and writing. Positions are bytes. Any
/// Unicode path works, on Windows also beyond 260 characters; folders, pipes, devices and paths with a zero
/// in them are refused. Not thread-safe.
class StreamFile {
public:
    StreamFile() = default;
    ~StreamFile() { Close(); }
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;

    /// Makes an empty file or empties the one of that name, for reading and writing, shared with nobody. An
    /// earlier file is closed in any case, here and by Open.
    bool Create(const std::wstring& path);
    /// Opens an existing file at its start.
    bool Open(const std::wstring& path, StreamAccess access, StreamSharing sharing);
    /// False when none is open.
    bool Close();
    bool IsOpen() const { return handle_ != kNoHandle; }

    /// Both move the position by the bytes that passed, which they give: on reading fewer than asked at the
    /// end of the file, on both when an error comes after the first byte. Nothing on an error before that,
    /// and when no file is open.
    std::optional<std::size_t> Read(std::span<std::uint8_t> destination);
    std::optional<std::size_t> Write(std::span<const std::uint8_t> bytes);

    /// Moves by `offset` from the start (`origin` 0), the position (1) or the end (2); behind the end is
    /// allowed. Gives the new position; -1, and nothing moves, for a place before the start or beyond what
    /// the system can count, another origin, or when no file is open.
    std::int64_t Seek(std::int64_t offset, std::uint32_t origin);

private:
    static constexpr std::intptr_t kNoHandle = -1;
    std::intptr_t handle_ = kNoHandle;
};

} // namespace os
