#include "mpatool/waveform/time_axis.h"

#include "mpatool/command_line/time_parse.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace mpatool {

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kMinute = 60 * kMicrosecondsPerSecond;
constexpr std::int64_t kHour = 60 * kMinute;
/// Far beyond any stream; keeps the arithmetic within 64 bits.
constexpr double kLatestSecond = 1e12;

/// The steps between marks in microseconds, each dividing some larger ones.
std::vector<std::int64_t> Steps() {
    std::vector<std::int64_t> steps;
    for (std::int64_t unit = 1; unit < kMicrosecondsPerSecond; unit *= 10)
        for (const std::int64_t digit : {1, 2, 5})
            steps.push_back(unit * digit);
    for (const std::int64_t unit : {kMicrosecondsPerSecond, kMinute})
        for (const std::int64_t number : {1, 2, 5, 10, 20})
            steps.push_back(unit * number);
    for (std::int64_t unit = kHour; unit < kHour * kMicrosecondsPerSecond; unit *= 10)
        for (const std::int64_t digit : {1, 2, 5})
            steps.push_back(unit * digit);
    return steps;
}

class Axis {
public:
    explicit Axis(const TimeSpan& span)
        : begin_(std::clamp(span.begin, 0.0, kLatestSecond)), length_(std::max(span.end - span.begin, 1e-6)),
          pixels_(span.pixels) {}

    double PixelsOf(std::int64_t microseconds) const {
        return static_cast<double>(microseconds) / kMicrosecondsPerSecond / length_ * pixels_;
    }
    std::int32_t PixelAt(std::int64_t time) const {
        return static_cast<std::int32_t>(
            std::lround((static_cast<double>(time) / kMicrosecondsPerSecond - begin_) / length_ * pixels_));
    }
    /// The first multiple of `step` that is not before the begin.
    std::int64_t First(std::int64_t step) const {
        return static_cast<std::int64_t>(
                   std::ceil(begin_ * kMicrosecondsPerSecond / static_cast<double>(step))) *
               step;
    }
    bool Holds(std::int64_t time) const {
        return static_cast<double>(time) <= (begin_ + length_) * kMicrosecondsPerSecond;
    }

private:
    double begin_;
    double length_;
    std::int32_t pixels_;
};

/// The smallest step that is wide enough, of those that divide `multiple`.
std::int64_t ChooseStep(const Axis& axis, std::int32_t pixels, std::int64_t multiple) {
    const std::vector<std::int64_t> steps = Steps();
    const auto step = std::ranges::find_if(steps, [&](std::int64_t candidate) {
        return multiple % candidate == 0 && axis.PixelsOf(candidate) >= pixels;
    });
    return step != steps.end() ? *step : multiple != 0 ? multiple : steps.back();
}

/// With as many decimal places as the step has.
std::string LabelOf(std::int64_t time, std::int64_t step) {
    const std::int64_t seconds = time / kMicrosecondsPerSecond;
    std::string label = FormatWholeSeconds(static_cast<double>(seconds));
    if (step >= kMicrosecondsPerSecond)
        return label;
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%06d", static_cast<int>(time % kMicrosecondsPerSecond));
    std::size_t places = 6;
    for (; step % 10 == 0; step /= 10)
        --places;
    return label + std::string(fraction.data(), 1 + places);
}

} // namespace

std::vector<TimeMark> TimeMarks(const TimeSpan& span, std::int32_t majorPixels, std::int32_t minorPixels) {
    const Axis axis(span);
    const std::int64_t major = ChooseStep(axis, majorPixels, 0);
    const std::int64_t minor = ChooseStep(axis, minorPixels, major);
    std::vector<TimeMark> marks;
    for (std::int64_t time = axis.First(minor); axis.Holds(time); time += minor) {
        const bool isMajor = time % major == 0;
        marks.push_back({axis.PixelAt(time), isMajor, isMajor ? LabelOf(time, major) : ""});
    }
    return marks;
}

} // namespace mpatool
