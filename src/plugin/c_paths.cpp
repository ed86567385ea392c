#include "plugin/c_paths.h"

#include "os/paths.h"

#include <span>
#include <string_view>

namespace trnmpa {

namespace {

constexpr std::size_t kMostUnits = 32767;

/// Looks no farther than a path may go, should the zero be missing.
template <typename Unit>
std::span<const Unit> UpToZero(const Unit* text) {
    std::size_t length = 0;
    while (length <= kMostUnits && text[length] != 0)
        ++length;
    return {text, length};
}

template <typename Unit>
bool HasLength(std::span<const Unit> text) {
    return !text.empty() && text.size() <= kMostUnits;
}

} // namespace

std::optional<std::wstring> PathFrom(const char* utf8) {
    const std::span<const char> bytes = UpToZero(utf8);
    const std::string_view text(bytes.data(), bytes.size());
    if (!HasLength(bytes))
        return std::nullopt;
    std::wstring path = os::WidenUtf8(text);
    // What is no UTF-8 comes out as something that is no text, or goes back as other bytes.
    if (!os::IsText(path) || os::NarrowToUtf8(path) != text)
        return std::nullopt;
    return path;
}

std::optional<std::wstring> PathFrom(const std::uint16_t* utf16) {
    const std::span<const std::uint16_t> units = UpToZero(utf16);
    if (!HasLength(units))
        return std::nullopt;
    std::wstring path = os::WidenUtf16(units);
    if (!os::IsText(path))
        return std::nullopt;
    return path;
}

} // namespace trnmpa
