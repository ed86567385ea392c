#include "mpatool/output/shown_text.h"

#include "os/paths.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace mpatool {

namespace {

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

/// Controls; marks of direction, separators of lines and paragraphs, embeddings, isolates; with wide
/// characters of 32 bits the bytes that are no UTF-8, as os::WidenUtf8 keeps them.
constexpr Range kSpelledOut[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x200E, 0x200F},
                                 {0x2028, 0x202E}, {0x2066, 0x2069}, {0xDC80, 0xDCFF}};

std::uint32_t CodeOf(wchar_t character) {
    return std::char_traits<wchar_t>::to_int_type(character);
}

bool IsSpelledOut(wchar_t character) {
    const auto code = CodeOf(character);
    // With 16 bits the last range is halves of characters.
    return std::ranges::any_of(kSpelledOut, [code](const Range& range) {
        return code >= range.first && code <= range.last && (sizeof(wchar_t) > 2 || range.first != 0xDC80);
    });
}

std::wstring SpelledOut(wchar_t character) {
    const auto code = CodeOf(character);
    const bool isByte = code < 0x100 || code >= 0xDC80;
    char text[12];
    std::snprintf(text, sizeof text, isByte ? "\\x%02x" : "\\u%04x", isByte ? code & 0xFFu : code);
    return os::WidenUtf8(text);
}

std::string Shown(std::wstring_view text, std::wstring_view kept) {
    std::wstring shown;
    for (const wchar_t character : text) {
        if (IsSpelledOut(character) && kept.find(character) == std::wstring_view::npos)
            shown += SpelledOut(character);
        else
            shown += character;
    }
    return os::NarrowToUtf8(shown);
}

} // namespace

std::string ShownPath(const std::wstring& path) {
    return Shown(path, L"");
}

std::string ShownText(std::string_view text) {
    return Shown(os::WidenUtf8(text), L"\n\t");
}

} // namespace mpatool
