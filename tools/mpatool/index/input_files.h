/// The media files that a command line means.
#pragma once

#include "mpatool/module/module_host.h"

#include <functional>
#include <string>
#include <vector>

namespace mpatool {

/// A file stands for itself. With `recurse`, a folder stands for the files in and below it whose names the
/// module handles, in the order of their names; without, it is a failure. `fail` gets the path and the
/// message of each failure. Throws Interrupted.
std::vector<std::wstring>
CollectFiles(ModuleHost& host, const std::vector<std::wstring>& named, bool recurse,
             const std::function<void(const std::wstring&, const std::string&)>& fail);

} // namespace mpatool
