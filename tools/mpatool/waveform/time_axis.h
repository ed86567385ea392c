/// Marks on a time axis.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mpatool {

/// A stretch of time, in seconds from the start of the stream, shown `pixels` wide.
struct TimeSpan {
    double begin = 0;
    double end = 0;
    std::int32_t pixels = 0;
};

struct TimeMark {
    std::int32_t pixel = 0; ///< from the left edge
    bool isMajor = false;   ///< carries its time
    std::string label;      ///< "1:02:03", "0:00.25"; empty for minor marks
};

/// Marks at round times. Major ones are at least `majorPixels` apart, minor ones `minorPixels`: steps of 1, 2
/// and 5 as far as they divide the next larger unit, such as 20 seconds and 1 minute.
std::vector<TimeMark> TimeMarks(const TimeSpan& span, std::int32_t majorPixels, std::int32_t minorPixels);

} // namespace mpatool
