/// The manual page.
#pragma once

#include "mpatool/command_line/command_texts.h"

namespace mpatool {

/// As troff with the macros of man(7). `exitStatus` is the text that all footers end with; it becomes one
/// table.
std::string ManPage(const CommandText& program, const std::string& version, const std::string& exitStatus);

} // namespace mpatool
