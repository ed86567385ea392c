#include "mpatool/output/json_document.h"

#include "mpatool/output/text_output.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

} // namespace

std::string SchemaOf(const std::string& command) {
    return "mpatool-" + command + "/1";
}

void PrintDocument(const std::string& command, const Json& files) {
    PrintJson({{"schema", SchemaOf(command)}, {"files", files}});
}

void PrintJson(const Json& document) {
    constexpr int kIndent = 2;
    Print(document.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n");
}

Json FailedFile(const std::wstring& file, const std::string& message) {
    return {{"file", os::NarrowToUtf8(file)}, {"error", message}};
}

std::string JsonText(const std::string& text) {
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace mpatool
