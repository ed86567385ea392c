#include "reader/built_in_frames.h"

#include "mpa/first_frame_search.h"
#include "mpa/id3v2_tag.h"
#include "mpa/stream_start.h"
#include "reader/frame_agreement.h"

#include <new>

namespace trnmpa {

BuiltInFrames::BuiltInFrames() : decoder_(AMPDecoderCreate()) {
    if (decoder_ == nullptr)
        throw static_cast<int>(AMP_ERR_INTERNAL);
    decoder_->SetBitsource(&media_);
    decoder_->SetOutputBuffer(unused_.data());
    decoder_->Reset();
}

void BuiltInFrames::SetFile(const std::wstring& path, std::uint32_t blockKiB) {
    path_ = path;
    if (media_.UseEasyFile(0, blockKiB) == 0)
        throw std::bad_alloc();
}

bool BuiltInFrames::FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) {
    MpaFrameHeader header;
    if (!SkipTagAndPadding(bytes_, header.firstFrameOffset) || !trnmpa::FindFirstFrame(bytes_, header))
        return false;
    return ReadFirstFrame(header.firstFrameOffset, frame, offset);
}

bool BuiltInFrames::ReadFirstFrame(std::int64_t offset, AMPFrameInfo& frame, std::int64_t& start) {
    media_.SetPosition(offset);
    decoder_->ReadFrameHeader();
    decoder_->GetFrameInfo(&frame);
    if (frame.synced == 0)
        return false;
    decoder_->SetOutputBuffer(unused_.data());
    decoder_->DecodeFrame();
    start = media_.GetPosition() - frame.frameBytes;
    decoder_->Reset();
    return start >= 0;
}

AMPFrameInfo BuiltInFrames::DescribeFrameAt(std::int64_t offset) {
    AMPFrameInfo frame;
    media_.SetPosition(offset);
    decoder_->ReadFrameHeader();
    decoder_->GetFrameInfo(&frame);
    media_.SetPosition(offset);
    return frame;
}

void BuiltInFrames::JumpTo(std::int64_t offset, std::int64_t frame) {
    if (frame == 0)
        decoder_->Reset();
    media_.SetPosition(offset);
}

void BuiltInFrames::Skip(const AMPFrameInfo& stream) {
    ReadAgreeingHeader(*decoder_, stream);
    decoder_->SkipFrame();
}

FrameSource::Outcome BuiltInFrames::Decode(const AMPFrameInfo& stream, std::int16_t* pcm) {
    ReadAgreeingHeader(*decoder_, stream);
    decoder_->SetOutputBuffer(pcm);
    return {stream.pcmBytes, decoder_->DecodeFrame()};
}

std::int32_t BuiltInFrames::Delay(std::int32_t layer) const {
    return BuiltInDecoderDelay(layer);
}

} // namespace trnmpa
