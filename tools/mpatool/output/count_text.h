/// Numbers as people read them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mpatool {

/// "2,498".
std::string FormatCount(std::int64_t count);

/// "1 frame", "2,498 frames".
std::string CountOf(std::int64_t count, std::string_view singular);

} // namespace mpatool
