#include "mpatool/command_line/time_parse.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace mpatool;

constexpr std::int64_t kMillion = 1'000'000;

/// Nanoseconds of a text that is a time; -1 for any other.
std::int64_t Nanoseconds(const char* text) {
    const auto length = ParseStreamLength(text);
    return length && std::holds_alternative<Time>(*length) ? std::get<Time>(*length).nanoseconds : -1;
}

/// Samples of a text that is a number of samples; -1 for any other.
std::int64_t Samples(const char* text) {
    const auto length = ParseStreamLength(text);
    return length && std::holds_alternative<SampleCount>(*length) ? std::get<SampleCount>(*length).samples
                                                                  : -1;
}

TEST(TimeParseTest, PlainIntegerIsSamples) {
    EXPECT_EQ(Samples("0"), 0);
    EXPECT_EQ(Samples("44100"), 44100);
    EXPECT_EQ(Samples("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_FALSE(ParseStreamLength("9223372036854775808"));
}

TEST(TimeParseTest, ClockTimes) {
    EXPECT_EQ(Nanoseconds("1:02.5"), 62'500 * kMillion);
    EXPECT_EQ(Nanoseconds("0:00"), 0);
    EXPECT_EQ(Nanoseconds("90:00"), 5'400'000 * kMillion);
    EXPECT_EQ(Nanoseconds("1:00:02.25"), 3'602'250 * kMillion);
    EXPECT_EQ(Nanoseconds("0:0.000000001"), 1);
}

TEST(TimeParseTest, TimesWithUnits) {
    EXPECT_EQ(Nanoseconds("62.5s"), 62'500 * kMillion);
    EXPECT_EQ(Nanoseconds("1h2m"), 3'720'000 * kMillion);
    EXPECT_EQ(Nanoseconds("1h2m3.5s"), 3'723'500 * kMillion);
    EXPECT_EQ(Nanoseconds("250ms"), 250 * kMillion);
    EXPECT_EQ(Nanoseconds("1s1ms"), 1001 * kMillion);
    EXPECT_EQ(Nanoseconds("1.5h"), 5'400'000 * kMillion);
    EXPECT_EQ(Nanoseconds("0.5ms"), kMillion / 2);
    EXPECT_EQ(Nanoseconds("1500.25ms"), 1'500'250'000);
    EXPECT_EQ(Nanoseconds("2m"), 120'000 * kMillion);
}

TEST(TimeParseTest, PlacesBeyondTheNinthAreDropped) {
    EXPECT_EQ(Nanoseconds("0.0000000019s"), 1);
}

TEST(TimeParseTest, EverythingElseIsRefused) {
    for (const char* text :
         {"",     " 1",     "1 ",      "-1",   "+1",   "1.5",    "1.",      ".5s",     "s",  "1x",
          "1m1h", "1s1s",   "1ms1s",   "1s2",  "1:60", "1:2:60", "1:60:00", "1:2:3:4", "1:", ":1",
          "1::2", "1.5:02", "1:2.5:3", "1:2s", "1h:2", "0x10",   "1e3",     "nan"}) {
        EXPECT_FALSE(ParseStreamLength(text)) << '"' << text << '"';
    }
}

TEST(TimeParseTest, ImmenseTimesAreRefused) {
    EXPECT_EQ(Nanoseconds("100000h"), 360'000'000'000 * kMillion);
    for (const char* text :
         {"100001h", "99999999999999999999s", "9223372036854775807s", "9223372036854775807ms",
          "100000h100000h", "100000h1m", "9223372036854775807:00", "100001:00:00"}) {
        EXPECT_FALSE(ParseStreamLength(text)) << text;
    }
}

TEST(TimeParseTest, ToSamplesRoundsToTheNearest) {
    EXPECT_EQ(ToSamples(SampleCount{123}, 44100), 123);
    EXPECT_EQ(ToSamples(Time{62'500 * kMillion}, 44100), 2756250);
    EXPECT_EQ(ToSamples(Time{kMillion}, 44100), 44);       // 44.1
    EXPECT_EQ(ToSamples(Time{15 * kMillion}, 44100), 662); // 661.5
    EXPECT_EQ(
        ToSamples(Time{std::numeric_limits<std::int64_t>::max()}, std::numeric_limits<std::uint32_t>::max()),
        std::numeric_limits<std::int64_t>::max());
}

TEST(TimeParseTest, Milliseconds) {
    EXPECT_EQ(mpatool::ParseMilliseconds("40"), 400'000);
    EXPECT_EQ(mpatool::ParseMilliseconds("26.1224"), 261'224);
    EXPECT_EQ(mpatool::ParseMilliseconds("0.5"), 5'000);
    for (const char* text : {"", ".5", "40.", "40ms", "-1", "+1", "1e3", "1.00001", "99999999999999999999"})
        EXPECT_FALSE(mpatool::ParseMilliseconds(text).has_value()) << text;
}

TEST(TimeParseTest, FormatTime) {
    EXPECT_EQ(FormatTime(0), "0:00.000");
    EXPECT_EQ(FormatTime(62.5), "1:02.500");
    EXPECT_EQ(FormatTime(59.9996), "1:00.000");
    EXPECT_EQ(FormatTime(3599.9996), "1:00:00.000");
    EXPECT_EQ(FormatTime(36'000'061), "10000:01:01.000");
    EXPECT_EQ(FormatTime(-0.025), "-0:00.025");
    EXPECT_EQ(FormatTime(-0.0001), "0:00.000");
}

TEST(TimeParseTest, FormatWholeSeconds) {
    EXPECT_EQ(FormatWholeSeconds(59.99), "0:59");
    EXPECT_EQ(FormatWholeSeconds(3661), "1:01:01");
    EXPECT_EQ(FormatWholeSeconds(-3), "0:00");
}

} // namespace
