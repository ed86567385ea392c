#include "mpa/first_frame_search.h"

#include "mpa/source_window.h"

#include <algorithm>
#include <optional>

namespace trnmpa {

namespace {

/// What a look at a candidate needs: its header, and the header behind the longest frame.
constexpr std::size_t kLookAheadBytes = static_cast<std::size_t>(kMaximumFrameBytes) + kFrameHeaderBytes;

bool HeaderAt(std::span<const std::uint8_t> bytes, std::size_t offset, FrameHeaderBytes& header) {
    if (bytes.size() < offset + kFrameHeaderBytes)
        return false;
    std::ranges::copy(bytes.subspan(offset, kFrameHeaderBytes), header.begin());
    return true;
}

/// How far the next place is that may start a sync word. It asks for twelve bits, so a header of MPEG 2.5
/// that follows a wrong byte closely can be stepped over.
std::int32_t StepBehind(const FrameHeaderBytes& candidate) {
    if (candidate[1] == 0xFF && (candidate[2] & 0xF0) == 0xF0)
        return 1;
    if (candidate[2] == 0xFF && (candidate[3] & 0xF0) == 0xF0)
        return 2;
    return candidate[3] == 0xFF ? 3 : 4;
}

/// Slides from `offset` to the next valid header; gives its position.
std::optional<std::int64_t> NextHeader(SourceWindow& window, std::int64_t offset,
                                       FrameHeaderBytes& candidate) {
    std::int32_t skipped = 0;
    for (;;) {
        if (!HeaderAt(window.At(offset + skipped, kLookAheadBytes), 0, candidate))
            return std::nullopt;
        if (IsValidFrameHeader(candidate))
            return offset + skipped;
        if (skipped >= kFirstFrameSearchBytes)
            return std::nullopt;
        skipped += StepBehind(candidate);
    }
}

enum class Confirmation { kConfirmed, kRefuted, kEndOfData };

Confirmation Confirm(SourceWindow& window, const MpaFrameHeader& header) {
    if (header.layer == 3)
        return Confirmation::kConfirmed;
    FrameHeaderBytes next = {};
    const auto frame = window.At(header.firstFrameOffset, kLookAheadBytes);
    if (!HeaderAt(frame, static_cast<std::size_t>(header.frameBytes), next))
        return Confirmation::kEndOfData;
    return IsValidFrameHeader(next) ? Confirmation::kConfirmed : Confirmation::kRefuted;
}

} // namespace

bool FindFirstFrame(HeaderSource& source, MpaFrameHeader& header) {
    SourceWindow window(source);
    FrameHeaderBytes candidate = {};
    for (;;) {
        const auto found = NextHeader(window, header.firstFrameOffset, candidate);
        if (!found)
            return false;
        header.firstFrameOffset = *found;
        DecodeFrameHeader(candidate, header);
        switch (Confirm(window, header)) {
        case Confirmation::kConfirmed:
            return source.SetPosition(header.firstFrameOffset + static_cast<std::int64_t>(kFrameHeaderBytes));
        case Confirmation::kRefuted:
            ++header.firstFrameOffset;
            break;
        case Confirmation::kEndOfData:
            return false;
        }
    }
}

} // namespace trnmpa
