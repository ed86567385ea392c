#include "mpatool/command_line/time_parse.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace mpatool {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kSecondsPerHour = 3600;

/// Longest time in seconds that is taken, 100,000 hours; in nanoseconds it fits 64 bits with room to add.
constexpr std::int64_t kMaximumSeconds = 100'000 * kSecondsPerHour;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// A number with up to nine decimal places; further ones are dropped.
struct Decimal {
    std::int64_t whole = 0;
    std::int64_t billionths = 0;
    bool hasFraction = false;
};

/// Takes the digits at the front of `text` off it. Nothing when there are none or they do not fit.
std::optional<std::int64_t> TakeInteger(std::string_view& text) {
    std::int64_t value = 0;
    std::size_t length = 0;
    for (; length < text.size() && IsDigit(text[length]); ++length) {
        const int digit = text[length] - '0';
        if (value > (std::numeric_limits<std::int64_t>::max() - digit) / 10)
            return std::nullopt;
        value = value * 10 + digit;
    }
    if (length == 0)
        return std::nullopt;
    text.remove_prefix(length);
    return value;
}

std::optional<Decimal> TakeDecimal(std::string_view& text) {
    const auto whole = TakeInteger(text);
    if (!whole)
        return std::nullopt;
    Decimal number{*whole, 0, false};
    if (text.empty() || text.front() != '.')
        return number;
    text.remove_prefix(1);
    if (text.empty() || !IsDigit(text.front()))
        return std::nullopt;
    number.hasFraction = true;
    for (std::int64_t place = kNanosecondsPerSecond / 10; !text.empty() && IsDigit(text.front());
         place /= 10) {
        number.billionths += (text.front() - '0') * place;
        text.remove_prefix(1);
    }
    return number;
}

/// `number` times a unit of `seconds` seconds, in nanoseconds.
std::optional<std::int64_t> Scale(const Decimal& number, std::int64_t seconds) {
    if (number.whole > kMaximumSeconds / seconds)
        return std::nullopt;
    return number.whole * seconds * kNanosecondsPerSecond + number.billionths * seconds;
}

/// "M:S", "H:M:S", seconds with decimal places. `first` is what stood before the first colon.
std::optional<Time> ParseClock(std::int64_t first, std::string_view text) {
    std::array<std::int64_t, 2> fields = {first, 0};
    std::size_t count = 1;
    Decimal seconds;
    for (;; ++count) {
        text.remove_prefix(1); // the colon
        const auto number = TakeDecimal(text);
        if (!number || number->whole >= kSecondsPerMinute)
            return std::nullopt;
        seconds = *number;
        if (text.empty())
            break;
        if (text.front() != ':' || number->hasFraction || count == fields.size())
            return std::nullopt;
        fields[count] = number->whole;
    }
    const auto high = Scale({fields[0], 0, false}, count == 2 ? kSecondsPerHour : kSecondsPerMinute);
    if (!high)
        return std::nullopt;
    const std::int64_t minutes = count == 2 ? fields[1] : 0;
    return Time{*high + *Scale({minutes, 0, false}, kSecondsPerMinute) + *Scale(seconds, 1)};
}

/// A unit of time as it is written behind a number.
struct Unit {
    std::string_view name;
    std::int64_t seconds; ///< 0: milliseconds
};

/// In the order in which they may follow one another.
constexpr std::array kUnits = {Unit{"h", kSecondsPerHour}, Unit{"m", kSecondsPerMinute}, Unit{"s", 1},
                               Unit{"ms", 0}};

/// Takes a unit off the front and gives its place in `kUnits`.
std::optional<std::size_t> TakeUnit(std::string_view& text) {
    // Backwards, so that "ms" is tried before "m".
    for (std::size_t i = kUnits.size(); i-- > 0;) {
        if (text.starts_with(kUnits[i].name)) {
            text.remove_prefix(kUnits[i].name.size());
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> Nanoseconds(const Decimal& number, const Unit& unit) {
    if (unit.seconds != 0)
        return Scale(number, unit.seconds);
    const Decimal seconds = {number.whole / 1000, number.whole % 1000 * 1'000'000 + number.billionths / 1000,
                             true};
    return Scale(seconds, 1);
}

/// "1h2m3.5s": numbers with units, from long to short. `number` is what stood before the first unit.
std::optional<Time> ParseUnits(Decimal number, std::string_view text) {
    std::int64_t total = 0;
    std::size_t firstAllowed = 0;
    while (true) {
        const auto unit = TakeUnit(text);
        if (!unit || *unit < firstAllowed)
            return std::nullopt;
        firstAllowed = *unit + 1;
        const auto part = Nanoseconds(number, kUnits[*unit]);
        if (!part || *part > kMaximumSeconds * kNanosecondsPerSecond - total)
            return std::nullopt;
        total += *part;
        if (text.empty())
            return Time{total};
        const auto next = TakeDecimal(text);
        if (!next)
            return std::nullopt;
        number = *next;
    }
}

/// "1:02", "1:00:02".
std::string Clock(std::int64_t seconds) {
    const auto hours = static_cast<long long>(seconds / kSecondsPerHour);
    const auto minutes = static_cast<int>(seconds / kSecondsPerMinute % 60);
    const auto rest = static_cast<int>(seconds % kSecondsPerMinute);
    char text[48];
    if (hours > 0)
        std::snprintf(text, sizeof text, "%lld:%02d:%02d", hours, minutes, rest);
    else
        std::snprintf(text, sizeof text, "%d:%02d", minutes, rest);
    return text;
}

} // namespace

std::optional<StreamLength> ParseStreamLength(std::string_view text) {
    const auto number = TakeDecimal(text);
    if (!number)
        return std::nullopt;
    if (text.empty()) {
        // A bare "1.5" could mean either.
        if (number->hasFraction)
            return std::nullopt;
        return SampleCount{number->whole};
    }
    const auto time = text.front() != ':'   ? ParseUnits(*number, text)
                      : number->hasFraction ? std::nullopt
                                            : ParseClock(number->whole, text);
    if (!time)
        return std::nullopt;
    return *time;
}

std::optional<std::int64_t> ParseMilliseconds(std::string_view text) {
    constexpr std::int64_t kUnitsPerMillisecond = 10'000;
    constexpr std::int64_t kBillionthsPerUnit = kNanosecondsPerSecond / kUnitsPerMillisecond;
    const std::size_t places = text.size() - std::min(text.find('.'), text.size());
    const auto number = TakeDecimal(text);
    if (!number || !text.empty() || places > std::string_view(".0000").size() ||
        number->whole > kMaximumSeconds * 1000)
        return std::nullopt;
    return number->whole * kUnitsPerMillisecond + number->billionths / kBillionthsPerUnit;
}

std::int64_t ToSamples(const StreamLength& length, std::uint32_t sampleRate) {
    if (const auto* count = std::get_if<SampleCount>(&length))
        return count->samples;
    const std::int64_t nanoseconds = std::get<Time>(length).nanoseconds;
    const std::int64_t seconds = nanoseconds / kNanosecondsPerSecond;
    const std::int64_t rest = nanoseconds % kNanosecondsPerSecond;
    if (sampleRate != 0 && seconds >= std::numeric_limits<std::int64_t>::max() / sampleRate)
        return std::numeric_limits<std::int64_t>::max();
    return seconds * sampleRate + (rest * sampleRate + kNanosecondsPerSecond / 2) / kNanosecondsPerSecond;
}

std::string FormatTime(double seconds) {
    const std::int64_t milliseconds = std::llround(std::abs(seconds) * 1000);
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03d", static_cast<int>(milliseconds % 1000));
    const std::string sign = seconds < 0 && milliseconds != 0 ? "-" : "";
    return sign + Clock(milliseconds / 1000) + fraction;
}

std::string FormatWholeSeconds(double seconds) {
    return Clock(static_cast<std::int64_t>(std::max(seconds, 0.0)));
}

} // namespace mpatool
