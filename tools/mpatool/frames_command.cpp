#include "mpatool/frames_command.h"

#include "mpatool/frame_row.h"
#include "mpatool/module_place.h"
#include "mpatool/stream_walk.h"
#include "mpatool/text_output.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

#include <cstddef>
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

void PrintJson(StreamWalk& walk, std::int32_t delay, const std::wstring& file) {
    using Json = nlohmann::ordered_json;
    // File names need not be valid UTF-8.
    const std::string name =
        Json(os::NarrowToUtf8(file)).dump(-1, ' ', false, Json::error_handler_t::replace);
    Print("{\n  \"file\": " + name + ",\n  \"index\": " + (walk.Index() ? "true" : "false") +
          ",\n  \"delaySamples\": " + std::to_string(delay) + ",\n  \"frames\": [\n    ");
    PrintRows(walk, delay, AppendJson, ",\n    ");
    Print("\n  ]\n}\n");
}

} // namespace

void RunFrames(const FramesOptions& options) {
    StreamWalk walk(options.file);
    const std::int32_t delay = walk.DelaySamples(DecoderBySettings(options.module));
    switch (options.form) {
    case TableForm::kJson:
        return PrintJson(walk, delay, options.file);
    case TableForm::kCsv:
        Print(CsvHeading());
        return PrintRows(walk, delay, AppendCsv, "");
    case TableForm::kReadable:
        Print(ReadableHeading());
        return PrintRows(walk, delay, AppendReadable, "");
    }
}

} // namespace mpatool
