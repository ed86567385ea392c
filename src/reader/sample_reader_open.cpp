// How a stream is opened, with an index and without one.

#include "mpa/file_header_sources.h"
#include "mpa/first_frame_search.h"
#include "mpa/id3v2_tag.h"
#include "mpa/stream_start.h"
#include "reader/frame_agreement.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"

#include <limits>

namespace trnmpa {

namespace {

constexpr std::uint16_t kPcmFormatTag = 1;
constexpr std::uint16_t kIndexFormatExtraBytes = 18;

/// 0 when the header's numbers give no size that a frame can have; no decoded frame then agrees with it.
std::int32_t PcmBytesPerFrame(const MpaIndexHeader& header, std::uint16_t blockAlign) {
    const std::uint64_t bytes = std::uint64_t{header.samplesPerFrame} * blockAlign;
    return bytes <= std::numeric_limits<std::int32_t>::max() ? static_cast<std::int32_t>(bytes) : 0;
}

} // namespace

std::int32_t KwMpAudioReader2::OpenWithIndex() {
    const MpaIndexHeader header = ReadIndexHeader(*indexSource_);
    DescribeFromIndex(header);
    stream_.frameCount = header.frameCount;
    stream_.frameTable = ReadIndexEntries(*indexSource_, header.frameCount);
    if (!stream_.frameTable.empty())
        CheckAgainstFirstEntry();
    return kSuccess;
}

void KwMpAudioReader2::DescribeFromIndex(const MpaIndexHeader& header) {
    WAVEFORMATEX& format = stream_.format;
    format.wFormatTag = kPcmFormatTag;
    format.nChannels = header.channels;
    format.nSamplesPerSec = header.sampleRate;
    format.wBitsPerSample = header.bitsPerSample;
    format.nBlockAlign =
        static_cast<std::uint16_t>(std::uint32_t{header.channels} * header.bitsPerSample / 8);
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    format.cbSize = kIndexFormatExtraBytes;

    AMPFrameInfo& info = stream_.frameInfo;
    info.synced = 1;
    info.layer = header.layer;
    info.version = header.version;
    info.stereo = header.channels == 2 ? 1 : 0;
    info.bitsPerSample = header.bitsPerSample;
    info.sampleRate = static_cast<std::int32_t>(header.sampleRate);
    info.bitRate = static_cast<std::int32_t>(header.bitRate);
    info.frameBytes = header.frameBytes;
    info.pcmBytes = PcmBytesPerFrame(header, format.nBlockAlign);
}

/// Where index and stream disagree, the decoder's reading of the stream wins.
void KwMpAudioReader2::CheckAgainstFirstEntry() {
    const std::int64_t first = stream_.frameTable.front().frameOffset;
    mediaSource_->SetPosition(first);
    AMPFrameInfo decoded;
    decoder_->ReadFrameHeader();
    decoder_->GetFrameInfo(&decoded);
    mediaSource_->SetPosition(first);
    if (decoded.synced == 0 || FramesAgree(decoded, stream_.frameInfo))
        return;
    stream_.frameInfo = decoded;
    WAVEFORMATEX& format = stream_.format;
    format.nSamplesPerSec = static_cast<std::uint32_t>(decoded.sampleRate);
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
}

std::int32_t KwMpAudioReader2::OpenWithoutIndex() {
    if (!ReadFirstFrame())
        return kAnalysisFailed;
    DescribeFromFirstFrame();
    decoder_->Reset();
    DetectConstantBitRate();
    stream_.skipSamples = BuiltInDecoderDelay(stream_.frameInfo.layer);
    if (stream_.frameInfo.layer == 3)
        SkipInfoFrame();
    mediaSource_->SetPosition(stream_.dataStart);
    if (!stream_.muted)
        stream_.preroll = PrerollFor(stream_.frameInfo, stream_.frameInfo.frameBytes);
    return kSuccess;
}

/// Finds the first frame and has the decoder read it.
bool KwMpAudioReader2::ReadFirstFrame() {
    FrameBufferHeaderSource source(*mediaSource_);
    MpaFrameHeader header;
    if (!SkipTagAndPadding(source, header.firstFrameOffset) || !FindFirstFrame(source, header))
        return false;
    mediaSource_->SetPosition(header.firstFrameOffset);
    decoder_->ReadFrameHeader();
    decoder_->GetFrameInfo(&stream_.frameInfo);
    if (stream_.frameInfo.synced == 0)
        return false;
    decoder_->DecodeFrame();
    stream_.dataStart = mediaSource_->GetPosition() - stream_.frameInfo.frameBytes;
    return true;
}

void KwMpAudioReader2::DescribeFromFirstFrame() {
    const AMPFrameInfo& info = stream_.frameInfo;
    WAVEFORMATEX& format = stream_.format;
    format.wFormatTag = kPcmFormatTag;
    format.nChannels = info.stereo != 0 ? 2 : 1;
    format.nSamplesPerSec = static_cast<std::uint32_t>(info.sampleRate);
    format.wBitsPerSample = static_cast<std::uint16_t>(info.bitsPerSample);
    format.nBlockAlign = static_cast<std::uint16_t>(format.nChannels * format.wBitsPerSample / 8);
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    format.cbSize = 0;
}

void KwMpAudioReader2::DetectConstantBitRate() {
    const AMPFrameInfo& info = stream_.frameInfo;
    // Taken as constant without reading anything; wanted.
    if (info.sampleRate == 48000 || info.sampleRate == 24000) {
        stream_.cbrMode = 1;
        return;
    }
    FrameBufferHeaderSource source(*mediaSource_);
    const FrameHeaderBytes first = ReadFourBytes(source, stream_.dataStart);
    const std::int64_t frames =
        info.frameBytes > 0 ? (mediaSource_->GetLength() - stream_.dataStart) / info.frameBytes : 0;
    const FrameHeaderBytes middle = ReadFourBytes(source, frames / 2 * info.frameBytes + stream_.dataStart);
    stream_.cbrMode = SameCbrHeader(first, middle) ? 1 : 0;
}

/// An "Info" frame describes the stream and is never decoded. Only frames that carry the text where a stereo
/// MPEG-1 frame has it are recognised.
void KwMpAudioReader2::SkipInfoFrame() {
    std::vector<std::uint8_t> frame(static_cast<std::size_t>(stream_.frameInfo.frameBytes));
    mediaSource_->SetPosition(stream_.dataStart);
    mediaSource_->Read(frame.data(), static_cast<int>(frame.size()));
    if (mediaSource_->InfoTagKind(frame.data(), static_cast<std::uint32_t>(frame.size())) == kInfoTag)
        stream_.dataStart += stream_.frameInfo.frameBytes;
}

} // namespace trnmpa
