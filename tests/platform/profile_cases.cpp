#include "platform/profile_cases.h"

#include <string_view>

namespace test {

namespace {

using namespace std::string_literals;

constexpr int kNone = kProfileFallback;
constexpr int kLeast = -2147483647 - 1;

std::string Utf16(std::string_view text, bool bigEndian, bool mark) {
    std::string bytes;
    const auto add = [&](char high, char low) {
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    };
    if (mark)
        add('\xFE', '\xFF');
    for (const char character : text)
        add('\0', character);
    return bytes;
}

std::string Value(const std::string& value) {
    return "[CODEC]\r\nKey=" + value + "\r\n";
}

const std::string kPlain = Value("5");

std::vector<ProfileCase> NumberCases() {
    return {
        {"Digit", Value("5"), 5},
        {"SeveralDigits", Value("4711"), 4711},
        {"Plus", Value("+5"), 5},
        {"Minus", Value("-5"), -5},
        {"MinusZero", Value("-0"), 0},
        {"SignAlone", Value("-"), 0},
        {"SignThenBlank", Value("- 5"), 0},
        {"TwoSigns", Value("+-5"), 0},
        // The documentation promises 0 for a value that is no number, and for an empty one too.
        {"Empty", Value(""), kNone},
        {"BlanksOnly", Value(" \t "), kNone},
        {"Text", Value("abc"), 0},
        {"TrailingText", Value("5abc"), 5},
        {"Fraction", Value("5.9"), 5},
        {"Exponent", Value("1e3"), 1},
        {"TwoNumbers", Value("5 6"), 5},
        {"LeadingZeros", Value("010"), 10},
        {"Hexadecimal", Value("0x1F"), 31},
        {"HexadecimalLetters", Value("0xabCDefg"), 0xABCDEF},
        {"HexadecimalUpperX", Value("0X10"), 0},
        {"HexadecimalNegative", Value("-0x10"), -16},
        {"HexadecimalWithoutDigits", Value("0x"), 0},
        {"HexadecimalAfterZero", Value("00x1F"), 0},
        {"Octal", Value("0o17"), 15},
        {"OctalWrongDigit", Value("0o8"), 0},
        {"Binary", Value("0b11"), 3},
        {"BinaryWrongDigit", Value("0b2"), 0},
        {"Largest", Value("2147483647"), 2147483647},
        {"Least", Value("-2147483648"), kLeast},
        {"WrapsTo31Bits", Value("2147483648"), kLeast},
        {"WrapsTo32Bits", Value("4294967301"), 5},
        {"WrapsNegative", Value("-4294967295"), 1},
        {"WrapsTwentyDigits", Value("99999999999999999999"), 1661992959},
        {"HexadecimalWraps", Value("0x1FFFFFFFF"), -1},
        // The call has room for 29 characters. (Quoted values that just fill it lose their last one under
        // Wine; that is not copied.)
        {"TwentyNineCharacters", Value(std::string(28, '0') + "5678"), 5},
        {"ThirtyCharacters", Value(std::string(29, '0') + "5678"), 0},
    };
}

std::vector<ProfileCase> ValueCases() {
    return {
        {"BlanksAroundValue", Value(" \t\v\f 5 \t "), 5},
        {"LongBlanksAroundValue", Value(std::string(100'000, ' ') + "5" + std::string(100'000, ' ')), 5},
        {"ControlsBeforeDigit",
         Value("\x01\x1F"
               "5"),
         5},
        {"DosEndOfFileIsBlank",
         Value("\x1A"
               "5\x1A"),
         5},
        {"NoBreakSpaceIsText",
         Value("\xA0"
               "5"),
         0},
        {"DoubleQuotes", Value("\"5\""), 5},
        {"SingleQuotes", Value("'-7'"), -7},
        {"QuotedBlanks", Value("\" 5 \""), 5},
        {"QuotedNothing", Value("\"\""), kNone},
        {"QuotedBlanksOnly", Value("\"  \""), 0},
        {"OneQuote", Value("\""), 0},
        {"OpenQuote", Value("\"5"), 0},
        {"CloseQuote", Value("5\""), 5},
        {"MixedQuotes", Value("'5\""), 0},
        {"NestedQuotes", Value("'\"5\"'"), 0},
        {"QuotesThenComment", Value("\"5\" ;x"), 0},
        {"CommentAfterValue", Value("5;4"), 5},
        {"CommentForValue", Value(";5"), 0},
        {"TwoEqualSigns", Value("=5"), 0},
        {"EqualSignAfterValue", Value("5=6"), 5},
        {"ZeroByteInValue",
         Value("5\0"
               "6"s),
         5},
        {"ZeroByteBeforeValue",
         Value("\0"
               "5"s),
         kNone},
    };
}

std::vector<ProfileCase> NameCases() {
    return {
        {"CaseOfNames", "[codec]\r\nKEY=5\r\n", 5},
        {"BlanksAroundKey", "[CODEC]\r\n \tKey \t= 5\r\n", 5},
        {"BlankInsideKey", "[CODEC]\r\nK ey=5\r\n", kNone},
        {"KeyPrefix", "[CODEC]\r\nKeyX=4\r\nKe=4\r\n", kNone},
        {"QuotedKey", "[CODEC]\r\n\"Key\"=5\r\n", kNone},
        {"KeyWithoutEqualSign", "[CODEC]\r\nKey\r\n", kNone},
        {"FirstKeyWins", "[CODEC]\r\nKey=4\r\nKey=5\r\n", 4},
        {"FirstKeyWinsEmpty", "[CODEC]\r\nKey=\r\nKey=5\r\n", kNone},
        {"FirstKeyWinsWithoutEqualSign", "[CODEC]\r\nKey\r\nKey=5\r\n", kNone},
        {"CommentedKey", "[CODEC]\r\n;Key=4\r\nKey=5\r\n", 5},
        {"CommentedKeyAfterBlank", "[CODEC]\r\n ; Key=4\r\n", kNone},
        {"NumberSignKey", "[CODEC]\r\n#Key=4\r\nKey=5\r\n", 5},
        {"ZeroByteAfterKey", "[CODEC]\r\nKey\0x=5\r\n"s, 5},
        {"ZeroByteInKey", "[CODEC]\r\nKe\0y=5\r\n"s, kNone},
        {"MissingKey", "[CODEC]\r\nOther=5\r\n", kNone},
        {"OtherKeysBetween", "[CODEC]\r\nA=1\r\nB\r\n=2\r\nKey=5\r\nC=3\r\n", 5},
        {"MissingSection", "[OTHER]\r\nKey=5\r\n", kNone},
        {"NoSection", "Key=5\r\n", kNone},
        {"BlanksAroundSection", " \t[CODEC] \r\nKey=5\r\n", 5},
        {"BlanksInSection", "[ CODEC\t]\r\nKey=5\r\n", 5},
        {"TextAfterSection", "[CODEC] Key=4\r\nKey=5\r\n", 5},
        {"LastBracketCounts", "[CODEC] ; [x]\r\nKey=5\r\n", kNone},
        {"TwoOpenBrackets", "[[CODEC]\r\nKey=5\r\n", kNone},
        {"SectionWithoutEnd", "[CODEC\r\nKey=5\r\n", kNone},
        {"SectionWithoutEndIsAKey", "[CODEC]\r\n[OTHER\r\nKey=5\r\n", 5},
        {"CommentedSection", "[CODEC]\r\n;[OTHER]\r\nKey=5\r\n", 5},
        {"KeyOfTheNextSection", "[CODEC]\r\nA=1\r\n[OTHER]\r\nKey=5\r\n", kNone},
        {"FirstSectionWins", "[CODEC]\r\nA=1\r\n[B]\r\nA=1\r\n[CODEC]\r\nKey=5\r\n", kNone},
        {"SectionInTheMiddle", "[A]\r\nKey=1\r\n[CODEC]\r\nKey=5\r\n[B]\r\nKey=2\r\n", 5},
        {"ZeroByteInSection", "[COD\0EC]\r\nKey=5\r\n"s, kNone},
        {"ZeroByteAfterSection", "[CODEC\0x]\r\nKey=5\r\n"s, 5},
    };
}

std::vector<ProfileCase> FileCases() {
    return {
        {"EmptyFile", "", kNone},
        {"OneByte", "\xFF", kNone},
        {"LineFeeds", "[CODEC]\nKey=5\n", 5},
        {"CarriageReturns", "[CODEC]\rKey=5\r", 5},
        {"NoFinalNewline", "[CODEC]\r\nKey=5", 5},
        {"BlankLines", "\r\n\n\r[CODEC]\r\n\r\n \r\nKey=5", 5},
        {"FormFeedEndsNoLine", "[CODEC]\fKey=5\r\n", kNone},
        {"DosEndOfFileBefore", "\x1A\r\n" + kPlain, 5},
        {"ZeroBytesBefore", std::string(16, '\0') + kPlain, kNone},
        {"HighBytes", "[CODEC]\r\nA=\xFF\xFE\x80\r\nKey=5\r\n", 5},
        // Windows takes the first line of a file with this mark for text, "[CODEC]" behind it is not found
        // there.
        {"Utf8Mark", "\xEF\xBB\xBF" + kPlain, 5},
        {"Utf8MarkThenInvalid", "\xEF\xBB\xBF[CODEC]\r\nA=\xFF\xC3\r\nKey=5\r\n", 5},
        {"Utf8MarkTwice", "\xEF\xBB\xBF\xEF\xBB\xBF" + kPlain, kNone},
        {"Utf8MarkOnly", "\xEF\xBB\xBF", kNone},
        {"Utf16LittleEndian", Utf16(kPlain, false, true), 5},
        {"Utf16LittleEndianOddLength", Utf16(kPlain, false, true) + "x", 5},
        {"Utf16BigEndian", Utf16(kPlain, true, true), 5},
        {"Utf16MarkOnly", "\xFF\xFE", kNone},
        {"Utf16LittleEndianWithoutMark", Utf16(kPlain, false, false), kNone},
        {"Utf16BigEndianWithoutMark", Utf16(kPlain, true, false), kNone},
    };
}

} // namespace

std::vector<ProfileCase> ProfileCases() {
    std::vector<ProfileCase> all;
    for (const auto& cases : {NumberCases(), ValueCases(), NameCases(), FileCases()})
        all.insert(all.end(), cases.begin(), cases.end());
    return all;
}

} // namespace test
