#include "mpatool/command_line/raw_options.h"

#include "mpatool/decode/kernel_choice.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/stream/collected_input.h"
#include "os/paths.h"

#include <algorithm>

namespace mpatool {

namespace {

constexpr std::int64_t kShortestSlice = 10'000;     // 1 ms
constexpr std::int64_t kLongestSlice = 100'000'000; // 10 s

StreamLength RequireLength(const std::string& option, const std::string& text) {
    const auto length = ParseStreamLength(text);
    if (!length)
        throw UsageError(option + ": '" + text +
                         "' is neither a number of samples nor a time such as 62.5s or 1:02.5");
    return *length;
}

std::int64_t RequireSliceTime(const std::string& text) {
    const auto time = ParseMilliseconds(text);
    if (!time || *time < kShortestSlice || *time > kLongestSlice)
        throw UsageError("--time: '" + text +
                         "' is no number of milliseconds from 1 to 10000 with at most four decimal places");
    return *time;
}

std::vector<std::wstring> WidenAll(const std::vector<std::string>& texts) {
    std::vector<std::wstring> wide;
    wide.reserve(texts.size());
    for (const std::string& text : texts)
        wide.push_back(os::WidenUtf8(text));
    return wide;
}

/// Files, one of which may be standard input.
std::vector<std::wstring> WidenInputs(const std::vector<std::string>& texts) {
    std::vector<std::wstring> files = WidenAll(texts);
    if (std::ranges::count(files, kStandardInput) > 1)
        throw UsageError("-: standard input can be read once only");
    return files;
}

OutputOptions ToOutputOptions(const RawOptions& raw) {
    OutputOptions options;
    options.path = os::WidenUtf8(raw.output);
    if (!raw.format.empty())
        options.format = raw.format == kRawName ? OutputFormat::kRaw : OutputFormat::kWave;
    options.force = raw.force;
    return options;
}

PcmChoice ToPcmChoice(const RawOptions& raw) {
    PcmChoice choice;
    choice.sampleRate = raw.rate;
    if (raw.channels)
        choice.channels = static_cast<std::uint16_t>(*raw.channels);
    if (raw.bits)
        choice.bitsPerSample = static_cast<std::uint16_t>(*raw.bits);
    return choice;
}

} // namespace

DecodeOptions ToDecodeOptions(const RawOptions& raw) {
    DecodeOptions options;
    options.file = os::WidenUtf8(raw.file);
    options.module = os::WidenUtf8(raw.module);
    options.output = ToOutputOptions(raw);
    options.pcm = ToPcmChoice(raw);
    if (!raw.decoder.empty())
        options.decoder = raw.decoder == kExternalName ? Decoder::kExternal : Decoder::kBuiltIn;
    if (!raw.kernels.empty())
        options.kernels = KernelsByName(raw.kernels);
    if (!raw.start.empty())
        options.start = RequireLength("--start", raw.start);
    if (!raw.length.empty())
        options.length = RequireLength("--length", raw.length);
    options.index = raw.index;
    return options;
}

SlicesOptions ToSlicesOptions(const RawOptions& raw) {
    SlicesOptions options;
    options.file = os::WidenUtf8(raw.file);
    options.module = os::WidenUtf8(raw.module);
    options.output = ToOutputOptions(raw);
    options.pcm = ToPcmChoice(raw);
    options.sliceTime = RequireSliceTime(raw.sliceTime);
    options.start = static_cast<std::uint32_t>(raw.firstSlice);
    if (raw.sliceCount)
        options.count = static_cast<std::uint32_t>(*raw.sliceCount);
    return options;
}

InfoOptions ToInfoOptions(const RawOptions& raw) {
    return {WidenInputs(raw.files), os::WidenUtf8(raw.module), raw.json};
}

IndexOptions ToIndexOptions(const RawOptions& raw) {
    return {WidenAll(raw.files),
            os::WidenUtf8(raw.module),
            raw.force,
            raw.verify,
            raw.recurse,
            raw.json,
            raw.jobs};
}

CheckOptions ToCheckOptions(const RawOptions& raw) {
    return {WidenInputs(raw.files), os::WidenUtf8(raw.module), raw.json};
}

FramesOptions ToFramesOptions(const RawOptions& raw) {
    const TableForm form = raw.json ? TableForm::kJson : raw.csv ? TableForm::kCsv : TableForm::kReadable;
    return {os::WidenUtf8(raw.file), os::WidenUtf8(raw.module), form};
}

WaveformOptions ToWaveformOptions(const RawOptions& raw) {
    WaveformOptions options;
    options.file = os::WidenUtf8(raw.file);
    options.module = os::WidenUtf8(raw.module);
    options.output = os::WidenUtf8(raw.output);
    if (!raw.format.empty())
        options.format = raw.format == kSvgName ? PictureFormat::kSvg : PictureFormat::kPng;
    options.force = raw.force;
    options.width = raw.width;
    options.height = raw.height;
    if (!raw.start.empty())
        options.start = RequireLength("--start", raw.start);
    if (!raw.length.empty())
        options.length = RequireLength("--length", raw.length);
    options.bitRate = raw.bitRate;
    options.frames = raw.frames;
    return options;
}

SelftestOptions ToSelftestOptions(const RawOptions& raw) {
    return {os::WidenUtf8(raw.module), os::WidenUtf8(raw.streams), raw.json};
}

} // namespace mpatool
