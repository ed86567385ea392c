#include "mpatool/waveform/waveform_command.h"

#include "mpatool/module/module_host.h"
#include "mpatool/module/module_place.h"
#include "mpatool/output/output_target.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/pcm/sample_stretch.h"
#include "mpatool/stream/frame_chain.h"
#include "mpatool/waveform/picture.h"
#include "mpatool/waveform/png_writer.h"
#include "mpatool/waveform/svg_writer.h"
#include "os/paths.h"

namespace mpatool {

namespace {

constexpr std::int32_t kLaneHeight = 80;

PictureFormat FormatOf(const WaveformOptions& options) {
    if (options.format)
        return *options.format;
    if (options.output.empty())
        return PictureFormat::kPng;
    const std::wstring extension = LowerExtension(options.output);
    if (extension == L".svg")
        return PictureFormat::kSvg;
    if (extension == L".png")
        return PictureFormat::kPng;
    throw UsageError("-o " + ShownPath(options.output) +
                     ": the name ends neither in .svg nor in .png; say --format");
}

std::wstring OutputPath(const WaveformOptions& options, PictureFormat format) {
    if (!options.output.empty())
        return options.output;
    return NamedAfter(options.file, format == PictureFormat::kSvg ? L".svg" : L".png");
}

/// Layer II has neither blocks nor a reservoir.
bool HasFrameLanes(const WaveformOptions& options, const StreamScan& scan) {
    if (!options.frames || scan.firstHeader.layer == 3)
        return options.frames;
    PrintError(ShownPath(options.file) +
               ": Layer II has neither block types nor a bit reservoir; drawn without --frames");
    return false;
}

std::int32_t HeightFor(const WaveformOptions& options, const Contents& contents) {
    const std::int32_t lanes = (contents.bitRate ? 1 : 0) + (contents.frames ? 2 : 0);
    return options.height.value_or(kUsualHeight + lanes * kLaneHeight);
}

std::string TitleOf(const std::wstring& file, const StreamScan& scan, const SampleRange& range) {
    const double rate = scan.firstHeader.sampleRate;
    const auto time = [&](std::int64_t sample) { return FormatTime(static_cast<double>(sample) / rate); };
    const bool isWhole = range.begin == 0 && range.end == scan.Samples();
    return os::NarrowToUtf8(FileName(file)) + "  " + FormatText(scan.firstHeader) + ", " +
           (isWhole ? time(range.end) : time(range.begin) + " to " + time(range.end));
}

void WritePicture(const Drawing& drawing, PictureFormat format, const std::string& title,
                  OutputTarget& target) {
    const WriteBytes write = [&](std::string_view bytes) {
        target.Write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    };
    if (format == PictureFormat::kSvg)
        WriteSvg(drawing, title, write);
    else
        WritePng(drawing, write);
    target.Commit();
}

} // namespace

void RunWaveform(const WaveformOptions& options) {
    const PictureFormat pictureFormat = FormatOf(options);
    const ModulePlace place(options.module, std::nullopt);
    ModuleHost host(place.Path());
    SampleStretch stretch(host, place, options.file, {options.start, options.length});
    const StreamScan& scan = stretch.Scan();
    const SampleRange& range = stretch.Range();
    const PcmFormat& format = stretch.Format();
    OutputTarget target(OutputPath(options, pictureFormat), options.file, options.force);

    const Contents contents = {format.channels, options.bitRate, HasFrameLanes(options, scan)};
    const std::int32_t height = HeightFor(options, contents);
    const Layout layout = LayOut(options.width, height, contents);
    const Columns columns(range, layout.PlotWidth());
    PeakColumns peaks(columns, format.channels);
    stretch.Read(range, [&](std::span<const std::uint8_t> pcm) { peaks.Add(pcm); });
    std::optional<FrameColumns> frames;
    if (contents.bitRate || contents.frames)
        frames = CollectFrames(options.file, columns, place.InUse(), contents.frames);

    const std::string title = TitleOf(options.file, scan, range);
    const Drawing drawing =
        DrawPicture(options.width, height, layout,
                    {title, format.sampleRate, columns, peaks, frames ? &*frames : nullptr});
    WritePicture(drawing, pictureFormat, title, target);
}

} // namespace mpatool
