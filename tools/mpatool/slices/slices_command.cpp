#include "mpatool/slices/slices_command.h"

#include "mpatool/output/progress_bar.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/pcm/pcm_conversion.h"
#include "mpatool/pcm/pcm_output.h"
#include "mpatool/slices/slice_source.h"
#include "mpatool/stream/stream_scan.h"

#include <cstdio>
#include <limits>

namespace mpatool {

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;

/// The slices that are there, in samples per channel at the stream's rate.
struct SliceCount {
    std::uint32_t slices = 0;
    SampleRange samples;
    bool reachedEnd = false;
};

std::string Milliseconds(double seconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3f ms", seconds * 1000);
    return text;
}

/// Where a slice begins.
std::int64_t SampleOfSlice(std::uint32_t slice, std::int64_t sliceTime, std::uint32_t sampleRate) {
    const std::int64_t time = slice * sliceTime;
    return time / kUnitsPerSecond * sampleRate + time % kUnitsPerSecond * sampleRate / kUnitsPerSecond;
}

/// Reads all slices that are wanted. In the stream's own format, which costs least.
SliceCount CountSlices(ModuleHost& host, const SlicesOptions& options) {
    SliceSource source(host, options.file, options.sliceTime);
    source.GoTo(options.start);
    SliceCount count;
    std::int64_t samples = 0;
    const std::uint32_t wanted = options.count.value_or(std::numeric_limits<std::uint32_t>::max());
    while (count.slices < wanted) {
        const auto slice = source.Next();
        if (!slice) {
            count.reachedEnd = true;
            break;
        }
        samples += static_cast<std::int64_t>(slice->size() / source.Format().BytesPerSample());
        ++count.slices;
    }
    // Far behind the end, at a rate that an index claims, the place of a slice would not fit.
    if (count.slices > 0)
        count.samples.begin = SampleOfSlice(options.start, options.sliceTime, source.Format().sampleRate);
    count.samples.end = count.samples.begin + samples;
    return count;
}

void RequireSlices(const SliceCount& count, const SlicesOptions& options) {
    if (count.slices > 0)
        return;
    if (options.start > 0)
        throw ToolError(options.file,
                        "--start (slice " + std::to_string(options.start) + ") lies behind the end");
    throw ToolError(options.file, "holds less than one slice");
}

/// Samples that the slice reader decodes and leaves out before slice 0. At the lower sampling frequencies it
/// is half of the decoder's delay, except on the way to a slice after a jump.
std::int64_t LeftOutAtStart(const StreamScan& scan, const SlicesOptions& options) {
    if (scan.index)
        return 0;
    const std::int64_t delay = DelayOf(Decoder::kBuiltIn, scan.firstHeader.layer);
    return scan.firstHeader.lsf == 1 && options.start == 0 ? delay / 2 : delay;
}

/// Says what does not fill a slice. Where the reader's frames are not those of a plain walk over the file, it
/// is not known how much that is.
void NoteLost(const SliceCount& count, const StreamScan& scan, const SlicesOptions& options) {
    if (!count.reachedEnd)
        return;
    const std::int64_t total = scan.frames * scan.samplesPerFrame - LeftOutAtStart(scan, options);
    const std::int64_t lost = total - count.samples.end;
    const double rate = scan.firstHeader.sampleRate;
    const double slice = static_cast<double>(options.sliceTime) / kUnitsPerSecond;
    if (lost == 0)
        return;
    const std::string name = ShownPath(options.file);
    const double seconds = static_cast<double>(lost) / rate;
    if (lost < 0 || seconds > slice)
        PrintError(name + ": what follows the last slice, less than " + Milliseconds(slice) + ", is lost");
    else
        PrintError(name + ": the last " + Milliseconds(seconds) + " (" + std::to_string(lost) +
                   " samples) do not fill a slice and are lost");
}

void CopySlices(SliceSource& source, const SliceCount& count, const SlicesOptions& options,
                PcmOutput& output) {
    const std::int64_t samples = count.samples.Samples();
    ProgressBar progress(samples, source.Format().sampleRate);
    for (std::uint32_t i = 0; i < count.slices; ++i) {
        const auto slice = source.Next();
        if (!slice)
            throw ToolError(options.file, "ends earlier than it did when its slices were counted");
        output.Write(*slice);
        progress.Update(static_cast<std::int64_t>(static_cast<double>(samples) * (i + 1) / count.slices));
    }
}

} // namespace

void RunSlices(const SlicesOptions& options) {
    const OutputChoice choice = ChooseOutput(options.file, options.output);
    ModuleHost host(options.module);
    const StreamScan scan = ScanStream(options.file, Decoder::kBuiltIn);
    PcmOutput output(choice, options.file, options.output.force);
    const SliceCount count = CountSlices(host, options);
    RequireSlices(count, options);

    SliceSource source(host, options.file, options.sliceTime);
    const PcmFormat pcm = options.pcm.Applied(source.Format());
    if (pcm != source.Format())
        source.Convert(pcm);
    source.GoTo(options.start);
    output.Begin(pcm, AtRate(count.samples, source.Format().sampleRate, pcm.sampleRate).Samples());
    CopySlices(source, count, options, output);
    output.Commit();
    NoteLost(count, scan, options);
}

} // namespace mpatool
