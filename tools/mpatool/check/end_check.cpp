#include "mpatool/check/end_check.h"

#include "mpa/frame_walk.h"
#include "mpatool/info/encoder_frame.h"
#include "mpatool/output/count_text.h"
#include "mpatool/stream/frame_chain.h"

#include <algorithm>
#include <array>

namespace mpatool {

namespace {

constexpr std::size_t kComparedBytes = 2;

/// Less than a header is left: it begins as the header of `last` does, as far as it goes.
bool BeginsLike(trnmpa::SourceWindow& window, const trnmpa::MpaFrameHeader& last, std::int64_t offset) {
    std::array<std::uint8_t, kComparedBytes> wanted = {};
    std::ranges::copy(window.At(last.firstFrameOffset, kComparedBytes), wanted.begin());
    const auto bytes = window.At(offset, kComparedBytes);
    return std::equal(bytes.begin(), bytes.end(), wanted.begin());
}

} // namespace

std::int64_t FindCutFrame(trnmpa::SourceWindow& window, const trnmpa::MpaFrameHeader& last,
                          std::int64_t position, std::int64_t end) {
    constexpr std::int64_t kLongestFrame = 2881;
    constexpr auto kHeaderBytes = static_cast<std::int64_t>(trnmpa::kFrameHeaderBytes);
    if (position < end && position > end - kHeaderBytes)
        return BeginsLike(window, last, position) ? position : end;
    for (std::int64_t offset = std::max(position, end - kLongestFrame); offset <= end - kHeaderBytes;
         ++offset) {
        const auto header = HeaderAt(window, offset);
        if (header && HaveOneFormat(*header, last) && header->channelMode == last.channelMode &&
            offset + trnmpa::DecoderFrameBytes(*header) > end)
            return offset;
    }
    return end;
}

void AddCutEnd(trnmpa::SourceWindow& window, std::int64_t offset, std::int64_t end,
               StreamCheckResult& result) {
    const auto header = HeaderAt(window, offset);
    Finding finding = result.At(FindingKind::kTruncated, offset, end);
    finding.bytes = end - offset;
    finding.detail = "the last frame has " + FormatCount(finding.bytes);
    if (header && end - offset >= static_cast<std::int64_t>(trnmpa::kFrameHeaderBytes))
        finding.detail += " of " + FormatCount(trnmpa::DecoderFrameBytes(*header));
    finding.detail += finding.bytes == 1 ? " byte" : " bytes";
    result.findings.Add(finding);
}

void CompareWithEncoder(trnmpa::SourceWindow& window, std::int64_t end, StreamCheckResult& result) {
    const auto encoder = ReadEncoderFrame(window, result.format);
    const std::int64_t claimed = encoder && encoder->name != "VBRI" ? encoder->bytes.value_or(0) : 0;
    const std::int64_t there = end - result.format.firstFrameOffset;
    if (claimed <= there)
        return;
    Finding finding = result.At(FindingKind::kTruncated, end, end);
    finding.bytes = claimed - there;
    finding.detail =
        "the encoder wrote " + CountOf(claimed, "byte") + " of sound, " + FormatCount(there) + " are there";
    result.findings.Add(finding);
}

} // namespace mpatool
