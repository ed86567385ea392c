// How a run of samples is delivered.

#include "reader/frame_agreement.h"
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

std::int32_t KwMpAudioReader2::Deliver(const AudioReaderDataIn& request, std::size_t bytes,
                                       unsigned char*& data) {
    const auto position = BytePosition(request.startSample, stream_.skipSamples, stream_.format.nBlockAlign);
    if (stream_.muted || !HasFrames() || !position)
        return Silence(bytes, data);
    stream_.targetFrame = *position / stream_.frameInfo.pcmBytes;
    const std::int64_t offset = *position % stream_.frameInfo.pcmBytes;
    std::uint8_t* pcm = pcmBufferA_.Require(bytes);
    bool decoded = true;
    try {
        if (!CanContinue(stream_.targetFrame, offset) && !Reposition(stream_.targetFrame, decoded))
            return Silence(bytes, data);
        decoded &= ReadSequentially(offset, pcm, bytes);
    } catch (int code) {
        ForgetPosition();
        return code == AMP_ERR_END_OF_STREAM ? Silence(bytes, data) : kUnexpectedException;
    }
    if (!decoded) {
        ForgetPosition();
        return kDecodeFailed;
    }
    data = pcm;
    if (stream_.frameInfo.layer == 3) {
        data = outputBuffer_.Require(bytes);
        DoubleAmplitude({pcm, bytes}, data);
    }
    return kSuccess;
}

std::int32_t KwMpAudioReader2::Silence(std::size_t bytes, unsigned char*& data) {
    data = outputBuffer_.Require(std::max<std::size_t>(bytes, 1));
    std::memset(data, 0, bytes);
    return kSuccess;
}

bool KwMpAudioReader2::HasFrames() const {
    const bool hasEntries = !stream_.hasIndex || !stream_.frameTable.empty();
    return hasEntries && stream_.frameInfo.pcmBytes > 0;
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
    const std::int64_t start = FindPrerollStart(frame);
    if (start == 0)
        decoder_->Reset();
    const auto offset = FrameOffset(start);
    if (!offset || *offset > mediaSource_->GetLength())
        return false;
    mediaSource_->SetPosition(*offset);
    const std::int64_t firstDecoded = frame - stream_.preroll.decodedFrames;
    for (std::int64_t i = start; i < frame; ++i) {
        if (i >= firstDecoded) {
            decoded &= DecodeNextFrame();
        } else {
            ReadAgreeingHeader();
            decoder_->SkipFrame();
        }
    }
    stream_.currentFrame = frame;
    stream_.nextFrame = frame;
    return true;
}

std::int64_t KwMpAudioReader2::FindPrerollStart(std::int64_t frame) {
    if (!stream_.hasIndex)
        return PrerollStart(stream_.frameInfo, stream_.preroll, frame);
    if (frame < static_cast<std::int64_t>(stream_.frameTable.size()))
        return PrerollStart(stream_.frameInfo, stream_.frameTable, frame, stream_.preroll);
    stream_.preroll = PrerollFor(stream_.frameInfo, stream_.frameInfo.frameBytes);
    return PrerollStart(stream_.frameInfo, stream_.preroll, frame);
}

/// Byte offset from which the decoder's search finds the frame: exact with an index, exact for frames of one
/// length, else an estimate. Nothing for a frame that cannot be in the file.
std::optional<std::int64_t> KwMpAudioReader2::FrameOffset(std::int64_t frame) const {
    if (stream_.hasIndex) {
        if (frame >= static_cast<std::int64_t>(stream_.frameTable.size()))
            return std::nullopt;
        return stream_.frameTable[static_cast<std::size_t>(frame)].frameOffset;
    }
    const AMPFrameInfo& info = stream_.frameInfo;
    // Far beyond any file, and still exact as a double.
    constexpr std::int64_t kMostFrames = std::int64_t{1} << 48;
    if (frame > kMostFrames)
        return std::nullopt;
    if (stream_.cbrMode != 0)
        return frame * info.frameBytes + stream_.dataStart;
    const int samplesPerFrame = info.pcmBytes / (info.bitsPerSample / 8) / (info.stereo != 0 ? 2 : 1);
    const double bytes = static_cast<double>(samplesPerFrame) / info.sampleRate * static_cast<double>(frame) *
                         info.bitRate / 8;
    const std::int64_t offset = static_cast<std::int64_t>(bytes) + stream_.dataStart;
    return offset > 0 ? offset - 1 : offset;
}

/// Reads headers up to the next frame of the stream's own format. At the end of the data the decoder throws.
void KwMpAudioReader2::ReadAgreeingHeader() {
    AMPFrameInfo info;
    do {
        decoder_->ReadFrameHeader();
        decoder_->GetFrameInfo(&info);
    } while (!FramesAgree(info, stream_.frameInfo));
}

bool KwMpAudioReader2::DecodeNextFrame() {
    stream_.heldFrame.reset();
    ReadAgreeingHeader();
    decoder_->SetOutputBuffer(pcmBufferB_.get());
    return decoder_->DecodeFrame();
}

/// Copies from the held frame, then decodes frame after frame. Stands before targetFrame or holds it.
bool KwMpAudioReader2::ReadSequentially(std::int64_t offset, std::uint8_t* pcm, std::size_t bytes) {
    bool decoded = true;
    stream_.currentFrame = stream_.targetFrame;
    for (;; offset = 0, ++stream_.currentFrame) {
        if (stream_.heldFrame != stream_.currentFrame) {
            decoded &= DecodeNextFrame();
            stream_.heldFrame = stream_.currentFrame;
            stream_.nextFrame = stream_.currentFrame + 1;
        }
        const auto skipped = static_cast<std::size_t>(offset);
        const std::size_t available = static_cast<std::size_t>(stream_.frameInfo.pcmBytes) - skipped;
        const std::size_t copied = std::min(available, bytes);
        std::memcpy(pcm, reinterpret_cast<const std::uint8_t*>(pcmBufferB_.get()) + skipped, copied);
        pcm += copied;
        bytes -= copied;
        if (bytes == 0)
            return decoded;
    }
}

} // namespace trnmpa
