#include "mpa/frame_walk.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr std::int32_t kCrcBytes = 2;

/// Bytes to the next place that may start a sync word, as the decoder shifts its candidate.
std::int64_t ShiftBehind(const FrameHeaderBytes& bytes) {
    if (bytes[1] == 0xFF && (bytes[2] & 0xE0) == 0xE0)
        return 1;
    if (bytes[2] == 0xFF && (bytes[3] & 0xE0) == 0xE0)
        return 2;
    return bytes[3] != 0xFF ? 4 : 3;
}

} // namespace

std::int32_t DecoderFrameBytes(const MpaFrameHeader& header) noexcept {
    if (header.layer != 2 || header.lsf == 0 || header.sampleRate == 0)
        return header.frameBytes;
    return header.bitRate * 144000 / header.sampleRate + header.padding;
}

std::int32_t SideInformationBytes(const MpaFrameHeader& header) noexcept {
    if (header.layer != 3)
        return 0;
    if (header.lsf != 0)
        return header.channels == 1 ? 9 : 17;
    return header.channels == 1 ? 17 : 32;
}

FrameWalk::FrameWalk(HeaderSource& source, std::int64_t start) : window_(source), position_(start) {}

FrameWalk::FrameWalk(HeaderSource& source, std::int64_t start, const MpaFrameHeader& reference)
    : window_(source), position_(start), reference_(reference) {}

std::optional<WalkedFrame> FrameWalk::Next() {
    while (!ended_) {
        const auto bytes = FindHeader();
        if (!bytes)
            break;
        WalkedFrame frame;
        frame.offset = position_;
        frame.header.firstFrameOffset = position_;
        DecodeFrameHeader(*bytes, frame.header);
        frame.frameBytes = DecoderFrameBytes(frame.header);
        if (!reference_)
            reference_ = frame.header;
        const bool isDelivered = MatchesFormat(frame.header);
        frame.isProtected = IsProtected(*bytes);
        const std::int32_t headBytes = static_cast<std::int32_t>(kFrameHeaderBytes) +
                                       (frame.isProtected ? kCrcBytes : 0) +
                                       SideInformationBytes(frame.header);
        position_ += isDelivered ? std::max(frame.frameBytes, headBytes) : headBytes;
        if (!HasBytesBefore(position_))
            break;
        if (!isDelivered)
            continue;
        frame.samplesPerFrame = SamplesPerFrame(frame.header.layer, frame.header.lsf != 0 ? 2 : 1);
        return frame;
    }
    ended_ = true;
    return std::nullopt;
}

/// Moves to the next header that passes and gives it.
std::optional<FrameHeaderBytes> FrameWalk::FindHeader() {
    FrameHeaderBytes bytes = {};
    for (;;) {
        const auto read = window_.At(position_, bytes.size());
        if (read.size() < bytes.size())
            return std::nullopt;
        std::ranges::copy(read.first<kFrameHeaderBytes>(), bytes.begin());
        if (Passes(bytes))
            return bytes;
        position_ += ShiftBehind(bytes);
    }
}

bool FrameWalk::Passes(const FrameHeaderBytes& bytes) const {
    if (!IsValidFrameHeader(bytes))
        return false;
    if (!reference_)
        return true;
    MpaFrameHeader header;
    DecodeFrameHeader(bytes, header);
    return header.lsf == reference_->lsf && header.layer == reference_->layer &&
           header.sampleRateIndex == reference_->sampleRateIndex;
}

bool FrameWalk::MatchesFormat(const MpaFrameHeader& header) const {
    return header.sampleRate == reference_->sampleRate && header.channels == reference_->channels;
}

bool FrameWalk::HasBytesBefore(std::int64_t end) {
    return !window_.At(end - 1, 1).empty();
}

} // namespace trnmpa
