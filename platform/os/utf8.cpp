#include "os/paths.h"

#include <cstdint>

namespace os {

namespace {

using CodePoint = std::uint32_t;

constexpr bool kUtf16 = sizeof(wchar_t) == 2;
constexpr CodePoint kReplacement = 0xFFFD;
constexpr CodePoint kLastCodePoint = 0x10FFFF;

/// With wide characters of 32 bits a byte 0x80 to 0xFF that is no part of valid UTF-8 becomes the lone
/// surrogate U+DC80 to U+DCFF, which no valid text holds.
constexpr CodePoint kEscapedBytes = 0xDC00;

constexpr bool IsSurrogate(CodePoint code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

constexpr bool IsHighSurrogate(CodePoint code) {
    return code >= 0xD800 && code <= 0xDBFF;
}

constexpr bool IsLowSurrogate(CodePoint code) {
    return code >= 0xDC00 && code <= 0xDFFF;
}

constexpr CodePoint CodeOfPair(CodePoint high, CodePoint low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

constexpr bool IsEscapedByte(CodePoint code) {
    return !kUtf16 && code >= kEscapedBytes + 0x80 && code <= kEscapedBytes + 0xFF;
}

struct Decoded {
    CodePoint code = 0;
    std::size_t bytes = 0; ///< 0: the text does not begin with a valid sequence
};

struct LeadByte {
    std::size_t bytes = 0;
    CodePoint bits = 0;
    CodePoint least = 0; ///< smallest code point that needs so many bytes
};

LeadByte SplitLeadByte(std::uint8_t byte) {
    if (byte < 0x80)
        return {1, byte, 0};
    if (byte >= 0xC0 && byte < 0xE0)
        return {2, byte & 0x1Fu, 0x80};
    if (byte >= 0xE0 && byte < 0xF0)
        return {3, byte & 0x0Fu, 0x800};
    if (byte >= 0xF0 && byte < 0xF8)
        return {4, byte & 0x07u, 0x10000};
    return {};
}

Decoded DecodeFirst(std::string_view text) {
    const LeadByte lead = SplitLeadByte(static_cast<std::uint8_t>(text.front()));
    if (lead.bytes == 0 || lead.bytes > text.size())
        return {};
    CodePoint code = lead.bits;
    for (const char next : text.substr(1, lead.bytes - 1)) {
        const auto byte = static_cast<std::uint8_t>(next);
        if ((byte & 0xC0u) != 0x80)
            return {};
        code = code << 6 | (byte & 0x3Fu);
    }
    // A lone surrogate in UTF-16 is written as three bytes, so that such file names survive.
    if (code < lead.least || code > kLastCodePoint || (!kUtf16 && IsSurrogate(code)))
        return {};
    return {code, lead.bytes};
}

void AppendWide(std::wstring& text, CodePoint code) {
    if (kUtf16 && code > 0xFFFF) {
        text += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
        text += static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
        text += static_cast<wchar_t>(code);
    }
}

CodePoint InvalidByte(char byte) {
    return kUtf16 ? kReplacement : kEscapedBytes + static_cast<std::uint8_t>(byte);
}

CodePoint UnitAt(std::wstring_view text, std::size_t index) {
    return index < text.size() ? static_cast<CodePoint>(text[index]) : 0;
}

void AppendContinuation(std::string& text, CodePoint code, unsigned shift) {
    text += static_cast<char>(0x80u | (code >> shift & 0x3Fu));
}

void AppendUtf8(std::string& text, CodePoint code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0u | code >> 6);
        AppendContinuation(text, code, 0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0u | code >> 12);
        AppendContinuation(text, code, 6);
        AppendContinuation(text, code, 0);
    } else {
        text += static_cast<char>(0xF0u | code >> 18);
        AppendContinuation(text, code, 12);
        AppendContinuation(text, code, 6);
        AppendContinuation(text, code, 0);
    }
}

void AppendNarrow(std::string& text, CodePoint code) {
    if (IsEscapedByte(code))
        text += static_cast<char>(code - kEscapedBytes);
    else if (code > kLastCodePoint || (!kUtf16 && IsSurrogate(code)))
        AppendUtf8(text, kReplacement);
    else
        AppendUtf8(text, code);
}

} // namespace

std::wstring WidenUtf8(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    while (!text.empty()) {
        const Decoded first = DecodeFirst(text);
        AppendWide(wide, first.bytes != 0 ? first.code : InvalidByte(text.front()));
        text.remove_prefix(first.bytes != 0 ? first.bytes : 1);
    }
    return wide;
}

std::string NarrowToUtf8(std::wstring_view text) {
    std::string narrow;
    narrow.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        CodePoint code = UnitAt(text, index);
        const CodePoint next = UnitAt(text, index + 1);
        if (IsHighSurrogate(code) && IsLowSurrogate(next)) {
            code = CodeOfPair(code, next);
            ++index;
        }
        AppendNarrow(narrow, code);
    }
    return narrow;
}

std::wstring WidenUtf16(std::span<const std::uint16_t> units) {
    std::wstring wide;
    wide.reserve(units.size());
    for (std::size_t index = 0; index < units.size(); ++index) {
        CodePoint code = units[index];
        const CodePoint next = index + 1 < units.size() ? units[index + 1] : 0;
        if (IsHighSurrogate(code) && IsLowSurrogate(next)) {
            code = CodeOfPair(code, next);
            ++index;
        }
        AppendWide(wide, code);
    }
    return wide;
}

bool IsText(std::wstring_view text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        const CodePoint code = UnitAt(text, index);
        if (kUtf16 && IsHighSurrogate(code) && IsLowSurrogate(UnitAt(text, index + 1)))
            ++index;
        else if (IsSurrogate(code) || code > kLastCodePoint)
            return false;
    }
    return true;
}

} // namespace os
