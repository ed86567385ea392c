// How a run of samples is delivered.

#include "plugin/module_log.h"
#include "reader/pcm_gain.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace trnmpa {

namespace {

constexpr std::uint64_t kMaximumRequestBytes = std::numeric_limits<std::int32_t>::max();

/// First byte of a sample in the decoded stream; nothing when it lies beyond 64 bits.
std::optional<std::int64_t> BytePosition(std::int64_t sample, std::int64_t skipSamples,
                                         std::int64_t blockAlign) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    if (blockAlign <= 0 || sample > kLargest / blockAlign - skipSamples)
        return std::nullopt;
    return (sample + skipSamples) * blockAlign;
}

} // namespace

std::int32_t KwMpAudioReader2::GetSamples(const AudioReaderDataIn& request, unsigned char*& data,
                                          std::int32_t& size, unsigned long*) {
    data = nullptr;
    size = 0;
    if (stream_.needsOpen)
        return kNotOpen;
    if (request.startSample < 0 || request.sampleCount == 0)
        return kBadRequest;
    const std::uint64_t bytes = std::uint64_t{request.sampleCount} * stream_.format.nBlockAlign;
    if (bytes > kMaximumRequestBytes)
        return kUnexpectedException;
    std::int32_t result = kUnexpectedException;
    try {
        result = Deliver(request, static_cast<std::size_t>(bytes), data);
    } catch (...) {
        ForgetPosition();
    }
    if (result == kSuccess)
        size = static_cast<std::int32_t>(bytes);
    return result;
}

std::int32_t KwMpAudioReader2::ReadUpToEnd(std::int64_t start, std::span<std::uint8_t> pcm,
                                           std::size_t& decodedBytes) {
    decodedBytes = 0;
    if (stream_.needsOpen)
        return kNotOpen;
    if (start < 0 || pcm.empty())
        return kBadRequest;
    Filled filled = Filled::kFailed;
    try {
        filled = Fill(start, pcm);
    } catch (...) {
        ForgetPosition();
    }
    if (filled == Filled::kUndecoded)
        return kDecodeFailed;
    if (filled == Filled::kFailed)
        return kUnexpectedException;
    decodedBytes = stream_.decodedBytes;
    return kSuccess;
}

std::int32_t KwMpAudioReader2::Deliver(const AudioReaderDataIn& request, std::size_t bytes,
                                       unsigned char*& data) {
    std::uint8_t* pcm = pcmBufferA_.Require(bytes);
    switch (Fill(request.startSample, {pcm, bytes})) {
    case Filled::kWhole:
        data = pcm;
        return kSuccess;
    case Filled::kToTheEnd:
        return Silence(bytes, data);
    case Filled::kUndecoded:
        return kDecodeFailed;
    default:
        return kUnexpectedException;
    }
}

/// Fills `pcm` from sample `start` on; stream_.decodedBytes counts what has come.
KwMpAudioReader2::Filled KwMpAudioReader2::Fill(std::int64_t start, std::span<std::uint8_t> pcm) {
    stream_.decodedBytes = 0;
    const auto position = BytePosition(start, stream_.skipSamples, stream_.format.nBlockAlign);
    if (stream_.muted || !HasFrames() || !position)
        return Filled::kToTheEnd;
    stream_.targetFrame = *position / stream_.layout.frame.pcmBytes;
    const std::int64_t offset = *position % stream_.layout.frame.pcmBytes;
    bool decoded = true;
    try {
        if (!CanContinue(stream_.targetFrame, offset) && !Reposition(stream_.targetFrame, decoded))
            return Filled::kToTheEnd;
        decoded &= ReadSequentially(offset, pcm.data(), pcm.size());
    } catch (int code) {
        ForgetPosition();
        return code == AMP_ERR_END_OF_STREAM ? Filled::kToTheEnd : Filled::kFailed;
    }
    if (decoded)
        return Filled::kWhole;
    ForgetPosition();
    return Filled::kUndecoded;
}

std::int32_t KwMpAudioReader2::Silence(std::size_t bytes, unsigned char*& data) {
    data = pcmBufferA_.RequireZeros(std::max<std::size_t>(bytes, 1));
    return kSuccess;
}

bool KwMpAudioReader2::HasFrames() const {
    const bool hasEntries = !stream_.hasIndex || !stream_.frameTable.empty();
    return hasEntries && stream_.layout.frame.pcmBytes > 0;
}

bool KwMpAudioReader2::CanContinue(std::int64_t frame, std::int64_t offset) const {
    if (stream_.heldFrame == frame)
        return true;
    const bool isNextInOrder =
        frame == stream_.currentFrame || (frame == stream_.currentFrame + 1 && offset == 0);
    return isNextInOrder && stream_.nextFrame == frame;
}

void KwMpAudioReader2::ForgetPosition() {
    stream_.heldFrame.reset();
    stream_.nextFrame.reset();
}

/// Stands before `frame` with decoder and source, its pre-roll behind them. False when its place lies outside
/// the stream.
bool KwMpAudioReader2::Reposition(std::int64_t frame, bool& decoded) {
    ForgetPosition();
    stream_.isPrimed = true;
    const std::int64_t start = FindPrerollStart(frame);
    const auto offset = FrameOffset(start);
    if (!offset || *offset > frames_->Length())
        return false;
    frames_->JumpTo(*offset, start);
    const std::int64_t firstDecoded = frame - stream_.preroll.decodedFrames;
    for (std::int64_t i = start; i < frame; ++i) {
        if (i >= firstDecoded)
            stream_.isPrimed &= DecodeNextFrame(decoded);
        else
            frames_->Skip(stream_.layout.frame);
    }
    // Where it can be tried again, a failure here shows in the frame that is delivered.
    decoded |= frames_->DeservesRetries();
    stream_.currentFrame = frame;
    stream_.nextFrame = frame;
    return true;
}

std::int64_t KwMpAudioReader2::FindPrerollStart(std::int64_t frame) {
    if (!stream_.hasIndex)
        return PrerollStart(stream_.layout.frame, stream_.preroll, frame);
    if (frame < static_cast<std::int64_t>(stream_.frameTable.size()))
        return PrerollStart(stream_.layout.frame, stream_.frameTable, frame, stream_.preroll);
    stream_.preroll = PrerollFor(stream_.layout.frame, stream_.layout.frame.frameBytes);
    return PrerollStart(stream_.layout.frame, stream_.preroll, frame);
}

/// Byte offset from which the decoder's search finds the frame: exact with an index, exact for frames of one
/// length, else an estimate. Nothing for a frame that cannot be in the file.
std::optional<std::int64_t> KwMpAudioReader2::FrameOffset(std::int64_t frame) const {
    if (stream_.hasIndex) {
        if (frame >= static_cast<std::int64_t>(stream_.frameTable.size()))
            return std::nullopt;
        return stream_.frameTable[static_cast<std::size_t>(frame)].frameOffset;
    }
    return ComputedFrameOffset(stream_.layout, frame);
}

/// Decodes the next frame to pcmBufferB. False when there was none.
bool KwMpAudioReader2::DecodeNextFrame(bool& decoded) {
    stream_.heldFrame.reset();
    const FrameSource::Outcome outcome = frames_->Decode(stream_.layout.frame, pcmBufferB_.get());
    decoded &= outcome.isGood;
    return outcome.bytes != 0;
}

/// Goes back to the current frame, its pre-roll included, until it comes.
bool KwMpAudioReader2::RetryFrame(bool& decoded) {
    constexpr int kRetries = 6;
    const std::int64_t frame = stream_.currentFrame;
    for (int i = 0; i < kRetries; ++i) {
        // Just the frame that is delivered decides.
        bool ignored = true;
        decoded = true;
        if (Reposition(frame, ignored) && stream_.isPrimed && DecodeNextFrame(decoded))
            return true;
    }
    stream_.currentFrame = frame;
    return false;
}

/// Has the current frame in pcmBufferB. False when the decoder gives none.
bool KwMpAudioReader2::HoldFrame(bool& decoded) {
    if (stream_.heldFrame == stream_.currentFrame)
        return true;
    bool isGood = true;
    const bool came = stream_.isPrimed && DecodeNextFrame(isGood);
    if (!came && frames_->DeservesRetries() && !RetryFrame(isGood))
        return false;
    decoded &= isGood;
    stream_.heldFrame = stream_.currentFrame;
    stream_.nextFrame = stream_.currentFrame + 1;
    return true;
}

/// Copies from the held frame at full amplitude, then decodes frame after frame. Stands before targetFrame or
/// holds it.
bool KwMpAudioReader2::ReadSequentially(std::int64_t offset, std::uint8_t* pcm, std::size_t bytes) {
    const bool isHalved = stream_.layout.frame.layer == 3 && frames_->HalvesLayer3();
    bool decoded = true;
    stream_.currentFrame = stream_.targetFrame;
    for (;; offset = 0, ++stream_.currentFrame) {
        if (!HoldFrame(decoded)) {
            Mute(pcm, bytes);
            return true;
        }
        const auto skipped = static_cast<std::size_t>(offset);
        const std::size_t available = static_cast<std::size_t>(stream_.layout.frame.pcmBytes) - skipped;
        const std::size_t copied = std::min(available, bytes);
        const auto* held = reinterpret_cast<const std::uint8_t*>(pcmBufferB_.get()) + skipped;
        if (isHalved)
            DoubleAmplitude({held, copied}, 16, pcm);
        else
            std::memcpy(pcm, held, copied);
        pcm += copied;
        bytes -= copied;
        stream_.decodedBytes += decoded ? copied : 0;
        if (bytes == 0)
            return decoded;
    }
}

/// The external decoder has given up: what is missing of the request is silence.
void KwMpAudioReader2::Mute(std::uint8_t* pcm, std::size_t bytes) {
    std::memset(pcm, 0, bytes);
    ForgetPosition();
    LogDecodeError(static_cast<std::int32_t>(stream_.targetFrame));
}

} // namespace trnmpa
