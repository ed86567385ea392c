#include "os/profile.h"

#include "os/file.h"
#include "os/paths.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// The rules are those that the Windows call shows, found by trying; tests/platform/profile_test.cpp holds
// them, and runs the same table against the call itself.

namespace os {

namespace {

/// Settings files have a few lines; of anything larger only this much is looked at.
constexpr std::size_t kMaximumFileBytes = 1024 * 1024;

/// The call reads the value into room for so many characters.
constexpr std::size_t kMaximumValueLength = 29;

constexpr std::wstring_view kBlanks = L"\t\n\v\f\r \x1A";

std::wstring_view Trim(std::wstring_view text) {
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::wstring_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

std::wstring_view UpToZero(std::wstring_view text) {
    return text.substr(0, text.find(L'\0'));
}

wchar_t ToLower(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

bool SameName(std::wstring_view left, std::wstring_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](wchar_t a, wchar_t b) { return ToLower(a) == ToLower(b); });
}

std::wstring WidenUtf16(std::string_view bytes, unsigned highByte) {
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        const auto high = static_cast<std::uint8_t>(bytes[index + highByte]);
        const auto low = static_cast<std::uint8_t>(bytes[index + 1 - highByte]);
        text += static_cast<wchar_t>(high << 8 | low);
    }
    return text;
}

std::wstring WidenLatin1(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    for (const char byte : bytes)
        text += static_cast<wchar_t>(static_cast<std::uint8_t>(byte));
    return text;
}

/// The byte order mark decides; without one the bytes are characters of the ANSI code page.
std::wstring Decode(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF"))
        return WidenUtf8(bytes.substr(3));
    if (bytes.starts_with("\xFF\xFE"))
        return WidenUtf16(bytes.substr(2), 1);
    if (bytes.starts_with("\xFE\xFF"))
        return WidenUtf16(bytes.substr(2), 0);
    return WidenLatin1(bytes);
}

std::wstring ReadText(const std::wstring& path) {
    File file;
    if (!file.Open(path))
        return {};
    std::vector<std::uint8_t> bytes(kMaximumFileBytes + 1);
    const std::size_t length = file.ReadAt(0, bytes);
    const std::size_t used = std::min(length, kMaximumFileBytes);
    std::wstring text = Decode({reinterpret_cast<const char*>(bytes.data()), used});
    // A line that is cut off must not pass for a whole one.
    if (length > kMaximumFileBytes)
        text.resize(text.find_last_of(L"\r\n") + 1);
    return text;
}

/// Cuts the first line off `text`.
std::wstring_view TakeLine(std::wstring_view& text) {
    const std::size_t end = text.find_first_of(L"\r\n");
    const std::wstring_view line = text.substr(0, end);
    text.remove_prefix(end == std::wstring_view::npos ? text.size() : end + 1);
    return Trim(line);
}

/// The name between the brackets of a section's first line; what follows the last bracket does not count.
std::optional<std::wstring_view> SectionName(std::wstring_view line) {
    const std::size_t end = line.starts_with(L'[') ? line.rfind(L']') : std::wstring_view::npos;
    if (end == std::wstring_view::npos)
        return std::nullopt;
    return Trim(UpToZero(line.substr(1, end - 1)));
}

struct Entry {
    std::wstring_view name;
    std::wstring_view value;
};

Entry SplitEntry(std::wstring_view line) {
    const std::size_t equals = line.find(L'=');
    if (equals == std::wstring_view::npos)
        return {UpToZero(line), {}};
    return {UpToZero(Trim(line.substr(0, equals))), UpToZero(Trim(line.substr(equals + 1)))};
}

/// The value of the first such key in the first such section; empty when there is none. Comments need no
/// rule: their lines are entries whose names begin with a semicolon.
std::wstring_view FindValue(std::wstring_view text, std::wstring_view section, std::wstring_view key) {
    bool inSection = section.empty();
    while (!text.empty()) {
        const std::wstring_view line = TakeLine(text);
        if (line.empty())
            continue;
        if (const auto name = SectionName(line)) {
            if (inSection)
                return {};
            inSection = SameName(*name, section);
        } else if (inSection) {
            const Entry entry = SplitEntry(line);
            if (SameName(entry.name, key))
                return entry.value;
        }
    }
    return {};
}

std::wstring_view WithoutQuotes(std::wstring_view value) {
    const bool quoted = value.size() >= 2 && (value.front() == L'"' || value.front() == L'\'') &&
                        value.front() == value.back();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

std::uint32_t DigitValue(wchar_t character) {
    const wchar_t lower = ToLower(character);
    if (lower >= L'0' && lower <= L'9')
        return static_cast<std::uint32_t>(lower - L'0');
    return lower >= L'a' && lower <= L'f' ? static_cast<std::uint32_t>(lower - L'a') + 10 : ~0u;
}

/// Takes a prefix that names the number's base off `text`.
std::uint32_t TakeBase(std::wstring_view& text) {
    std::uint32_t base = 10;
    if (text.starts_with(L"0x"))
        base = 16;
    else if (text.starts_with(L"0o"))
        base = 8;
    else if (text.starts_with(L"0b"))
        base = 2;
    if (base != 10)
        text.remove_prefix(2);
    return base;
}

/// The integer at the start of `text`, modulo 2^32; 0 when there is none.
int LeadingInteger(std::wstring_view text) {
    while (!text.empty() && text.front() <= L' ')
        text.remove_prefix(1);
    const bool negative = text.starts_with(L'-');
    if (negative || text.starts_with(L'+'))
        text.remove_prefix(1);
    const std::uint32_t base = TakeBase(text);
    std::uint32_t number = 0;
    for (const wchar_t character : text) {
        const std::uint32_t digit = DigitValue(character);
        if (digit >= base)
            break;
        number = number * base + digit;
    }
    return static_cast<int>(negative ? 0u - number : number);
}

} // namespace

int ReadProfileInt(const std::wstring& path, const std::wstring& section, const std::wstring& key,
                   int fallback) {
    const std::wstring text = ReadText(path);
    const std::wstring_view value = WithoutQuotes(FindValue(text, Trim(section), Trim(key)));
    return value.empty() ? fallback : LeadingInteger(value.substr(0, kMaximumValueLength));
}

} // namespace os
