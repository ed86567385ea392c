/// What `mpatool check` tells of a file, in its two written forms.
#pragma once

#include "mpatool/check/stream_check.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace mpatool {

/// For people: a line that sums up, then one a finding.
std::string ReadableCheck(const std::wstring& file, const StreamCheckResult& result);

/// For programs: an object.
nlohmann::ordered_json JsonCheck(const std::wstring& file, const StreamCheckResult& result);

} // namespace mpatool
