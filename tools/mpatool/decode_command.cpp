#include "mpatool/decode_command.h"

#include "index/index_format.h"
#include "mpatool/index_pool.h"
#include "mpatool/kernel_choice.h"
#include "mpatool/module_host.h"
#include "mpatool/module_place.h"
#include "mpatool/pcm_conversion.h"
#include "mpatool/pcm_output.h"
#include "mpatool/progress_bar.h"
#include "mpatool/sample_stretch.h"
#include "mpatool/stream_scan.h"
#include "mpatool/text_output.h"
#include "mpatool/tool_error.h"
#include "os/output_file.h"
#include "os/paths.h"

namespace mpatool {

namespace {

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
    const SampleRange range =
        ChooseRange(options.file, {options.start, options.length}, scan, format.sampleRate);
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
