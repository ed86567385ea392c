#include "mpatool/frames/frames_command.h"

#include "mpatool/frames/frame_row.h"
#include "mpatool/module/module_place.h"
#include "mpatool/output/json_document.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/stream/collected_input.h"
#include "mpatool/stream/stream_walk.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>

namespace mpatool {

namespace {

using AppendRow = void (*)(std::string& text, const FrameRow& row);

/// Prints the rows with `separator` between them, in large pieces.
void PrintRows(StreamWalk& walk, std::int32_t delay, AppendRow append, const char* separator) {
    constexpr std::size_t kPieceBytes = 64 * 1024;
    FrameRow row;
    row.firstSample = -std::int64_t{delay};
    std::string text;
    while (const auto frame = walk.Next()) {
        row.frame = *frame;
        if (row.number > 0)
            text += separator;
        append(text, row);
        ++row.number;
        row.firstSample += frame->samplesPerFrame;
        if (text.size() >= kPieceBytes) {
            Print(text);
            text.clear();
        }
    }
    Print(text);
}

/// In the form that PrintDocument gives, piece by piece: there may be millions of rows.
void PrintTable(StreamWalk& walk, std::int32_t delay, const std::wstring& file) {
    Print("{\n  \"schema\": " + JsonText(SchemaOf("frames")) + ",\n  \"files\": [\n    {\n      \"file\": " +
          JsonText(os::NarrowToUtf8(file)) + ",\n      \"index\": " + (walk.Index() ? "true" : "false") +
          ",\n      \"delaySamples\": " + std::to_string(delay) + ",\n      \"frames\": [\n        ");
    PrintRows(walk, delay, AppendJson, ",\n        ");
    Print("\n      ]\n    }\n  ]\n}\n");
}

void PrintFrames(StreamWalk& walk, std::int32_t delay, const FramesOptions& options) {
    switch (options.form) {
    case TableForm::kJson:
        return PrintTable(walk, delay, options.file);
    case TableForm::kCsv:
        Print(CsvHeading());
        return PrintRows(walk, delay, AppendCsv, "");
    case TableForm::kReadable:
        Print(ReadableHeading());
        return PrintRows(walk, delay, AppendReadable, "");
    }
}

} // namespace

void RunFrames(const FramesOptions& options) {
    std::optional<InputFile> input;
    std::optional<StreamWalk> walk;
    std::int32_t delay = 0;
    try {
        input.emplace(options.file);
        input->Use([&](const std::wstring& path) { walk.emplace(path); });
        delay = walk->DelaySamples(DecoderBySettings(options.module));
    } catch (const ToolError& error) {
        if (options.form == TableForm::kJson)
            PrintDocument("frames", nlohmann::ordered_json::array({FailedFile(options.file, error.what())}));
        throw;
    }
    PrintFrames(*walk, delay, options);
}

} // namespace mpatool
