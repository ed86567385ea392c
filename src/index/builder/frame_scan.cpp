#include "index/builder/frame_scan.h"

#include "mpa/header_search.h"

#include <algorithm>
#include <array>
#include <limits>

namespace trnmpa {

namespace {

constexpr std::size_t kTagSearchEnd = 62;
constexpr std::size_t kTagSizeOffset = 6;
constexpr std::int64_t kTagHeaderBytes = 10;
constexpr std::int64_t kTagSizeLimit = std::int64_t{1} << 28;

/// The four bytes at `offset`; what the data lack is 0.
std::array<std::uint8_t, 4> FourBytesAt(SourceWindow& window, std::size_t offset) {
    std::array<std::uint8_t, 4> bytes = {};
    const auto held = window.At(static_cast<std::int64_t>(offset), bytes.size());
    std::copy_n(held.begin(), std::min(held.size(), bytes.size()), bytes.begin());
    return bytes;
}

bool IsTagAt(SourceWindow& window, std::size_t offset) {
    const auto bytes = FourBytesAt(window, offset);
    return bytes[0] == 'I' && bytes[1] == 'D' && bytes[2] == '3';
}

void StoreFormat(const MpaFrameHeader& frame, MpaIndexHeader& header) {
    const MpaFrameInfo info = FillFrameInfo(frame);
    header.layer = info.layer;
    header.version = info.version;
    header.channels = static_cast<std::uint16_t>(frame.channels);
    header.bitRate = static_cast<std::uint32_t>(info.bitRate);
    header.sampleRate = static_cast<std::uint32_t>(info.sampleRate);
    header.bitsPerSample = static_cast<std::uint16_t>(info.bitsPerSample);
    header.frameBytes = static_cast<std::uint16_t>(info.frameBytes);
    header.samplesPerFrame = static_cast<std::uint32_t>(SamplesPerFrame(info.layer, info.version));
}

} // namespace

std::optional<std::int64_t> IndexedTagSize(SourceWindow& window) {
    std::size_t offset = 0;
    while (offset < kTagSearchEnd && !IsTagAt(window, offset))
        offset += 2;
    if (offset >= kTagSearchEnd)
        return 0;
    std::int64_t size = 0;
    for (const std::uint8_t byte : FourBytesAt(window, offset + kTagSizeOffset))
        size = size * 128 + byte;
    if (size >= kTagSizeLimit)
        return std::nullopt;
    return size + kTagHeaderBytes;
}

FrameScan::FrameScan(CFileReader& media) : source_(media), window_(source_) {}

bool FrameScan::Start(MpaIndexHeader& header) {
    const auto tagSize = IndexedTagSize(window_);
    if (!tagSize)
        return false;
    position_ = *tagSize;
    const auto first = NextFrame();
    if (first)
        StoreFormat(*first, header);
    return first.has_value();
}

std::optional<MpaIndexEntry> FrameScan::Next() {
    const auto frame = NextFrame();
    // A file that grows meanwhile may reach places that an entry cannot say.
    if (!frame || frame->firstFrameOffset > std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    return MpaIndexEntry{static_cast<std::uint32_t>(frame->firstFrameOffset),
                         static_cast<std::uint32_t>(frame->frameBytes)};
}

std::optional<MpaFrameHeader> FrameScan::NextFrame() {
    FrameHeaderBytes bytes = {};
    const auto offset = FindHeader(window_, position_, bytes);
    if (!offset)
        return std::nullopt;
    MpaFrameHeader frame;
    frame.firstFrameOffset = *offset;
    DecodeFrameHeader(bytes, frame);
    position_ = *offset + frame.frameBytes;
    return frame;
}

} // namespace trnmpa
