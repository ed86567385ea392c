#include "mpatool/stream/frame_chain.h"

#include "mpa/frame_walk.h"

#include <algorithm>

namespace mpatool {

namespace {

using trnmpa::DecoderFrameBytes;
using trnmpa::MpaFrameHeader;
using trnmpa::SourceWindow;

/// As far as one look reaches: from a header to the end of the header behind the longest frame, Layer II of
/// MPEG 2.5 at 8000 Hz and 160 kbit/s, padded.
constexpr std::size_t kLookAheadBytes = 2881 + trnmpa::kFrameHeaderBytes;

std::optional<MpaFrameHeader> ParseAt(std::span<const std::uint8_t> bytes, std::size_t at,
                                      std::int64_t offset) {
    if (bytes.size() < at + trnmpa::kFrameHeaderBytes)
        return std::nullopt;
    const trnmpa::FrameHeaderBytes four = {bytes[at], bytes[at + 1], bytes[at + 2], bytes[at + 3]};
    if (!trnmpa::IsValidFrameHeader(four))
        return std::nullopt;
    MpaFrameHeader header;
    trnmpa::DecodeFrameHeader(four, header);
    header.firstFrameOffset = offset;
    return header;
}

/// Two frames in a row, or one up to the end. Looks ahead in one piece, so that a search moves forward only.
bool BeginsChain(SourceWindow& window, const MpaFrameHeader& header, std::int64_t end) {
    const std::int64_t offset = header.firstFrameOffset;
    const std::int32_t length = DecoderFrameBytes(header);
    if (offset + length >= end)
        return offset + length == end;
    const auto bytes = window.At(offset, kLookAheadBytes);
    const auto next = ParseAt(bytes, static_cast<std::size_t>(length), offset + length);
    return next && HaveOneFormat(header, *next) && offset + length + DecoderFrameBytes(*next) <= end;
}

FrameChain Follow(SourceWindow& window, const MpaFrameHeader& first, std::int64_t end) {
    FrameChain chain{first, first.firstFrameOffset, first.firstFrameOffset, 0};
    for (std::optional<MpaFrameHeader> header = first; header && HaveOneFormat(first, *header);
         header = HeaderAt(window, chain.end)) {
        const std::int64_t frameEnd = chain.end + DecoderFrameBytes(*header);
        if (frameEnd > end)
            break;
        chain.end = frameEnd;
        ++chain.frames;
    }
    return chain;
}

/// The place of the next byte 0xFF before `end`, or `end`.
std::int64_t NextFF(SourceWindow& window, std::int64_t offset, std::int64_t end) {
    constexpr std::size_t kBytesAtOnce = 4096;
    while (offset < end) {
        const auto bytes = window.At(offset, kBytesAtOnce);
        const auto found = std::ranges::find(bytes, 0xFF);
        offset += found - bytes.begin();
        if (found != bytes.end() || bytes.empty())
            return bytes.empty() ? end : std::min(offset, end);
    }
    return end;
}

} // namespace

bool IsMpeg25(const MpaFrameHeader& header) {
    constexpr std::int32_t kLowestMpeg2Rate = 16000;
    return header.lsf != 0 && header.sampleRate < kLowestMpeg2Rate;
}

const char* VersionText(const MpaFrameHeader& header) {
    if (header.lsf == 0)
        return "MPEG-1";
    return IsMpeg25(header) ? "MPEG 2.5" : "MPEG-2";
}

std::optional<MpaFrameHeader> HeaderAt(SourceWindow& window, std::int64_t offset) {
    return ParseAt(window.At(offset, trnmpa::kFrameHeaderBytes), 0, offset);
}

bool HaveOneFormat(const MpaFrameHeader& x, const MpaFrameHeader& y) {
    return x.layer == y.layer && x.lsf == y.lsf && x.sampleRate == y.sampleRate && x.channels == y.channels;
}

std::string FormatText(const MpaFrameHeader& header) {
    return std::string(VersionText(header)) + (header.layer == 3 ? " layer III, " : " layer II, ") +
           std::to_string(header.sampleRate) + " Hz, " + (header.channels == 1 ? "mono" : "stereo");
}

std::optional<FrameChain> FindChain(SourceWindow& window, std::int64_t begin, std::int64_t end,
                                    std::int64_t least) {
    for (std::int64_t offset = NextFF(window, begin, end); offset < end;
         offset = NextFF(window, offset + 1, end)) {
        const auto header = HeaderAt(window, offset);
        if (!header || !BeginsChain(window, *header, end))
            continue;
        const FrameChain chain = Follow(window, *header, end);
        if (chain.frames >= least || chain.end == end)
            return chain;
    }
    return std::nullopt;
}

std::optional<FrameChain> FindChainWithin(SourceWindow& window, const MpaFrameHeader& frame,
                                          std::int64_t next) {
    const std::int64_t frameEnd = frame.firstFrameOffset + DecoderFrameBytes(frame);
    for (std::int64_t offset = frame.firstFrameOffset + 1; offset < frameEnd; ++offset) {
        const auto header = HeaderAt(window, offset);
        if (!header || !HaveOneFormat(frame, *header))
            continue;
        const FrameChain chain = Follow(window, *header, next);
        if (chain.frames > 0 && chain.end == next)
            return chain;
    }
    return std::nullopt;
}

} // namespace mpatool
