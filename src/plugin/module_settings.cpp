#include "plugin/module_settings.h"

#include "os/paths.h"
#include "os/profile.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace trnmpa {

namespace {

constexpr std::int32_t kDefaultReadBufferBytes = 512 * 1024;
constexpr std::int32_t kReadFailed = 1;

std::atomic<std::int32_t> mp3DecoderUse = 0;
std::atomic<std::int32_t> readMp3BufSize = 0;

std::wstring FolderOf(const std::wstring& path) {
    const std::size_t separator = path.rfind(os::kPathSeparator);
    return separator != std::wstring::npos ? path.substr(0, separator) : std::wstring();
}

std::wstring SettingsFileIn(const std::wstring& folder) {
    return folder + os::kPathSeparator + kSettingsFileName;
}

std::int32_t BytesOfKiB(std::int32_t kiB) {
    constexpr std::int64_t kMaximum = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(std::int64_t{kiB} * 1024, kMaximum));
}

} // namespace

std::wstring ChooseConfigFolder(const std::wstring& programPath, const std::wstring& modulePath) {
    const std::wstring folder = FolderOf(programPath);
    return os::IsReadable(SettingsFileIn(folder)) ? folder : FolderOf(modulePath);
}

std::wstring GetConfigFolder() {
    return ChooseConfigFolder(os::ExecutablePath(), os::ModulePath());
}

std::int32_t ReadModuleSettings(const SettingReader& read) noexcept {
    try {
        const std::int32_t readBufferKiB = read(L"FILERW", L"ReadBufSize", -1);
        mp3DecoderUse = read(L"CODEC", L"MP3DecoderUse", 0);
        readMp3BufSize = read(L"READSIZE", L"ReadMp3BufSize", 0);
        return readBufferKiB > 0 ? BytesOfKiB(readBufferKiB) : kDefaultReadBufferBytes;
    } catch (...) {
        return kReadFailed;
    }
}

std::int32_t ReadModuleSettings() noexcept {
    try {
        const std::wstring file = SettingsFileIn(GetConfigFolder());
        return ReadModuleSettings(
            [&file](const std::wstring& section, const std::wstring& key, std::int32_t fallback) {
                return os::ReadProfileInt(file, section, key, fallback);
            });
    } catch (...) {
        return kReadFailed;
    }
}

std::int32_t Mp3DecoderUse() noexcept {
    return mp3DecoderUse;
}

std::int32_t ReadMp3BufSize() noexcept {
    return readMp3BufSize;
}

} // namespace trnmpa
