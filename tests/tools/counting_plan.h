/// What the counting module is told to do with a media file.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace test {

using CountingPlan = std::map<std::string, std::int64_t>;

/// The plan beside the file `media`, with the defaults for what it leaves open.
CountingPlan ReadCountingPlan(const std::wstring& media);

} // namespace test
