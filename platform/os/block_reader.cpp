#include "os/block_reader.h"

#include <algorithm>
#include <new>

namespace os {

namespace {

constexpr std::size_t kFirstBlockBytes = 8 * 1024;
constexpr std::size_t kAlignmentBytes = 512;

} // namespace

void BlockReader::SetBlockBytes(std::size_t bytes) {
    blockBytes_ = bytes == 0 ? kDefaultBlockBytes : std::min(bytes, kMaximumBlockBytes);
    blockFilled_ = 0;
    block_ = {};
}

bool BlockReader::Open(const std::wstring& path) {
    Close();
    return file_.Open(path);
}

void BlockReader::Close() {
    file_.Close();
    block_ = {};
    blockFilled_ = 0;
    position_ = 0;
}

std::size_t BlockReader::Read(std::span<std::uint8_t> destination) noexcept {
    std::size_t done = 0;
    while (done < destination.size()) {
        const std::span<std::uint8_t> rest = destination.subspan(done);
        std::size_t bytes = TakeFromBlock(rest);
        if (bytes == 0 && rest.size() < blockBytes_ && Fill())
            bytes = TakeFromBlock(rest);
        else if (bytes == 0)
            bytes = file_.ReadAt(position_, rest);
        if (bytes == 0)
            break;
        position_ += static_cast<std::int64_t>(bytes);
        done += bytes;
    }
    return done;
}

bool BlockReader::SetPosition(std::int64_t position) {
    if (!IsOpen() || position < 0)
        return false;
    position_ = position;
    return true;
}

std::size_t BlockReader::TakeFromBlock(std::span<std::uint8_t> destination) const {
    if (position_ < blockStart_)
        return 0;
    const auto filled = static_cast<std::int64_t>(blockFilled_);
    const std::int64_t offset = std::min(position_ - blockStart_, filled);
    const std::size_t bytes = std::min(destination.size(), static_cast<std::size_t>(filled - offset));
    std::copy_n(block_.begin() + offset, bytes, destination.begin());
    return bytes;
}

/// Loads what stands at the position. After a jump little is often wanted, so what is loaded begins small and
/// doubles while the reading goes on. False when there is no memory for it.
bool BlockReader::Fill() {
    const bool goesOn =
        blockFilled_ != 0 && position_ == blockStart_ + static_cast<std::int64_t>(blockFilled_);
    const std::size_t bytes = std::min(goesOn ? block_.size() * 2 : kFirstBlockBytes, blockBytes_);
    try {
        block_.resize(bytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    const auto alignment = static_cast<std::int64_t>(std::min(bytes, kAlignmentBytes));
    blockStart_ = position_ - position_ % alignment;
    blockFilled_ = file_.ReadAt(blockStart_, block_);
    return true;
}

} // namespace os
