/// Positions in a stream as people write them, and times as people read them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace mpatool {

/// A count of samples per channel.
struct SampleCount {
    std::int64_t samples = 0;
};

/// A time in nanoseconds.
struct Time {
    std::int64_t nanoseconds = 0;
};

using StreamLength = std::variant<SampleCount, Time>;

/// Reads a plain integer as samples ("44100") and everything else as a time: "1:02.5", "1:00:00", "62.5s",
/// "1h2m3s", "250ms". Nothing for any other text and for values that do not fit.
std::optional<StreamLength> ParseStreamLength(std::string_view text);

/// Milliseconds with up to four decimal places, in units of 100 ns. Nothing for any other text and for values
/// that do not fit.
std::optional<std::int64_t> ParseMilliseconds(std::string_view text);

/// Samples per channel of a length at `sampleRate` Hz, a time rounded to the nearest sample. The largest
/// value when the result does not fit.
std::int64_t ToSamples(const StreamLength& length, std::uint32_t sampleRate);

/// "1:02.500" or "1:00:02.500": hours only when there are any, milliseconds rounded.
std::string FormatTime(double seconds);

/// "1:02": the same in whole seconds, rounded down; below 0 it is 0.
std::string FormatWholeSeconds(double seconds);

} // namespace mpatool
