#include "reader/external_frames.h"

#include "mpa/stream_start.h"
#include "reader/create_frames.h"

#include <algorithm>
#include <limits>

namespace trnmpa {

namespace {

AMPFrameInfo ToFrameInfo(const Mp3StreamInfo& info) {
    AMPFrameInfo frame;
    frame.synced = info.synced;
    frame.layer = info.layer;
    frame.version = info.version;
    frame.frameBytes = info.frameBytes;
    frame.bitRate = info.bitRate;
    frame.sampleRate = info.sampleRate;
    frame.stereo = info.stereo;
    frame.bitsPerSample = info.bitsPerSample;
    frame.pcmBytes = info.pcmBytes;
    return frame;
}

} // namespace

std::size_t ExternalFrames::FileBytes::Read(std::span<std::uint8_t> destination) {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::int64_t rest = std::max<std::int64_t>(decoder_.GetFileLen() - position_, 0);
    const auto count = static_cast<std::size_t>(
        std::min<std::uint64_t>({destination.size(), kMost, static_cast<std::uint64_t>(rest)}));
    if (count == 0 || decoder_.ReadFromFile(destination.data(), static_cast<std::int32_t>(count)) != 1)
        return 0;
    position_ += static_cast<std::int64_t>(count);
    return count;
}

bool ExternalFrames::FileBytes::SetPosition(std::int64_t position) {
    if (position < 0 || decoder_.SetNewFilePos(position) != 1)
        return false;
    position_ = position;
    return true;
}

ExternalFrames::ExternalFrames() : hasLibrary_(decoder_.Initialize() == 1) {}

void ExternalFrames::SetFile(const std::wstring& path, std::uint32_t) {
    decoder_.SetInputFile(os::ToAutomationString(path));
    decoder_.SetOutBuf(reinterpret_cast<unsigned char*>(unused_.data()));
}

bool ExternalFrames::FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) {
    decoder_.StartDec();
    Mp3StreamInfo info;
    decoder_.GetStreamInfo(&info);
    frame = ToFrameInfo(info);
    offset = decoder_.GetTagSize();
    MoveTo(offset);
    return frame.synced != 0;
}

AMPFrameInfo ExternalFrames::DescribeFrameAt(std::int64_t offset) {
    MoveTo(offset);
    decoder_.StartDec();
    Mp3StreamInfo info;
    decoder_.GetStreamInfo(&info);
    MoveTo(offset);
    return ToFrameInfo(info);
}

void ExternalFrames::JumpTo(std::int64_t offset, std::int64_t frame) {
    decoder_.SetNewFilePos(offset);
    decoder_.ResetDecodeBuf(frame);
}

/// It has no way to pass a frame but to decode it; what it lacks for that, behind a jump, is no failure.
void ExternalFrames::Skip(const AMPFrameInfo& stream) {
    Decode(stream, unused_.data());
}

FrameSource::Outcome ExternalFrames::Decode(const AMPFrameInfo& stream, std::int16_t* pcm) {
    decoder_.SetOutBuf(reinterpret_cast<unsigned char*>(pcm));
    std::int32_t bytes = 0;
    const bool isGood = decoder_.DecodeMP3(bytes) != 0;
    // A frame of another size would not fit between its neighbours.
    return {bytes == stream.pcmBytes ? bytes : 0, isGood};
}

std::int32_t ExternalFrames::Delay(std::int32_t layer) const {
    return ExternalDecoderDelay(layer);
}

std::unique_ptr<FrameSource> CreateExternalFrames() {
    auto frames = std::make_unique<ExternalFrames>();
    // Without its library it would decode every file to silence.
    if (!frames->HasLibrary())
        return nullptr;
    return frames;
}

} // namespace trnmpa
