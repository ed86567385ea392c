#include "mpatool/check/check_command.h"

#include "mpatool/check/check_report.h"
#include "mpatool/module/module_host.h"
#include "mpatool/module/module_place.h"
#include "mpatool/output/json_document.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/stream/collected_input.h"
#include "os/console.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

/// Has the module decode all of the file and adds where it fails.
void CheckDecode(ModuleHost& host, Decoder decoder, const std::wstring& file, StreamCheckResult& result) {
    constexpr std::int64_t kSamplesAtOnce = 65536;
    if (!result.opens && !result.hasIndex)
        return;
    Finding finding = result.At(FindingKind::kUnreadable, result.format.firstFrameOffset,
                                result.format.firstFrameOffset, 0);
    ModuleReader reader = host.CreateReader(file);
    if (reader.Open(file, TRN_OPEN_SAMPLE_READER) != 1) {
        // That may as well be the decoder's fault.
        if (decoder == Decoder::kExternal)
            throw ToolError(
                file, "the module does not open it with the external decoder, which its settings choose");
        finding.detail = "the module does not open it for reading";
        result.findings.Add(finding);
        return;
    }
    const std::int64_t samples = result.SamplesOf(result.frames);
    for (std::int64_t start = 0; start < samples; start += kSamplesAtOnce) {
        if (os::InterruptRequested())
            throw Interrupted();
        const auto count = static_cast<std::uint32_t>(std::min(kSamplesAtOnce, samples - start));
        if (reader.Read(start, count))
            continue;
        finding.seconds = static_cast<double>(start) / result.format.sampleRate;
        finding.detail = "the module fails to decode from this time on";
        result.findings.Add(finding);
        return;
    }
}

/// Calls `show` with what was found in each file, `fail` with the reason where it could not be checked.
template <typename Show, typename Fail>
int ForEachFile(const CheckOptions& options, Show show, Fail fail) {
    ModuleHost host(options.module);
    const Decoder decoder = DecoderBySettings(options.module);
    bool isDamaged = false;
    bool hasFailed = false;
    for (const std::wstring& file : options.files) {
        if (os::InterruptRequested())
            throw Interrupted();
        try {
            const InputFile input(file);
            const StreamCheckResult result = input.Use([&](const std::wstring& path) {
                StreamCheckResult found = CheckStream(path);
                CheckDecode(host, decoder, path, found);
                return found;
            });
            isDamaged |= result.findings.HasDamage();
            show(file, result);
        } catch (const ToolError& error) {
            hasFailed = true;
            PrintError(error.what());
            fail(file, error);
        }
    }
    return hasFailed ? kExitFailure : isDamaged ? kExitDamage : kExitSuccess;
}

int RunReadable(const CheckOptions& options) {
    return ForEachFile(
        options,
        [](const std::wstring& file, const StreamCheckResult& result) { Print(ReadableCheck(file, result)); },
        [](const std::wstring&, const ToolError&) {});
}

int RunJson(const CheckOptions& options) {
    Json files = Json::array();
    const int status = ForEachFile(
        options,
        [&](const std::wstring& file, const StreamCheckResult& result) {
            files.push_back(JsonCheck(file, result));
        },
        [&](const std::wstring& file, const ToolError& error) {
            files.push_back(FailedFile(file, error.what()));
        });
    PrintDocument("check", files);
    return status;
}

} // namespace

int RunCheck(const CheckOptions& options) {
    return options.json ? RunJson(options) : RunReadable(options);
}

} // namespace mpatool
