/// Wide paths and the places of this process.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace os {

/// The separator between folders: a backslash on Windows, a slash elsewhere.
extern const wchar_t kPathSeparator;

/// UTF-8 to the system's wide string and back. Bytes that are no valid UTF-8 survive the round trip where
/// wide characters have 32 bits, lone surrogates where they have 16; other things that are no text become
/// U+FFFD.
std::wstring WidenUtf8(std::string_view text);
std::string NarrowToUtf8(std::wstring_view text);

/// UTF-16 to the system's wide string; lone surrogates stay as they are.
std::wstring WidenUtf16(std::span<const std::uint16_t> units);

/// True when the wide string holds nothing but characters: surrogates in pairs (where wide characters have 16
/// bits) or not at all, nothing above U+10FFFF.
bool IsText(std::wstring_view text);

/// The full path under which a library at `path`, taken from the current folder when it is relative, knows
/// itself once it is loaded (as its ModulePath); empty when the system does not tell.
std::wstring FullPath(const std::wstring& path);

/// Full path of the running program; empty when the system does not tell.
std::wstring ExecutablePath();

/// Full path of the module (library or program) that contains this code; empty when the system does not tell.
std::wstring ModulePath();

/// Keeps the module's instance handle from its start-up, for ModulePath (Windows; elsewhere unused).
void SetModuleInstance(void* instance);

/// True when something of that name exists and this process may read it.
bool IsReadable(const std::wstring& path);

} // namespace os
