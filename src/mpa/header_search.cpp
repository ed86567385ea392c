#include "mpa/header_search.h"

#include <algorithm>

namespace trnmpa {

namespace {

/// How far the next place is that may start a sync word. It asks for twelve bits, so a header of MPEG 2.5
/// that follows a wrong byte closely can be stepped over.
std::int32_t StepBehind(const FrameHeaderBytes& candidate) {
    if (candidate[1] == 0xFF && (candidate[2] & 0xF0) == 0xF0)
        return 1;
    if (candidate[2] == 0xFF && (candidate[3] & 0xF0) == 0xF0)
        return 2;
    return candidate[3] == 0xFF ? 3 : 4;
}

} // namespace

std::optional<std::int64_t> FindHeader(SourceWindow& window, std::int64_t offset, FrameHeaderBytes& header) {
    std::int32_t skipped = 0;
    for (;;) {
        const auto bytes = window.At(offset + skipped, header.size());
        if (bytes.size() < header.size())
            return std::nullopt;
        std::copy_n(bytes.begin(), header.size(), header.begin());
        if (IsValidFrameHeader(header))
            return offset + skipped;
        if (skipped >= kHeaderSearchBytes)
            return std::nullopt;
        skipped += StepBehind(header);
    }
}

} // namespace trnmpa
