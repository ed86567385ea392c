// How a stream is opened, with an index and without one.

#include "mpa/stream_start.h"
#include "reader/frame_agreement.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"
#include "reader/stream_format.h"

namespace trnmpa {

std::int32_t KwMpAudioReader2::OpenWithIndex() {
    const MpaIndexHeader header = ReadIndexHeader(*indexSource_);
    stream_.format = PcmFormatOf(header);
    stream_.layout.frame = FrameInfoOf(header);
    stream_.frameCount = header.frameCount;
    stream_.frameTable = ReadIndexEntries(*indexSource_, header.frameCount);
    if (!stream_.frameTable.empty())
        CheckAgainstFirstEntry();
    return kSuccess;
}

/// Where index and stream disagree, the decoder's reading of the stream wins.
void KwMpAudioReader2::CheckAgainstFirstEntry() {
    const std::int64_t first = stream_.frameTable.front().frameOffset;
    const AMPFrameInfo decoded = frames_->DescribeFrameAt(first);
    if (decoded.synced == 0 || FramesAgree(decoded, stream_.layout.frame))
        return;
    stream_.layout.frame = decoded;
    WAVEFORMATEX& format = stream_.format;
    format.nSamplesPerSec = static_cast<std::uint32_t>(decoded.sampleRate);
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
}

std::int32_t KwMpAudioReader2::OpenWithoutIndex() {
    if (!frames_->FindFirstFrame(stream_.layout.frame, stream_.layout.dataStart))
        return kAnalysisFailed;
    stream_.format = PcmFormatOf(stream_.layout.frame);
    DetectConstantBitRate();
    stream_.skipSamples = frames_->Delay(stream_.layout.frame.layer);
    if (stream_.layout.frame.layer == 3)
        SkipInfoFrame();
    frames_->MoveTo(stream_.layout.dataStart);
    if (!stream_.muted)
        stream_.preroll = PrerollFor(stream_.layout.frame, stream_.layout.frame.frameBytes);
    return kSuccess;
}

void KwMpAudioReader2::DetectConstantBitRate() {
    const std::int32_t sampleRate = stream_.layout.frame.sampleRate;
    // Taken as constant without reading anything; wanted. The slice reader draws the line elsewhere.
    if (sampleRate == 48000 || sampleRate == 24000) {
        stream_.layout.isConstantBitRate = true;
        return;
    }
    stream_.layout.isConstantBitRate =
        MiddleFrameMatches(frames_->Bytes(), frames_->Length(), stream_.layout);
}

void KwMpAudioReader2::SkipInfoFrame() {
    if (IsInfoFrame(frames_->Bytes(), stream_.layout.dataStart, stream_.layout.frame.frameBytes))
        stream_.layout.dataStart += stream_.layout.frame.frameBytes;
}

} // namespace trnmpa
