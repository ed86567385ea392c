/// Buffered reading over os::File, shared by the stand-ins of the family's file classes.
#pragma once

#include "os/file.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace os {

/// A read position over a file, served from one block of memory, so that small reads and short seeks cost no
/// system call. Not thread-safe.
class BlockReader {
public:
    /// Most bytes of the block when none or 0 is asked for, and the most that is ever held.
    static constexpr std::size_t kDefaultBlockBytes = 64 * 1024;
    static constexpr std::size_t kMaximumBlockBytes = 4 * 1024 * 1024;

    /// Sets the size in bytes that the block grows to (0: the default; larger than the maximum: the maximum).
    /// What is buffered is dropped.
    void SetBlockBytes(std::size_t bytes);

    /// Opens `path` and stands at its start. An earlier file is closed, also when this one cannot be opened.
    bool Open(const std::wstring& path);
    void Close();
    bool IsOpen() const { return file_.IsOpen(); }

    /// Reads at the position and advances it by the bytes read, which it gives: fewer than asked only at the
    /// end of the file or after a read error, 0 when not open. Without memory for the block it reads without
    /// one.
    std::size_t Read(std::span<std::uint8_t> destination) noexcept;

    /// Moves the position; behind the end is allowed (reads then give 0 bytes). False, and nothing moves,
    /// below 0 or when not open.
    bool SetPosition(std::int64_t position);
    /// 0 when not open.
    std::int64_t Position() const { return position_; }
    std::int64_t Length() const { return file_.Length(); }

private:
    std::size_t TakeFromBlock(std::span<std::uint8_t> destination) const;
    bool Fill();

    File file_;
    std::vector<std::uint8_t> block_;
    std::size_t blockBytes_ = kDefaultBlockBytes;
    std::size_t blockFilled_ = 0;
    std::int64_t blockStart_ = 0;
    std::int64_t position_ = 0;
};

} // namespace os
