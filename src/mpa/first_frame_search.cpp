#include "mpa/first_frame_search.h"

#include "mpa/header_search.h"

#include <algorithm>

namespace trnmpa {

namespace {

/// From a candidate to the end of the header behind the longest frame.
constexpr std::size_t kLookAheadBytes = static_cast<std::size_t>(kMaximumFrameBytes) + kFrameHeaderBytes;

bool HeaderAt(std::span<const std::uint8_t> bytes, std::size_t offset, FrameHeaderBytes& header) {
    if (bytes.size() < offset + kFrameHeaderBytes)
        return false;
    std::ranges::copy(bytes.subspan(offset, kFrameHeaderBytes), header.begin());
    return true;
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
        const auto found = FindHeader(window, header.firstFrameOffset, candidate);
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
