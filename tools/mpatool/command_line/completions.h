/// What shells need to complete the program's command lines.
#pragma once

#include "mpatool/command_line/command_texts.h"

namespace mpatool {

std::string BashCompletion(const CommandText& program);
std::string ZshCompletion(const CommandText& program);

} // namespace mpatool
