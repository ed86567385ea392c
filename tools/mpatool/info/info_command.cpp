#include "mpatool/info/info_command.h"

#include "mpatool/info/file_report.h"
#include "mpatool/module/module_place.h"
#include "mpatool/output/json_document.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/stream/collected_input.h"
#include "os/console.h"

#include <nlohmann/json.hpp>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

/// Calls `show` with the report of each file, `fail` with the reason where there is none.
template <typename Show, typename Fail>
int ForEachFile(const InfoOptions& options, Show show, Fail fail) {
    ModuleHost host(options.module);
    const Decoder decoder = DecoderBySettings(options.module);
    int status = kExitSuccess;
    for (const std::wstring& file : options.files) {
        if (os::InterruptRequested())
            throw Interrupted();
        std::optional<FileReport> report;
        try {
            const InputFile input(file);
            report = input.Use([&](const std::wstring& path) { return MakeReport(host, decoder, path); });
            report->file = file;
        } catch (const ToolError& error) {
            status = kExitFailure;
            PrintError(error.what());
            fail(file, error);
            continue;
        }
        show(*report);
    }
    return status;
}

int RunReadable(const InfoOptions& options) {
    const char* gap = "";
    return ForEachFile(
        options,
        [&](const FileReport& report) {
            Print(gap + ReadableReport(report));
            gap = "\n";
        },
        [](const std::wstring&, const ToolError&) {});
}

int RunJson(const InfoOptions& options) {
    Json files = Json::array();
    const int status = ForEachFile(
        options, [&](const FileReport& report) { files.push_back(JsonReport(report)); },
        [&](const std::wstring& file, const ToolError& error) {
            files.push_back(FailedFile(file, error.what()));
        });
    PrintDocument("info", files);
    return status;
}

} // namespace

int RunInfo(const InfoOptions& options) {
    return options.json ? RunJson(options) : RunReadable(options);
}

} // namespace mpatool
