/// Reference-counted streams over files.
#pragma once

#include <cstdint>
#include <string>

namespace trnmpa {

/// Mode of IFileStream::Open that makes an empty file, or empties an existing one, for reading and writing
/// and shared with nobody.
inline constexpr std::uint32_t kStreamCreate = 0xFFFF;

/// Any other mode opens an existing file: one of these for the access (3 is none, such an Open fails) ...
inline constexpr std::uint32_t kStreamRead = 0;
inline constexpr std::uint32_t kStreamWrite = 1;
inline constexpr std::uint32_t kStreamReadWrite = 2;

/// ... with one of these for what others may do with the file meanwhile (what is none of them shares
/// nothing). Windows holds the others to it; elsewhere the system knows no such thing, it says nothing and
/// everybody shares. All other bits of a mode are ignored.
inline constexpr std::uint32_t kStreamShareNone = 0x10;
inline constexpr std::uint32_t kStreamShareRead = 0x20;
inline constexpr std::uint32_t kStreamShareWrite = 0x30;
inline constexpr std::uint32_t kStreamShareBoth = 0x40;

/// Where IFileStream::Seek counts from.
inline constexpr std::uint32_t kSeekFromStart = 0;
inline constexpr std::uint32_t kSeekFromPosition = 1;
inline constexpr std::uint32_t kSeekFromEnd = 2;

/// Result of a Read or Write that failed.
inline constexpr std::uint32_t kTransferFailed = 0xFFFFFFFF;

/// A file to read and write, with a position. Positions, offsets and lengths are bytes. Its users count
/// themselves, on any thread; everything else is for one thread at a time.
///
///     IFileStream* stream = new CFileStream;
///     stream->AddRef(); // a new stream has no user yet
///     if (stream->Open(path, kStreamRead | kStreamShareRead) == 1)
///         count = stream->Read(buffer, sizeof buffer);
///     stream->Release(); // closes the file and destroys the stream
class IFileStream {
public:
    IFileStream() = default;
    IFileStream(const IFileStream&) = delete;
    IFileStream& operator=(const IFileStream&) = delete;

    /// One user more; gives how many there are then.
    virtual unsigned long AddRef() = 0;
    /// How many users there are.
    virtual unsigned long GetRef() = 0;
    /// One user less; gives how many are left. 0: it was the last, and the stream, made with new, is
    /// destroyed. Each call needs an AddRef before it: from 0 the count wraps around and the stream stays.
    virtual unsigned long Release() = 0;

    /// Closes what is open and opens `path` at its start. 1 on success, else 0.
    virtual std::int32_t Open(const std::wstring& path, std::uint32_t mode) = 0;
    /// 1, or 0 when no file is open.
    virtual std::int32_t Close() = 0;

    /// Moves up to `count` bytes between `buffer` and the file, at the position, which moves along. Gives how
    /// many bytes passed (a Read stops at the end of the file), kTransferFailed on an error, 0 when no file
    /// is open. A null `buffer` is an error unless `count` is 0.
    virtual std::uint32_t Read(void* buffer, std::uint32_t count) = 0;
    virtual std::uint32_t Write(const void* buffer, std::uint32_t count) = 0;

    /// Moves the position by `offset` from `origin`; behind the end is allowed. Gives the new position, -1
    /// when there is no such place, 0 when no file is open.
    virtual std::int64_t Seek(std::int64_t offset, std::uint32_t origin) = 0;
    /// Length of the file; the position stays. 0 when no file is open.
    virtual std::int64_t GetLength() = 0;
    /// 0 when no file is open.
    virtual std::int64_t GetPosition() = 0;

    /// Last, so that the operations keep the first slots. For Release: users do not delete a stream.
    virtual ~IFileStream() = default;
};

} // namespace trnmpa
