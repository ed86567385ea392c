/// The outer form that the JSON output of every command has.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace mpatool {

/// Names the schema file of `command`'s output under docs/schema: "mpatool-info/1". The number grows when
/// something is taken away or changes its meaning, not when something is added.
std::string SchemaOf(const std::string& command);

/// Prints the document of `command` with one entry of `files` for each file.
void PrintDocument(const std::string& command, const nlohmann::ordered_json& files);

/// Prints `document` as it stands.
void PrintJson(const nlohmann::ordered_json& document);

/// The entry of a file that could not be looked at.
nlohmann::ordered_json FailedFile(const std::wstring& file, const std::string& message);

/// A text in quotation marks. File names need not be valid UTF-8: what is not becomes a replacement
/// character.
std::string JsonText(const std::string& text);

} // namespace mpatool
