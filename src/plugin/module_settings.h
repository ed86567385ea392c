/// The module's settings, from the file trnfsdk.ini.
///
///     [FILERW]
///     ReadBufSize=512      ; KiB, buffer of a buffered file stream; absent or below 1: 512
///     [CODEC]
///     MP3DecoderUse=0      ; 0: the built-in decoder, 1: the external one
///     [READSIZE]
///     ReadMp3BufSize=0     ; KiB, read block of the sample reader with the built-in decoder; 0: 64
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace trnmpa {

/// Name of the settings file.
inline constexpr const wchar_t* kSettingsFileName = L"trnfsdk.ini";

/// Folder of the settings file, without a separator at its end: that of the program when a readable
/// trnfsdk.ini is there, else that of this module, whether there is one or not.
std::wstring GetConfigFolder();

/// The choice that GetConfigFolder makes, for a program and a module at the given full paths.
std::wstring ChooseConfigFolder(const std::wstring& programPath, const std::wstring& modulePath);

/// Reads the settings file as it stands, keeps Mp3DecoderUse and ReadMp3BufSize for the whole process, and
/// gives the buffer size of buffered file streams in bytes (what does not fit 31 bits counts as the largest
/// number that does). 1 when reading failed, without memory; what was not yet read then keeps its value.
/// Never throws.
std::int32_t ReadModuleSettings() noexcept;

/// Gives the integer of `key` in `section`, or `fallback` when there is none.
using SettingReader =
    std::function<std::int32_t(const std::wstring& section, const std::wstring& key, std::int32_t fallback)>;

/// ReadModuleSettings with another source of integers.
std::int32_t ReadModuleSettings(const SettingReader& read) noexcept;

/// Decoder selector, as the file says: 1 for the external decoder, 0 for the built-in one; both this and the
/// next are 0 before the first ReadModuleSettings. Any thread may ask; an engine keeps what it saw when it
/// was made.
std::int32_t Mp3DecoderUse() noexcept;

/// Read block size of the sample reader with the built-in decoder, in KiB, as the file says: not checked, and
/// 0 for the default of the file library.
std::int32_t ReadMp3BufSize() noexcept;

} // namespace trnmpa
