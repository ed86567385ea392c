#include "mpatool/pcm/sample_stretch.h"

#include "mpatool/module/exported_class.h"
#include "mpatool/module/exported_names.h"
#include "mpatool/output/progress_bar.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"
#include "trnmpafileread/audio_reader.h"

#include <algorithm>
#include <limits>

namespace mpatool {

namespace {

std::string Describe(std::int64_t samples, std::uint32_t sampleRate) {
    return std::to_string(samples) + " samples, " + FormatTime(static_cast<double>(samples) / sampleRate);
}

/// Whether the module makes no sample reader for want of the decoder that its settings choose.
bool LacksDecoder(ModuleHost& host) {
    using Reader = TRN_MpAudioFileReader2;
    if (host.Export(exported::kSampleReaderMake) == nullptr)
        return false;
    const ExportedFunction<decltype(&Reader::Initialize)> initialize(host, exported::kSampleReaderInitialize);
    ExportedObject<Reader> reader(host, exported::kSampleReaderMake, exported::kSampleReaderEnd);
    return initialize(reader.Get()) == TRN_AUDIO_READER_NO_DECODER;
}

/// Throws ToolError when there are none, UsageError for a length of 0.
SampleRange ChooseRange(const std::wstring& file, const StretchChoice& choice, const StreamScan& scan,
                        std::uint32_t sampleRate) {
    const std::int64_t total = scan.Samples();
    if (total == 0)
        throw ToolError(file, "holds no samples behind the decoder's delay");
    const std::int64_t begin = ToSamples(choice.start, sampleRate);
    if (begin >= total)
        throw ToolError(file, "--start (" + Describe(begin, sampleRate) + ") lies behind the end (" +
                                  Describe(total, sampleRate) + ")");
    const std::int64_t wanted =
        choice.length ? ToSamples(*choice.length, sampleRate) : std::numeric_limits<std::int64_t>::max();
    if (wanted == 0)
        throw UsageError("--length must be greater than 0");
    return {begin, begin + std::min(wanted, total - begin)};
}

/// Throws ToolError.
ModuleReader OpenSampleReader(ModuleHost& host, const ModulePlace& place, const std::wstring& file) {
    ModuleReader reader = host.CreateReader(file);
    if (reader.Open(file, TRN_OPEN_SAMPLE_READER) == 1)
        return reader;
    if (place.InUse() == Decoder::kExternal && LacksDecoder(host))
        throw ToolError(place.Name(), "the module has no external decoder: it was built without one, or "
                                      "libmpg123 cannot be loaded (result -2322)");
    throw ToolError(file, "the module cannot open it");
}

/// Throws ToolError when the samples are not in the format of the frames.
PcmFormat RequireFormat(ModuleReader& reader, const StreamScan& scan, const std::wstring& file) {
    const auto wave = reader.PcmFormat();
    if (!wave)
        throw ToolError(file, "the module does not tell its format");
    const PcmFormat format = {wave->nSamplesPerSec, wave->nChannels, wave->wBitsPerSample};
    const PcmFormat frames = {static_cast<std::uint32_t>(scan.firstHeader.sampleRate),
                              static_cast<std::uint16_t>(scan.firstHeader.channels)};
    if (format != frames)
        throw ToolError(file, scan.index ? "the index beside it describes another stream"
                                         : "the module describes another stream than its frames do");
    return format;
}

/// Says that jumps are estimates, where they are. What the module takes for constant or not is no measure: at
/// 48000 and 24000 Hz it does not look.
void NoteEstimates(const StreamScan& scan, const std::wstring& file) {
    if (scan.index || (scan.IsConstantBitRate() && scan.isGapless))
        return;
    PrintError(
        ShownPath(file) + ": positions are estimates (" +
        (scan.IsConstantBitRate() ? "foreign bytes between frames" : "variable bit rate") +
        ", no index); to be exact, everything before --start is decoded first; --index builds an index");
}

/// Where reading has to begin so that `begin` is delivered to the bit: a jump is exact only by an index that
/// lists the very frames of the file.
std::int64_t ReadFrom(const StreamScan& scan, std::int64_t begin) {
    return scan.index && scan.index->matchesFrames ? begin : 0;
}

} // namespace

SampleStretch::SampleStretch(ModuleHost& host, const ModulePlace& place, const std::wstring& file,
                             const StretchChoice& choice)
    : file_(file), scan_(ScanStream(file, place.InUse())), module_(OpenSampleReader(host, place, file)),
      format_(RequireFormat(module_, scan_, file)),
      range_(ChooseRange(file, choice, scan_, format_.sampleRate)) {
    if (range_.begin > 0)
        NoteEstimates(scan_, file);
}

void SampleStretch::Read(const SampleRange& range, const Consume& consume) {
    const std::int64_t from = ReadFrom(scan_, range.begin);
    ProgressBar progress(range.end - from, format_.sampleRate);
    ReadPieces({from, range.begin}, [&](std::span<const std::uint8_t>, std::int64_t position) {
        progress.Update(position - from);
    });
    ReadPieces(range, [&](std::span<const std::uint8_t> pcm, std::int64_t position) {
        consume(pcm);
        progress.Update(position - from);
    });
}

/// The module answers a request that crosses the end with silence as a whole, so none does.
void SampleStretch::ReadPieces(const SampleRange& range, const ConsumeAt& consume) {
    for (std::int64_t position = range.begin; position < range.end;) {
        if (os::InterruptRequested())
            throw Interrupted();
        const auto count =
            static_cast<std::uint32_t>(std::min<std::int64_t>(format_.sampleRate, range.end - position));
        const auto pcm = module_.Read(position, count);
        if (!pcm || pcm->size() != std::size_t{count} * format_.BytesPerSample())
            throw ToolError(file_,
                            "the module cannot decode from sample " + std::to_string(position) + " on");
        position += count;
        consume(*pcm, position);
    }
}

} // namespace mpatool
