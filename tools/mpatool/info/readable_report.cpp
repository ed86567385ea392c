#include "mpatool/command_line/time_parse.h"
#include "mpatool/info/file_report.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/stream/frame_chain.h"

#include <cmath>
#include <cstdio>
#include <string_view>

namespace mpatool {

namespace {

constexpr std::size_t kLabelWidth = 18;
constexpr double kTicksPerSecond = 1e7; // 100 ns

/// Builds the aligned lines of one file.
class Page {
public:
    explicit Page(const std::string& title) : text_(title + "\n") {}

    void Section(std::string_view name) { text_ += "  " + std::string(name) + "\n"; }

    void Line(std::string_view label, const std::string& value) {
        std::string padded(label);
        padded.resize(std::max(kLabelWidth, padded.size() + 1), ' ');
        text_ += "    " + padded + value + "\n";
    }

    std::string Take() { return std::move(text_); }

private:
    std::string text_;
};

std::string Layer(std::int32_t layer) {
    constexpr const char* kNumerals[] = {"", "I", "II", "III"};
    return layer >= 1 && layer <= 3 ? std::string("layer ") + kNumerals[layer] : "no layer";
}

std::string Hz(std::int64_t rate) {
    return std::to_string(rate) + " Hz";
}

std::string Channels(int count) {
    return std::to_string(count) + (count == 1 ? " channel" : " channels");
}

std::string KilobitsPerSecond(double bitRate) {
    char text[32];
    const bool isWhole = std::fmod(bitRate, 1000) == 0;
    std::snprintf(text, sizeof text, isWhole ? "%.0f kbit/s" : "%.1f kbit/s", bitRate / 1000);
    return text;
}

/// "2323 (layer III)"; `base` is the number that layer I would have, less 1.
std::string NumberWithLayer(std::int32_t number, std::int32_t base) {
    const std::int32_t layer = number - base;
    const std::string text = std::to_string(number);
    return layer >= 1 && layer <= 3 ? text + " (" + Layer(layer) + ")" : text;
}

constexpr std::int32_t kClassBase = TRN_CLASS_MPEG_AUDIO_LAYER_1 - 1;
constexpr std::int32_t kCodecBase = 1040;

std::string ProbeResult(std::int32_t result) {
    switch (result) {
    case 1:
        return "1 (described)";
    case TRN_OPEN_VARIABLE_BIT_RATE:
        return "2 (variable bit rate, not described)";
    default:
        return std::to_string(result) + " (not usable)";
    }
}

void AddProbe(Page& page, const FileReport& report) {
    page.Section("reported by the module: probe");
    page.Line("result", ProbeResult(report.probeResult));
    if (!report.probe)
        return;
    const TRN_MEDIA_INFO2& probe = *report.probe;
    page.Line("class", NumberWithLayer(probe.classIdentifier, kClassBase));
    page.Line("codec", NumberWithLayer(probe.audioCodec, kCodecBase));
    page.Line("duration", FormatTime(static_cast<double>(probe.duration) / kTicksPerSecond));
    page.Line("format", Hz(probe.audioFormat.nSamplesPerSec) + ", " + Channels(probe.audioFormat.nChannels));
    page.Line("bit rate", KilobitsPerSecond(8.0 * probe.audioFormat.nAvgBytesPerSec));
}

void AddSampleReader(Page& page, const FileReport& report) {
    page.Section("reported by the module: sample reader");
    if (!report.pcm) {
        page.Line("result", report.sampleReaderOpened ? "no format" : "cannot be opened");
        return;
    }
    page.Line("format", Hz(report.pcm->nSamplesPerSec) + ", " + Channels(report.pcm->nChannels) + ", " +
                            std::to_string(report.pcm->wBitsPerSample) + " bits");
}

std::string IndexText(const StreamScan& scan) {
    if (!scan.index)
        return "none";
    std::string text = std::to_string(scan.index->entries) + " entries";
    if (scan.index->entries != scan.index->claimedEntries)
        text += " of " + std::to_string(scan.index->claimedEntries) + " claimed";
    return text + (scan.index->matchesFrames ? "" : ", not those of the frames in the file");
}

std::string BitRateText(const StreamScan& scan) {
    if (scan.IsConstantBitRate())
        return "constant, " + KilobitsPerSecond(scan.lowestBitRate);
    return "variable, " + KilobitsPerSecond(scan.lowestBitRate) + " to " +
           KilobitsPerSecond(scan.highestBitRate);
}

std::string DurationText(std::int64_t samples, double sampleRate) {
    return FormatTime(static_cast<double>(samples) / sampleRate) + " (" + std::to_string(samples) +
           " samples)";
}

void AddNumber(Page& page, std::string_view label, const std::optional<std::int64_t>& value,
               const std::string& unit) {
    if (value)
        page.Line(label, std::to_string(*value) + unit);
}

void AddEncoderFrame(Page& page, const FileReport& report) {
    if (!report.claims.encoderFrame) {
        page.Line("encoder's frame", "none");
        return;
    }
    const EncoderFrame& frame = *report.claims.encoderFrame;
    page.Line("encoder's frame", "\"" + frame.name + "\" at byte " + std::to_string(frame.offset));
    AddNumber(page, "frames", frame.frames, "");
    AddNumber(page, "bytes", frame.bytes, "");
    AddNumber(page, "quality", frame.quality, "");
    page.Line("table of contents", frame.hasTableOfContents ? "yes" : "no");
    if (!frame.encoder.empty())
        page.Line("encoder", frame.encoder);
    AddNumber(page, "encoder delay", frame.delay, " samples");
    AddNumber(page, "encoder padding", frame.padding, " samples");
    if (const auto samples = frame.SoundSamples(report.claims.samplesPerFrame))
        page.Line("sound", DurationText(*samples, report.scan.firstHeader.sampleRate));
}

void AddClaims(Page& page, const FileReport& report) {
    const FileTags& tags = report.claims.tags;
    page.Section("claimed by the file");
    AddEncoderFrame(page, report);
    if (tags.leading.empty() && tags.trailing.empty())
        page.Line("tags", "none");
    for (const auto* some : {&tags.leading, &tags.trailing})
        for (const FileTag& tag : *some)
            page.Line("tag", tag.name + " at byte " + std::to_string(tag.offset) + ", " +
                                 std::to_string(tag.bytes) + " bytes");
}

void AddCounts(Page& page, const StreamScan& scan) {
    page.Section("counted");
    page.Line("stream", std::string(VersionText(scan.firstHeader)) + " " + Layer(scan.firstHeader.layer) +
                            ", " + Hz(scan.firstHeader.sampleRate) + ", " +
                            Channels(scan.firstHeader.channels));
    page.Line("index", IndexText(scan));
    page.Line("Info frame", scan.hasInfoFrame ? "yes" : scan.index ? "not looked for" : "no");
    page.Line("first frame", "byte " + std::to_string(scan.firstHeader.firstFrameOffset));
    page.Line("bit rate", BitRateText(scan));
    page.Line("average", KilobitsPerSecond(scan.AverageBitRate()));
    page.Line("frames",
              std::to_string(scan.frames) + " of " + std::to_string(scan.samplesPerFrame) + " samples");
}

void AddDelivered(Page& page, const StreamScan& scan) {
    page.Section("delivered, by these counts");
    page.Line("decoder delay", std::to_string(scan.delaySamples) + " samples");
    page.Line("duration", DurationText(scan.Samples(), scan.firstHeader.sampleRate));
}

} // namespace

std::string ReadableReport(const FileReport& report) {
    Page page(ShownPath(report.file));
    page.Line("size", std::to_string(report.scan.fileBytes) + " bytes");
    AddClaims(page, report);
    AddCounts(page, report.scan);
    AddDelivered(page, report.scan);
    page.Section("reported by the module");
    page.Line("class by name",
              report.classByName != 0 ? NumberWithLayer(report.classByName, kClassBase) : "none");
    AddProbe(page, report);
    AddSampleReader(page, report);
    return page.Take();
}

} // namespace mpatool
