#include "os/paths.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

constexpr bool kUtf16 = sizeof(wchar_t) == 2;

std::string Bytes(const char8_t* text) {
    return reinterpret_cast<const char*>(text);
}

TEST(Utf8, EmptyTextStaysEmpty) {
    EXPECT_EQ(os::WidenUtf8(""), L"");
    EXPECT_EQ(os::NarrowToUtf8(L""), "");
}

TEST(Utf8, EverySequenceLengthAndItsLimits) {
    const std::string utf8 = Bytes(u8"\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF");
    const std::wstring wide = L"\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF";
    EXPECT_EQ(os::WidenUtf8(utf8), wide);
    EXPECT_EQ(os::NarrowToUtf8(wide), utf8);
}

TEST(Utf8, ZeroIsACharacter) {
    EXPECT_EQ(os::WidenUtf8("a\0b"s), L"a\0b"s);
    EXPECT_EQ(os::NarrowToUtf8(L"a\0b"s), "a\0b"s);
}

TEST(Utf8, EveryCodePointSurvives) {
    for (char32_t code = 1; code <= 0x10FFFF; code += code < 0x3000 ? 1 : 97) {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue;
        std::wstring wide;
        if (kUtf16 && code > 0xFFFF) {
            wide += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
            wide += static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            wide += static_cast<wchar_t>(code);
        }
        ASSERT_EQ(os::WidenUtf8(os::NarrowToUtf8(wide)), wide) << static_cast<unsigned>(code);
    }
}

struct InvalidCase {
    const char* name;
    std::string bytes;
};

class InvalidUtf8 : public testing::TestWithParam<InvalidCase> {};

/// Where wide characters have 32 bits, each invalid byte stands as U+DC00 + byte and survives; else it
/// becomes U+FFFD.
TEST_P(InvalidUtf8, EveryByteIsKeptOrReplaced) {
    const std::string& bytes = GetParam().bytes;
    std::wstring expected;
    for (const char byte : bytes)
        expected += static_cast<wchar_t>(kUtf16 ? 0xFFFD : 0xDC00 + static_cast<unsigned char>(byte));
    EXPECT_EQ(os::WidenUtf8("<" + bytes + ">"), L"<" + expected + L">");
    if (!kUtf16) {
        EXPECT_EQ(os::NarrowToUtf8(L"<" + expected + L">"), "<" + bytes + ">");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, InvalidUtf8,
    testing::Values(InvalidCase{"LoneContinuation", "\x80"}, InvalidCase{"LoneLead", "\xC3"},
                    InvalidCase{"Overlong2", "\xC0\x80"}, InvalidCase{"Overlong3", "\xE0\x80\xAF"},
                    InvalidCase{"Overlong4", "\xF0\x80\x80\xAF"},
                    InvalidCase{"BeyondUnicode", "\xF4\x90\x80\x80"},
                    InvalidCase{"LeadF8", "\xF8\x88\x80\x80\x80"}, InvalidCase{"Cut3", "\xE6\x97"},
                    InvalidCase{"Cut4", "\xF0\x9F\x8E"}, InvalidCase{"FF", "\xFF\xFE"}),
    [](const auto& instance) { return instance.param.name; });

TEST(Utf8, TruncatedSequenceAtTheEnd) {
    const std::wstring wide = os::WidenUtf8("a\xE6\x97");
    ASSERT_EQ(wide.size(), 3u);
    EXPECT_EQ(wide[0], L'a');
}

TEST(Utf8, SurrogatesInUtf8) {
    // U+D83C written as three bytes: kept as a lone unit in UTF-16, as bytes elsewhere.
    const std::string bytes = "\xED\xA0\xBC";
    const std::wstring wide = os::WidenUtf8(bytes);
    EXPECT_EQ(wide.size(), kUtf16 ? 1u : 3u);
    EXPECT_EQ(os::NarrowToUtf8(wide), bytes);
}

TEST(Utf8, SurrogatePairsAreOneCharacter) {
    std::wstring pair;
    pair += static_cast<wchar_t>(0xD83C);
    pair += static_cast<wchar_t>(0xDFB5);
    EXPECT_EQ(os::NarrowToUtf8(pair), "\xF0\x9F\x8E\xB5");
}

TEST(Utf8, LoneSurrogatesNeverBreakTheOutput) {
    for (const unsigned unit : {0xD800u, 0xDBFFu, 0xDC00u, 0xDC7Fu, 0xDD00u, 0xDFFFu}) {
        const std::string narrow = os::NarrowToUtf8(std::wstring(1, static_cast<wchar_t>(unit)));
        EXPECT_EQ(narrow.size(), 3u) << unit;
        if (kUtf16) {
            EXPECT_EQ(os::WidenUtf8(narrow), std::wstring(1, static_cast<wchar_t>(unit)));
        } else {
            EXPECT_EQ(narrow, "\xEF\xBF\xBD");
        }
    }
}

TEST(Utf8, RandomBytesSurviveWhereTheSystemAllowsThem) {
    std::mt19937 random(20240131);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 3 == 0 ? random() : 0x80 + random() % 0x78);
        const std::wstring wide = os::WidenUtf8(bytes);
        ASSERT_LE(wide.size(), bytes.size());
        if (!kUtf16) {
            ASSERT_EQ(os::NarrowToUtf8(wide), bytes);
        }
    }
}

TEST(Utf16, BecomesWideCharacters) {
    const std::u16string utf16 = u"a\u0080\uFFFF\U00010000\U0010FFFF";
    const std::vector<std::uint16_t> units(utf16.begin(), utf16.end());
    EXPECT_EQ(os::WidenUtf16(units), L"a\u0080\uFFFF\U00010000\U0010FFFF");
    EXPECT_EQ(os::WidenUtf16({}), L"");
}

TEST(Utf16, LoneSurrogatesStay) {
    for (const std::vector<std::uint16_t>& units :
         {std::vector<std::uint16_t>{0xD834}, {0xDD1E, 0xD834}, {0xD834, 'a'}}) {
        const std::wstring wide = os::WidenUtf16(units);
        EXPECT_EQ(std::vector<std::uint16_t>(wide.begin(), wide.end()), units);
        EXPECT_FALSE(os::IsText(wide));
    }
}

TEST(Text, IsMadeOfCharacters) {
    EXPECT_TRUE(os::IsText(L""));
    EXPECT_TRUE(os::IsText(L"a\uD7FF\uE000\uFFFF\U00010000\U0010FFFF"));
    EXPECT_FALSE(os::IsText(std::wstring(1, static_cast<wchar_t>(0xDC80))));
    if (!kUtf16) {
        EXPECT_FALSE(os::IsText(std::wstring(1, static_cast<wchar_t>(0x110000))));
        EXPECT_FALSE(os::IsText(std::wstring{static_cast<wchar_t>(0xD834), static_cast<wchar_t>(0xDD1E)}))
            << "no pairs here";
    }
}

} // namespace
