/// A file stream that reads ahead.
#pragma once

#include "fileio/file_stream_interface.h"
#include "fileio/reference_count.h"

#include <memory>

namespace trnmpa {

/// Reads another stream by the buffer, so that small reads in a row cost one call of it. Writes go through;
/// they leave the buffer as it is, so what was read into it before is read again as it was (Open drops it).
///
/// The position is this stream's own: the inner stream is moved there before each transfer. Results are the
/// inner stream's, with two traits to know:
/// - after a failed Seek the position is what that gave, -1, where every transfer fails until the next Seek;
/// - a kTransferFailed that the inner stream gives to a Write, or to a Read of more than the buffer, is added
///   to the position as if it were a count: Seek before going on. One that comes while the buffer is being
///   filled leaves the position, and nothing in the buffer.
class CBufferedFileStream : public IFileStream {
public:
    /// The size of the buffer is ReadBufSize of the settings file as it stands now (see module_settings.h).
    /// `inner` is not owned, counted, or closed in the end, and must outlive this stream; with a null one
    /// this is a stream that is never open.
    explicit CBufferedFileStream(IFileStream* inner);
    /// With a buffer of `bufferBytes`; below 1 counts as 1. Without memory for it the buffer is of 1 byte.
    CBufferedFileStream(IFileStream* inner, std::int32_t bufferBytes);

    unsigned long AddRef() override;
    unsigned long GetRef() override;
    unsigned long Release() override;
    /// Empties the buffer and goes to position 0, opened or not.
    std::int32_t Open(const std::wstring& path, std::uint32_t mode) override;
    /// Leaves buffer and position as they are: what the buffer holds can still be read.
    std::int32_t Close() override;
    std::uint32_t Read(void* buffer, std::uint32_t count) override;
    std::uint32_t Write(const void* buffer, std::uint32_t count) override;
    /// From the position: a sum that 64 bits cannot hold counts as the nearest that they can.
    std::int64_t Seek(std::int64_t offset, std::uint32_t origin) override;
    std::int64_t GetLength() override;
    std::int64_t GetPosition() override;
    ~CBufferedFileStream() override = default;

private:
    std::uint64_t BufferOffset() const;
    bool IsBuffered(std::uint32_t count) const;
    bool Fill();
    std::uint32_t ReadBuffered(void* destination, std::uint32_t count);

    ReferenceCount users_;
    IFileStream* inner_;
    std::uint32_t bufferBytes_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::uint32_t usedBytes_ = 0; ///< from its start; no byte behind them was ever written
    std::uint32_t validBytes_ = 0;
    std::int64_t position_ = 0;
    std::int64_t bufferStart_ = 0;
};

} // namespace trnmpa
