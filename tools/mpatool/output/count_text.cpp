#include "mpatool/output/count_text.h"

namespace mpatool {

std::string FormatCount(std::int64_t count) {
    std::string text = std::to_string(count);
    const std::size_t firstDigit = count < 0 ? 1 : 0;
    for (std::size_t place = text.size(); place > firstDigit + 3;) {
        place -= 3;
        text.insert(place, 1, ',');
    }
    return text;
}

std::string CountOf(std::int64_t count, std::string_view singular) {
    return FormatCount(count) + " " + std::string(singular) + (count == 1 ? "" : "s");
}

} // namespace mpatool
