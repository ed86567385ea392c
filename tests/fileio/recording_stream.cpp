#include "fileio/recording_stream.h"

#include <algorithm>
#include <stdexcept>

namespace test {

using trnmpa::kTransferFailed;

unsigned long RecordingStream::AddRef() {
    Note("add");
    return 1;
}

unsigned long RecordingStream::GetRef() {
    Note("count");
    return 1;
}

unsigned long RecordingStream::Release() {
    Note("release");
    return 0;
}

std::int32_t RecordingStream::Open(const std::wstring& newPath, std::uint32_t newMode) {
    Note("open");
    path = newPath;
    mode = newMode;
    return openResult;
}

std::int32_t RecordingStream::Close() {
    Note("close");
    return 1;
}

std::uint32_t RecordingStream::Read(void* buffer, std::uint32_t count) {
    Note("read " + std::to_string(count));
    auto* destination = static_cast<std::uint8_t*>(buffer);
    if (throwsOnRead)
        throw std::runtime_error("as the test wants it");
    if (failsToRead) {
        // Half a transfer before the error: what arrived counts for nothing.
        std::fill_n(destination, count / 2, std::uint8_t{0xEE});
        return kTransferFailed;
    }
    if (isEndless) {
        std::fill_n(destination, count, std::uint8_t{0});
        return count;
    }
    const auto start = std::min<std::size_t>(content.size(), static_cast<std::size_t>(position_));
    const std::size_t bytes = std::min<std::size_t>(count, content.size() - start);
    std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(start), bytes, destination);
    position_ += static_cast<std::int64_t>(bytes);
    return static_cast<std::uint32_t>(bytes) + extraBytes;
}

std::uint32_t RecordingStream::Write(const void* buffer, std::uint32_t count) {
    Note("write " + std::to_string(count));
    if (failsToWrite)
        return kTransferFailed;
    const auto start = static_cast<std::size_t>(position_);
    content.resize(std::max(content.size(), start + count));
    std::copy_n(static_cast<const std::uint8_t*>(buffer), count,
                content.begin() + static_cast<std::ptrdiff_t>(start));
    position_ += count;
    return count;
}

std::int64_t RecordingStream::Seek(std::int64_t offset, std::uint32_t origin) {
    Note("seek " + std::to_string(offset) + " " + std::to_string(origin));
    if (origin == trnmpa::kSeekFromPosition)
        throw std::logic_error("a buffered stream knows its position itself");
    const std::int64_t base = origin == trnmpa::kSeekFromEnd ? static_cast<std::int64_t>(content.size()) : 0;
    if (failsToSeek || origin > trnmpa::kSeekFromEnd || offset < -base)
        return -1;
    position_ = base + offset;
    return position_;
}

std::int64_t RecordingStream::GetLength() {
    Note("length");
    return static_cast<std::int64_t>(content.size());
}

std::int64_t RecordingStream::GetPosition() {
    Note("position");
    return position_;
}

} // namespace test
