// Limits that this system's reader of settings files has and the Windows call has not.

#include "os/profile.h"

#include "support/test_files.h"

#include <gtest/gtest.h>
#include <string>

namespace {

constexpr std::size_t kLimit = 1024 * 1024;
constexpr int kFallback = -777;

int ReadKey(const std::string& content) {
    const test::ScratchFolder scratch;
    const auto path = scratch.Add("a.ini", test::Bytes(content.begin(), content.end()));
    return os::ReadProfileInt(test::Wide(path), L"CODEC", L"Key", kFallback);
}

std::string FillerLines(std::size_t bytes) {
    std::string text(bytes, ';');
    for (std::size_t index = 79; index < bytes; index += 80)
        text[index] = '\n';
    text.back() = '\n';
    return text;
}

TEST(ProfileLimits, OnlyTheFirstMebibyteCounts) {
    const std::string section = "[CODEC]\n";
    const std::string key = "Key=5\n";
    EXPECT_EQ(ReadKey(section + key + FillerLines(3 * kLimit)), 5);
    EXPECT_EQ(ReadKey(section + FillerLines(kLimit - section.size() - key.size()) + key), 5);
    EXPECT_EQ(ReadKey(section + FillerLines(kLimit - section.size() - key.size()) + key + "A=1\n"), 5);
    EXPECT_EQ(ReadKey(section + FillerLines(kLimit) + key), kFallback);
}

TEST(ProfileLimits, ALineThatCrossesTheLimitIsNotRead) {
    const std::string section = "[CODEC]\n";
    const std::string cut = "Key=12";
    EXPECT_EQ(ReadKey(section + FillerLines(kLimit - section.size() - cut.size()) + cut + "345\n"),
              kFallback);
}

TEST(ProfileLimits, OneEndlessLine) {
    EXPECT_EQ(ReadKey(std::string(3 * kLimit, 'x')), kFallback);
    EXPECT_EQ(ReadKey("[CODEC]\nKey=" + std::string(3 * kLimit, '1')), kFallback);
}

TEST(ProfileLimits, EndlessDevicesAreRefused) {
    EXPECT_EQ(os::ReadProfileInt(L"/dev/zero", L"CODEC", L"Key", kFallback), kFallback);
}

} // namespace
