#include "fileio/buffered_file_stream.h"

#include "plugin/module_settings.h"

#include <algorithm>
#include <limits>
#include <new>

namespace trnmpa {

namespace {

constexpr std::uint32_t kLeastBufferBytes = 1;

std::int64_t SaturatingSum(std::int64_t first, std::int64_t second) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (second > 0 && first > Limits::max() - second)
        return Limits::max();
    if (second < 0 && first < Limits::min() - second)
        return Limits::min();
    return first + second;
}

/// Makes a buffer of `bytes`, or of the least size without memory for that; `bytes` then says so.
std::unique_ptr<std::uint8_t[]> MakeBuffer(std::uint32_t& bytes) {
    try {
        return std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
    } catch (const std::bad_alloc&) {
        bytes = kLeastBufferBytes;
        return std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
    }
}

} // namespace

CBufferedFileStream::CBufferedFileStream(IFileStream* inner)
    : CBufferedFileStream(inner, ReadModuleSettings()) {}

CBufferedFileStream::CBufferedFileStream(IFileStream* inner, std::int32_t bufferBytes)
    : inner_(inner),
      bufferBytes_(bufferBytes > 0 ? static_cast<std::uint32_t>(bufferBytes) : kLeastBufferBytes),
      buffer_(MakeBuffer(bufferBytes_)) {}

unsigned long CBufferedFileStream::AddRef() {
    return users_.Add();
}

unsigned long CBufferedFileStream::GetRef() {
    return users_.Get();
}

unsigned long CBufferedFileStream::Release() {
    const std::uint32_t left = users_.Remove();
    if (left == 0)
        delete this;
    return left;
}

std::int32_t CBufferedFileStream::Open(const std::wstring& path, std::uint32_t mode) {
    std::fill_n(buffer_.get(), usedBytes_, std::uint8_t{0});
    usedBytes_ = 0;
    validBytes_ = 0;
    position_ = 0;
    bufferStart_ = 0;
    return inner_ != nullptr ? inner_->Open(path, mode) : 0;
}

std::int32_t CBufferedFileStream::Close() {
    return inner_ != nullptr ? inner_->Close() : 0;
}

std::uint32_t CBufferedFileStream::Read(void* buffer, std::uint32_t count) {
    if (inner_ == nullptr)
        return 0;
    if (buffer == nullptr && count > 0)
        return kTransferFailed;
    if (count <= bufferBytes_)
        return ReadBuffered(buffer, count);
    if (inner_->Seek(position_, kSeekFromStart) < 0)
        return kTransferFailed;
    const std::uint32_t delivered = inner_->Read(buffer, count);
    position_ = SaturatingSum(position_, delivered);
    return delivered;
}

std::uint32_t CBufferedFileStream::Write(const void* buffer, std::uint32_t count) {
    if (inner_ == nullptr)
        return 0;
    if ((buffer == nullptr && count > 0) || inner_->Seek(position_, kSeekFromStart) < 0)
        return kTransferFailed;
    const std::uint32_t written = inner_->Write(buffer, count);
    position_ = SaturatingSum(position_, written);
    return written;
}

std::int64_t CBufferedFileStream::Seek(std::int64_t offset, std::uint32_t origin) {
    if (inner_ == nullptr)
        return 0;
    position_ = origin == kSeekFromPosition ? inner_->Seek(SaturatingSum(position_, offset), kSeekFromStart)
                                            : inner_->Seek(offset, origin);
    return position_;
}

std::int64_t CBufferedFileStream::GetLength() {
    return inner_ != nullptr ? inner_->GetLength() : 0;
}

std::int64_t CBufferedFileStream::GetPosition() {
    return position_;
}

/// Of the position in the buffer; without a sign it cannot overflow, and is huge for one before the buffer.
std::uint64_t CBufferedFileStream::BufferOffset() const {
    return static_cast<std::uint64_t>(position_) - static_cast<std::uint64_t>(bufferStart_);
}

bool CBufferedFileStream::IsBuffered(std::uint32_t count) const {
    const std::uint64_t offset = BufferOffset();
    return position_ >= bufferStart_ && offset <= validBytes_ && count <= validBytes_ - offset;
}

/// Loads what stands at the position. False when the inner stream fails; the buffer is then empty.
bool CBufferedFileStream::Fill() {
    validBytes_ = 0;
    bufferStart_ = position_;
    if (inner_->Seek(position_, kSeekFromStart) < 0)
        return false;
    const std::uint32_t delivered = inner_->Read(buffer_.get(), bufferBytes_);
    // A read that failed may have left anything.
    usedBytes_ = std::max(usedBytes_, std::min(delivered, bufferBytes_));
    if (delivered == kTransferFailed)
        return false;
    validBytes_ = std::min(delivered, bufferBytes_);
    return true;
}

std::uint32_t CBufferedFileStream::ReadBuffered(void* destination, std::uint32_t count) {
    if (!IsBuffered(count) && !Fill())
        return kTransferFailed;
    const std::uint64_t offset = BufferOffset();
    const auto taken = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, validBytes_ - offset));
    std::copy_n(buffer_.get() + offset, taken, static_cast<std::uint8_t*>(destination));
    position_ = SaturatingSum(position_, taken);
    return taken;
}

} // namespace trnmpa
