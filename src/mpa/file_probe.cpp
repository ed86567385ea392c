#include "mpa/file_probe.h"

#include "index/index_format.h"
#include "mpa/file_header_sources.h"
#include "mpa/first_frame_search.h"
#include "mpa/id3v2_tag.h"
#include "mpa/info_tag.h"
#include "mpa/saturate.h"
#include "mpa/stream_start.h"
#include "trnmpafileread/plugin.h"

#include <array>

namespace trnmpa {

namespace {

constexpr std::int32_t kNoFrameClass = 1;
constexpr std::int32_t kLayer1Codec = 1041;
constexpr std::uint16_t kMpegLayer3FormatTag = 85;

std::int64_t HundredNanoseconds(double seconds) {
    return SaturatingInt64(seconds * 1000 * 1000 * 10);
}

/// Where the encoder's text lies in the first frame. Layer III of MPEG-1 single channel and of MPEG-2 stereo
/// share the first case, as side information of 17 bytes ends there.
std::int64_t EncoderTextOffset(const MpaFrameInfo& info) {
    if (info.version == 2 && info.stereo == 0)
        return 13;
    return info.version == 1 && info.stereo == 1 ? 36 : 21;
}

} // namespace

CMPGAudioFileBufferReader::CMPGAudioFileBufferReader() {
    file_.Initialize(TRCT_INITIAL_VALUE);
}

CMPGAudioFileBufferReader::~CMPGAudioFileBufferReader() {
    CloseFile();
}

std::int32_t CMPGAudioFileBufferReader::ParseFile(const std::wstring& path) {
    if (OpenFile(path) == 0)
        return kProbeUnusable;
    description_.fileSize = GetFileLength();
    const std::wstring indexPath = IndexPathFor(path);
    const bool hasIndex = TRCT_FileExists(os::ToAutomationString(indexPath)) != 0;
    if (hasIndex)
        CloseFile();
    const std::int32_t result = hasIndex ? ParseIndex(indexPath) : ParseStream();
    CloseFile();
    return result;
}

std::int32_t CMPGAudioFileBufferReader::ToMediaInfo2(TRN_MEDIA_INFO2* out) const {
    if (out == nullptr)
        return 0;
    TRN_MediaInfoTransformer transformer;
    transformer.Info1TransToInfo2(&description_, out);
    return 1;
}

std::int32_t CMPGAudioFileBufferReader::ParseIndex(const std::wstring& path) {
    if (file_.OpenFile(os::ToAutomationString(path), TRCT_OPEN_FOR_READING) == 0)
        return kProbeUnusable;
    std::array<std::uint8_t, kIndexHeaderBytes> bytes = {};
    ReadBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    DescribeIndex(ParseIndexHeader(bytes));
    isVbr_ = 1;
    return kProbeDescribed;
}

std::int32_t CMPGAudioFileBufferReader::ParseStream() {
    FileAccessHeaderSource source(file_);
    // A tag that claims too much leaves an offset where nothing will be found.
    static_cast<void>(SkipId3v2Tag(source, header_.firstFrameOffset));
    if (!FindFirstFrame(source, header_)) {
        description_.classIdentifier = kNoFrameClass;
        return kProbeUnusable;
    }
    const CbrStream stream{fileLength_, header_.firstFrameOffset, FillFrameInfo(header_)};
    isVbr_ = DetectVbr(source, stream) ? 1 : 0;
    if (isVbr_ != 0)
        return kProbeVariableBitRate;
    description_.duration = HundredNanoseconds(CbrSeconds(source, stream));
    DescribeStream(stream.info);
    return kProbeDescribed;
}

bool CMPGAudioFileBufferReader::DetectVbr(HeaderSource& source, const CbrStream& stream) {
    cbrKind_ = CbrKind::kUnknown;
    const TagText text = ReadFourBytes(source, stream.firstFrameOffset + EncoderTextOffset(stream.info));
    infoFrame_ = text == kInfoText ? 1 : 0;
    if (text == kXingText || text == kVbriText)
        return true;
    cbrKind_ = CheckCbr(source, stream);
    return cbrKind_ == CbrKind::kUnknown;
}

/// Of a layer III stream the "Info" frame and the delay of encoder and decoder are no audio. A length that
/// comes from the bit rate alone is not corrected.
double CMPGAudioFileBufferReader::CbrSeconds(HeaderSource& source, const CbrStream& stream) const {
    const MpaFrameInfo& info = stream.info;
    const auto end = FindCbrEnd(source, stream, cbrKind_);
    if (!end)
        return static_cast<double>(stream.fileLength - stream.firstFrameOffset) * 8.0 / info.bitRate;
    double seconds = *end;
    if (info.layer == 3) {
        if (infoFrame_ == 1)
            seconds -= static_cast<double>(SamplesPerFrame(info.layer, info.version)) / info.sampleRate;
        seconds -= static_cast<double>(BuiltInDecoderDelay(info.layer)) / info.sampleRate;
    }
    return seconds;
}

void CMPGAudioFileBufferReader::DescribeIndex(const MpaIndexHeader& index) {
    const double seconds = index.sampleRate == 0 ? 0.0
                                                 : static_cast<double>(index.frameCount) *
                                                       index.samplesPerFrame / index.sampleRate;
    description_.duration = HundredNanoseconds(seconds);
    WAVEFORMATEX& format = description_.audioFormat;
    format.wFormatTag = kMpegLayer3FormatTag;
    format.wBitsPerSample = index.bitsPerSample;
    format.nSamplesPerSec = index.sampleRate;
    format.nChannels = index.channels;
    format.nAvgBytesPerSec = index.bitRate / 8;
    format.nBlockAlign = static_cast<std::uint16_t>(std::uint32_t{index.bitsPerSample} * index.channels / 8);
    description_.audioPresent = 1;
    DescribeLayer(index.layer);
}

void CMPGAudioFileBufferReader::DescribeStream(const MpaFrameInfo& info) {
    DescribeLayer(info.layer);
    WAVEFORMATEX& format = description_.audioFormat;
    format.nChannels = info.stereo == 1 ? 2 : 1;
    format.wFormatTag = kMpegLayer3FormatTag;
    format.wBitsPerSample = static_cast<std::uint16_t>(info.bitsPerSample);
    format.nSamplesPerSec = static_cast<std::uint32_t>(info.sampleRate);
    format.nAvgBytesPerSec = static_cast<std::uint32_t>(info.bitRate / 8);
    format.nBlockAlign = static_cast<std::uint16_t>(info.bitsPerSample * format.nChannels / 8);
    description_.streamPresent = 1;
    description_.audioPresent = 1;
    description_.filePath = path_;
}

/// Another number than 1 to 3, which only an index can say, leaves the description's class and codec.
void CMPGAudioFileBufferReader::DescribeLayer(std::int32_t layer) {
    if (layer < 1 || layer > 3)
        return;
    description_.classIdentifier = TRN_CLASS_MPEG_AUDIO_LAYER_1 + layer - 1;
    description_.audioCodec = kLayer1Codec + layer - 1;
}

std::int32_t CMPGAudioFileBufferReader::OpenFile(const std::wstring& path) {
    if (file_.OpenFile(os::ToAutomationString(path), TRCT_OPEN_FOR_READING) == 0)
        return 0;
    path_ = path;
    return 1;
}

std::int64_t CMPGAudioFileBufferReader::GetFileLength() {
    fileLength_ = file_.GetLength();
    return fileLength_;
}

std::int64_t CMPGAudioFileBufferReader::Tell() const {
    return file_.GetPosition();
}

std::int32_t CMPGAudioFileBufferReader::Seek(std::int64_t position) {
    return file_.SetPosition(position);
}

std::uint32_t CMPGAudioFileBufferReader::ReadBytes(void* buffer, std::uint32_t count) {
    return file_.Read(buffer, count);
}

std::int32_t CMPGAudioFileBufferReader::CloseFile() {
    file_.CloseFile();
    return 1;
}

} // namespace trnmpa
