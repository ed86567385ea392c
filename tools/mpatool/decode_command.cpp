#include "mpatool/decode_command.h"

#include "index/index_format.h"
#include "mpatool/exported_class.h"
#include "mpatool/exported_names.h"
#include "mpatool/index_pool.h"
#include "mpatool/kernel_choice.h"
#include "mpatool/module_host.h"
#include "mpatool/module_place.h"
#include "mpatool/pcm_conversion.h"
#include "mpatool/pcm_output.h"
#include "mpatool/progress_bar.h"
#include "mpatool/stream_scan.h"
#include "mpatool/text_output.h"
#include "mpatool/tool_error.h"
#include "os/console.h"
#include "os/output_file.h"
#include "os/paths.h"
#include "trnmpafileread/audio_reader.h"

#include <algorithm>
#include <limits>

namespace mpatool {

namespace {

std::string Describe(std::int64_t samples, std::uint32_t sampleRate) {
    return std::to_string(samples) + " samples, " + FormatTime(static_cast<double>(samples) / sampleRate);
}

SampleRange ChooseRange(const DecodeOptions& options, const StreamScan& scan, std::uint32_t sampleRate) {
    const std::int64_t total = scan.Samples();
    if (total == 0)
        throw ToolError(options.file, "holds no samples behind the decoder's delay");
    const std::int64_t begin = ToSamples(options.start, sampleRate);
    if (begin >= total)
        throw ToolError(options.file, "--start (" + Describe(begin, sampleRate) + ") lies behind the end (" +
                                          Describe(total, sampleRate) + ")");
    const std::int64_t wanted =
        options.length ? ToSamples(*options.length, sampleRate) : std::numeric_limits<std::int64_t>::max();
    if (wanted == 0)
        throw UsageError("--length must be greater than 0");
    return {begin, begin + std::min(wanted, total - begin)};
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

ModuleReader OpenSampleReader(ModuleHost& host, const ModulePlace& place, const std::wstring& file) {
    ModuleReader reader = host.CreateReader(file);
    if (reader.Open(file, TRN_OPEN_SAMPLE_READER) == 1)
        return reader;
    if (place.InUse() == Decoder::kExternal && LacksDecoder(host))
        throw ToolError(place.Name(), "the module has no external decoder: it was built without one, or "
                                      "libmpg123 cannot be loaded (result -2322)");
    throw ToolError(file, "the module cannot open it");
}

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

/// Leaves an existing index alone.
void EnsureIndex(ModuleHost& host, const std::wstring& file) {
    if (os::KindOfPath(trnmpa::IndexPathFor(file)) != os::PathKind::kMissing)
        return;
    BuildIndexes(host, {{file}}, [](const IndexOutcome& outcome) {
        if (outcome.end == IndexOutcome::End::kFailed)
            throw ToolError(outcome.message);
        if (outcome.end == IndexOutcome::End::kCancelled)
            PrintError(outcome.message);
    });
}

/// What the module takes for constant or not is no measure: at 48000 and 24000 Hz it does not look.
void NoteEstimates(const StreamScan& scan, const std::wstring& file) {
    if (scan.index || (scan.IsConstantBitRate() && scan.isGapless))
        return;
    PrintError(
        os::NarrowToUtf8(file) + ": positions are estimates (" +
        (scan.IsConstantBitRate() ? "foreign bytes between frames" : "variable bit rate") +
        ", no index); to be exact, everything before --start is decoded first; --index builds an index");
}

/// Reads a stretch of the stream in requests of about a second. The module answers a request that crosses the
/// end with silence as a whole, so none does.
class StretchReader {
public:
    StretchReader(ModuleReader& reader, const PcmFormat& format, const std::wstring& file)
        : reader_(reader), format_(format), file_(file) {}

    template <typename Consume>
    void Read(const SampleRange& range, Consume consume) {
        for (std::int64_t position = range.begin; position < range.end;) {
            if (os::InterruptRequested())
                throw Interrupted();
            const auto count =
                static_cast<std::uint32_t>(std::min<std::int64_t>(format_.sampleRate, range.end - position));
            const auto pcm = reader_.Read(position, count);
            if (!pcm || pcm->size() != std::size_t{count} * format_.BytesPerSample())
                throw ToolError(file_,
                                "the module cannot decode from sample " + std::to_string(position) + " on");
            position += count;
            consume(*pcm, position);
        }
    }

private:
    ModuleReader& reader_;
    PcmFormat format_;
    const std::wstring& file_;
};

/// Where reading has to begin so that `begin` is delivered to the bit: a jump is exact only by an index that
/// lists the very frames of the file.
std::int64_t ReadFrom(const StreamScan& scan, std::int64_t begin) {
    return scan.index && scan.index->matchesFrames ? begin : 0;
}

void Transfer(StretchReader& reader, StretchConversion& conversion, std::int64_t readFrom,
              std::uint32_t sampleRate, PcmOutput& output) {
    const SampleRange& needed = conversion.Needed();
    ProgressBar progress(needed.end - readFrom, sampleRate);
    reader.Read({readFrom, needed.begin}, [&](std::span<const std::uint8_t>, std::int64_t position) {
        progress.Update(position - readFrom);
    });
    reader.Read(needed, [&](std::span<const std::uint8_t> pcm, std::int64_t position) {
        conversion.Add(pcm, [&](std::span<const std::uint8_t> converted) { output.Write(converted); });
        progress.Update(position - readFrom);
    });
}

} // namespace

void RunDecode(const DecodeOptions& options) {
    const OutputChoice choice = ChooseOutput(options.file, options.output);
    const ModulePlace place(options.module, options.decoder);
    ModuleHost host(place.Path());
    if (options.kernels)
        UseKernels(host, place.Name(), *options.kernels);
    if (options.index)
        EnsureIndex(host, options.file);
    const StreamScan scan = ScanStream(options.file, place.InUse());
    ModuleReader module = OpenSampleReader(host, place, options.file);
    const PcmFormat format = RequireFormat(module, scan, options.file);
    const SampleRange range = ChooseRange(options, scan, format.sampleRate);
    if (range.begin > 0)
        NoteEstimates(scan, options.file);

    const PcmFormat pcm = options.pcm.Applied(format);
    StretchConversion conversion(format, pcm, range, scan.Samples());
    PcmOutput output(choice, options.file, options.output.force);
    output.Begin(pcm, AtRate(range, format.sampleRate, pcm.sampleRate).Samples());
    StretchReader reader(module, format, options.file);
    Transfer(reader, conversion, ReadFrom(scan, conversion.Needed().begin), format.sampleRate, output);
    output.Commit();
}

} // namespace mpatool
