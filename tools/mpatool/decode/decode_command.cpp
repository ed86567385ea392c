#include "mpatool/decode/decode_command.h"

#include "index/index_format.h"
#include "mpatool/decode/kernel_choice.h"
#include "mpatool/index/index_pool.h"
#include "mpatool/module/module_host.h"
#include "mpatool/module/module_place.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/pcm/pcm_conversion.h"
#include "mpatool/pcm/pcm_output.h"
#include "mpatool/pcm/sample_stretch.h"
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

} // namespace

void RunDecode(const DecodeOptions& options) {
    const OutputChoice choice = ChooseOutput(options.file, options.output);
    const ModulePlace place(options.module, options.decoder);
    ModuleHost host(place.Path());
    if (options.kernels)
        UseKernels(host, place.Name(), *options.kernels);
    if (options.index)
        EnsureIndex(host, options.file);
    SampleStretch stretch(host, place, options.file, {options.start, options.length});

    const PcmFormat pcm = options.pcm.Applied(stretch.Format());
    StretchConversion conversion(stretch.Format(), pcm, stretch.Range(), stretch.Scan().Samples());
    PcmOutput output(choice, options.file, options.output.force);
    output.Begin(pcm, AtRate(stretch.Range(), stretch.Format().sampleRate, pcm.sampleRate).Samples());
    stretch.Read(conversion.Needed(), [&](std::span<const std::uint8_t> samples) {
        conversion.Add(samples, [&](std::span<const std::uint8_t> converted) { output.Write(converted); });
    });
    output.Commit();
}

} // namespace mpatool
