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

/// Controls; marks of direction, separators of lines and paragraphs, embeddings, isolates.
constexpr Range kSpelledOut[] = {
    {0, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

std::uint32_t CodeOf(wchar_t character) {
    return std::char_traits<wchar_t>::to_int_type(character);
}

/// A byte that is no UTF-8, as os::WidenUtf8 keeps it in wide characters of 32 bits.
bool IsForeignByte(std::uint32_t code) {
    return sizeof(wchar_t) > 2 && code >= 0xDC80 && code <= 0xDCFF;
}

bool IsSpelledOut(wchar_t character) {
    const std::uint32_t code = CodeOf(character);
    return IsForeignByte(code) || std::ranges::any_of(kSpelledOut, [code](const Range& range) {
               return code >= range.first && code <= range.last;
           });
}

std::wstring SpelledOut(wchar_t character) {
    const std::uint32_t code = CodeOf(character);
    const bool isByte = code < 0x100 || IsForeignByte(code);
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
