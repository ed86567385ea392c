#include "reader/slice_reader.h"

#include "mpa/id3v2_tag.h"
#include "mpa/stream_start.h"
#include "plugin/boundary.h"
#include "reader/slice_times.h"
#include "reader/stream_format.h"
#include "trcommontoolsr/file_access.h"

#include <algorithm>
#include <limits>

namespace trnmpa {

namespace {

constexpr std::uint32_t kMediaBlockKiB = 64;
constexpr std::int32_t kConverterMode = 0;
constexpr std::int32_t kConverterBufferBytes = 262144;

} // namespace

std::int32_t KwMpAudioReader::Initialize() {
    if (frames_ != nullptr)
        return 1;
    return Guarded([this] {
        CreateCompanions();
        return 1;
    });
}

std::unique_ptr<BuiltInFrames> KwMpAudioReader::CreateFrames() {
    return std::make_unique<BuiltInFrames>();
}

void KwMpAudioReader::CreateCompanions() {
    auto frames = CreateFrames();
    converter_ = std::make_unique<TRN_PCMBasicProcess>(kConverterMode, kConverterBufferBytes);
    frames_ = std::move(frames);
}

std::int32_t KwMpAudioReader::SetInputFile(const std::wstring& path) {
    return Guarded([&]() -> std::int32_t {
        if (frames_ == nullptr)
            return 0;
        const bool isInStorage = IsStoragePath(path);
        if (!isInStorage && TRCT_FileExists(os::ToAutomationString(path)) == 0)
            return 0;
        stream_ = Stream();
        path_.clear();
        index_.reset();
        hasIndex_ = false;
        const std::int32_t result = isInStorage ? 1 : FindIndex(IndexPathFor(path));
        // Without the index that could not be looked for, positions would be others: the path comes last.
        path_ = path;
        return result;
    });
}

std::int32_t KwMpAudioReader::FindIndex(const std::wstring& indexPath) {
    if (TRCT_FileExists(os::ToAutomationString(indexPath)) == 0)
        return 1;
    index_ = std::make_unique<CMpAudioFrameBufferReader>();
    hasIndex_ = true;
    return index_->Open(indexPath);
}

std::int32_t KwMpAudioReader::SetPerPcmFrameTime(std::int64_t time) {
    sliceTime_ = time;
    // The end of a slice says nothing about slices of another length.
    stream_.knowsPlace &= !stream_.metEnd;
    return 1;
}

std::int32_t KwMpAudioReader::StartRead() {
    return Guarded([this]() -> std::int32_t {
        stream_ = Stream();
        if (frames_ == nullptr)
            return 0;
        // A decoder is locked to the format of the first stream that it sees.
        CreateCompanions();
        frames_->SetFile(path_, kMediaBlockKiB);
        stream_.isReady = frames_->Open() && (hasIndex_ ? OpenWithIndex() : OpenWithoutIndex());
        return stream_.isReady ? 1 : 0;
    });
}

/// The header's numbers are taken as they stand; the decoder is not asked.
bool KwMpAudioReader::OpenWithIndex() {
    const MpaIndexHeader header = ReadIndexHeader(*index_);
    stream_.format = PcmFormatOf(header);
    stream_.layout.frame = FrameInfoOf(header);
    stream_.frameTable = ReadIndexEntries(*index_, header.frameCount);
    if (!stream_.frameTable.empty())
        frames_->MoveTo(stream_.frameTable.front().frameOffset);
    return true;
}

bool KwMpAudioReader::OpenWithoutIndex() {
    FrameLayout& layout = stream_.layout;
    std::int64_t start = 0;
    if (!SkipTagAndPadding(frames_->Bytes(), start, TagSizeBits::kEight) ||
        !frames_->ReadFirstFrame(start, layout.frame, layout.dataStart))
        return false;
    stream_.format = PcmFormatOf(layout.frame);
    stream_.startSkip = frames_->Delay(layout.frame.layer);
    if (layout.frame.layer == 3 && IsInfoFrame(frames_->Bytes(), layout.dataStart, layout.frame.frameBytes))
        layout.dataStart += layout.frame.frameBytes;
    layout.isConstantBitRate = DetectConstantBitRate();
    // At the lower sampling frequencies only half of the delay is dropped here; a jump counts all of it.
    const std::int64_t drop = stream_.startSkip * stream_.format.nBlockAlign;
    stream_.startDrop = static_cast<std::size_t>(layout.frame.version == 2 ? drop / 2 : drop);
    frames_->MoveTo(layout.dataStart);
    return true;
}

bool KwMpAudioReader::DetectConstantBitRate() {
    const std::int32_t sampleRate = stream_.layout.frame.sampleRate;
    // All other rates are taken as constant without reading anything; wanted. The sample reader draws the
    // line elsewhere.
    if (sampleRate != 44100 && sampleRate != 22050)
        return true;
    return MiddleFrameMatches(frames_->Bytes(), frames_->Length(), stream_.layout);
}

std::int32_t KwMpAudioReader::GetOriginalStreamInfo(WAVEFORMATEX& format) const {
    format = stream_.format;
    return 1;
}

std::int32_t KwMpAudioReader::GetOriginalStreamInfo(tag_KW_MpaStreamInfo& info) const {
    const AMPFrameInfo& frame = stream_.layout.frame;
    info = {};
    info.version = frame.version;
    info.layer = frame.layer;
    info.bitRate = static_cast<std::uint32_t>(frame.bitRate);
    info.sampleRate = static_cast<std::uint32_t>(frame.sampleRate);
    info.bitsPerSample = static_cast<std::uint32_t>(frame.bitsPerSample);
    info.stereo = frame.stereo;
    return 1;
}

std::int32_t KwMpAudioReader::SetOutputFormat(const WAVEFORMATEX& format) {
    outputFormat_ = format;
    return 1;
}

std::int32_t KwMpAudioReader::SeekTo(std::uint32_t slice) {
    stream_.requestedSlice = slice;
    return 1;
}

std::int32_t KwMpAudioReader::PositionByTime(std::int64_t time, std::uint32_t& position) {
    const auto bytes = PcmBytesBefore(std::max<std::int64_t>(time, 0), stream_.format);
    if (!stream_.isReady || !bytes || stream_.layout.frame.pcmBytes <= 0)
        return 0;
    constexpr std::int64_t kLargest = std::numeric_limits<std::uint32_t>::max();
    const auto offset = FrameOffset(*bytes / stream_.layout.frame.pcmBytes);
    position = static_cast<std::uint32_t>(std::clamp<std::int64_t>(offset.value_or(kLargest), 0, kLargest));
    return 1;
}

} // namespace trnmpa
