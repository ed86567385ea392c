#include "mpatool/output/shown_text.h"

#include "os/paths.h"

#include <gtest/gtest.h>

namespace {

using mpatool::ShownPath;
using mpatool::ShownText;

TEST(ShownText, PathsStayOnOneLineAndSteerNothing) {
    EXPECT_EQ(ShownPath(L"a.mp3: no damage\nb.mp3"), "a.mp3: no damage\\x0ab.mp3");
    EXPECT_EQ(ShownPath(L"\x1b[31mred\a\t\x7f\x9b.mp3"), "\\x1b[31mred\\x07\\x09\\x7f\\x9b.mp3");
    EXPECT_EQ(ShownPath(L"song\u202e3pm.exe\u2028\u2069"), "song\\u202e3pm.exe\\u2028\\u2069");
}

TEST(ShownText, OtherCharactersStay) {
    const std::string text = "C:\\Fran\u00e7ais \u97f3\u697d \U0001f3b5 \u00a0.mp3";
    EXPECT_EQ(ShownPath(os::WidenUtf8(text)), text);
    EXPECT_EQ(ShownPath(L""), "");
}

TEST(ShownText, BytesThatAreNoTextAreSpelledOut) {
    const std::string expected = sizeof(wchar_t) > 2 ? "a\\x9b\\xffb" : "a\uFFFD\uFFFDb";
    EXPECT_EQ(ShownPath(os::WidenUtf8("a\x9b\xff"
                                      "b")),
              expected);
}

TEST(ShownText, ATextKeepsItsLines) {
    EXPECT_EQ(ShownText("one\n\ttwo\x1b[2J\r"), "one\n\ttwo\\x1b[2J\\x0d");
}

} // namespace
