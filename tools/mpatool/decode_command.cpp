#include "mpatool/decode_command.h"

#include "index/index_format.h"
#include "mpatool/index_pool.h"
#include "mpatool/module_host.h"
#include "mpatool/output_target.h"
#include "mpatool/progress_bar.h"
#include "mpatool/stream_scan.h"
#include "mpatool/text_output.h"
#include "mpatool/tool_error.h"
#include "mpatool/wave_writer.h"
#include "os/console.h"
#include "os/output_file.h"
#include "os/paths.h"

#include <algorithm>
#include <limits>

namespace mpatool {

namespace {

/// Samples per channel, from the start of the stream, end excluded.
struct SampleRange {
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

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

ModuleReader OpenSampleReader(ModuleHost& host, const std::wstring& file) {
    ModuleReader reader = host.CreateReader(file);
    if (reader.Open(file, TRN_OPEN_SAMPLE_READER) != 1)
        throw ToolError(file, "the module cannot open it");
    return reader;
}

PcmFormat RequireFormat(ModuleReader& reader, const StreamScan& scan, const std::wstring& file) {
    const auto wave = reader.PcmFormat();
    if (!wave)
        throw ToolError(file, "the module does not tell its format");
    const PcmFormat format = {wave->nSamplesPerSec, wave->nChannels};
    const PcmFormat frames = {static_cast<std::uint32_t>(scan.firstHeader.sampleRate),
                              static_cast<std::uint16_t>(scan.firstHeader.channels)};
    if (format != frames || wave->wBitsPerSample != PcmFormat::kBitsPerSample)
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

void Transfer(StretchReader& reader, const SampleRange& range, std::int64_t readFrom,
              std::uint32_t sampleRate, OutputTarget& output) {
    ProgressBar progress(range.end - readFrom, sampleRate);
    reader.Read({readFrom, range.begin}, [&](std::span<const std::uint8_t>, std::int64_t position) {
        progress.Update(position - readFrom);
    });
    reader.Read(range, [&](std::span<const std::uint8_t> pcm, std::int64_t position) {
        output.Write(pcm);
        progress.Update(position - readFrom);
    });
}

} // namespace

void RunDecode(const DecodeOptions& options) {
    const OutputChoice choice = ChooseOutput(options);
    ModuleHost host(options.module);
    if (options.index)
        EnsureIndex(host, options.file);
    const StreamScan scan = ScanStream(options.file);
    ModuleReader module = OpenSampleReader(host, options.file);
    const PcmFormat format = RequireFormat(module, scan, options.file);
    const SampleRange range = ChooseRange(options, scan, format.sampleRate);
    if (range.begin > 0)
        NoteEstimates(scan, options.file);

    OutputTarget output(choice.path, options.file, options.force);
    if (choice.format == OutputFormat::kWave)
        output.Write(WaveHeader(format, static_cast<std::uint64_t>(range.end - range.begin) *
                                            format.BytesPerSample()));
    StretchReader reader(module, format, options.file);
    Transfer(reader, range, ReadFrom(scan, range.begin), format.sampleRate, output);
    output.Commit();
}

} // namespace mpatool
