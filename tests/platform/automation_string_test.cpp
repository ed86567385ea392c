#include "os/automation_string.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

using namespace std::string_literals;

TEST(AutomationString, NullIsTheEmptyString) {
    const CComBSTR text;
    EXPECT_EQ(text.m_str, nullptr);
    EXPECT_EQ(text.Length(), 0u);
    EXPECT_TRUE(os::CharactersOf(text).empty());
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    SysFreeString(nullptr);
    EXPECT_EQ(CComBSTR(static_cast<const wchar_t*>(nullptr)).m_str, nullptr);
}

TEST(AutomationString, KeepsLengthAndTerminator) {
    const CComBSTR text = os::ToAutomationString(L"abc");
    ASSERT_NE(text.m_str, nullptr);
    EXPECT_EQ(text.Length(), 3u);
    EXPECT_EQ(text.m_str[3], L'\0');
    EXPECT_EQ(os::CharactersOf(text), L"abc");
}

TEST(AutomationString, LengthInBytesStandsBeforeTheText) {
    const CComBSTR text = os::ToAutomationString(L"abcd");
    if (text.m_str == nullptr)
        FAIL() << "no memory";
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text.m_str) - sizeof bytes, sizeof bytes);
    EXPECT_EQ(bytes, 4 * sizeof(wchar_t));
}

TEST(AutomationString, EmptyTextIsNotNull) {
    const CComBSTR text = os::ToAutomationString(L"");
    ASSERT_NE(text.m_str, nullptr);
    EXPECT_EQ(text.Length(), 0u);
    EXPECT_EQ(text.m_str[0], L'\0');
}

TEST(AutomationString, CarriesZerosAndUnicode) {
    const std::wstring zeros = L"a\0b"s;
    EXPECT_EQ(os::CharactersOf(os::ToAutomationString(zeros)), zeros);
    const std::wstring unicode = L"Ünï 日本語 \U0001F3B5";
    EXPECT_EQ(os::CharactersOf(os::ToAutomationString(unicode)), unicode);
    EXPECT_EQ(os::CharactersOf(CComBSTR(unicode.c_str())), unicode);
}

TEST(AutomationString, CopiesAreIndependent) {
    CComBSTR first = os::ToAutomationString(L"first");
    CComBSTR copy = first;
    ASSERT_NE(copy.m_str, first.m_str);
    first.m_str[0] = L'X';
    EXPECT_EQ(os::CharactersOf(copy), L"first");
    copy = os::ToAutomationString(L"second");
    EXPECT_EQ(os::CharactersOf(copy), L"second");
    EXPECT_EQ(os::CharactersOf(first), L"Xirst");
}

TEST(AutomationString, MovingLeavesNull) {
    CComBSTR first = os::ToAutomationString(L"first");
    const CComBSTR second = std::move(first);
    EXPECT_EQ(first.m_str, nullptr); // NOLINT(bugprone-use-after-move): that state is the point
    EXPECT_EQ(os::CharactersOf(second), L"first");
}

TEST(AutomationString, CopyOfNullIsNull) {
    const CComBSTR null;
    const CComBSTR copy = null;
    EXPECT_EQ(copy.m_str, nullptr);
}

TEST(AutomationString, WithoutTextTheCharactersAreRoom) {
    const BSTR room = SysAllocStringLen(nullptr, 5);
    ASSERT_NE(room, nullptr);
    EXPECT_EQ(SysStringLen(room), 5u);
    EXPECT_EQ(room[5], L'\0');
    SysFreeString(room);
}

TEST(AutomationString, LengthBeyondTheFormatGivesNull) {
    EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFu), nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x7FFFFFFFu), nullptr);
    EXPECT_EQ(CComBSTR(-1, L"abc").m_str, nullptr);
}

} // namespace
