#include "mpatool/module/module_place.h"

#include "mpatool/module/module_host.h"
#include "mpatool/output/tool_error.h"
#include "os/paths.h"
#include "os/profile.h"
#include "plugin/module_settings.h"

namespace mpatool {

namespace {

struct Settings {
    std::int32_t decoderUse = 0;
    std::int32_t readBlockKiB = 0;
};

/// As the module at `module` reads them.
Settings SettingsOf(const std::wstring& module) {
    const std::wstring folder = trnmpa::ChooseConfigFolder(os::ExecutablePath(), os::FullPath(module));
    const std::wstring file = folder + os::kPathSeparator + trnmpa::kSettingsFileName;
    trnmpa::ReadModuleSettings(
        [&file](const std::wstring& section, const std::wstring& key, std::int32_t fallback) {
            return os::ReadProfileInt(file, section, key, fallback);
        });
    return {trnmpa::Mp3DecoderUse(), trnmpa::ReadMp3BufSize()};
}

std::int32_t DecoderUseOf(Decoder decoder) {
    return decoder == Decoder::kExternal ? 1 : 0;
}

std::string SettingsText(const Settings& settings) {
    return "[CODEC]\r\nMP3DecoderUse=" + std::to_string(settings.decoderUse) +
           "\r\n[READSIZE]\r\nReadMp3BufSize=" + std::to_string(settings.readBlockKiB) + "\r\n";
}

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.rfind(os::kPathSeparator) + 1);
}

std::wstring FileNameOf(const std::wstring& path) {
    return path.substr(path.rfind(os::kPathSeparator) + 1);
}

/// The settings file of the program's folder, which counts wherever the module stands.
void RequireNoSettingsBesideProgram(const std::wstring& modulePath) {
    const std::wstring program = os::ExecutablePath();
    if (trnmpa::ChooseConfigFolder(program, modulePath) + os::kPathSeparator != FolderOf(modulePath))
        throw ToolError(FolderOf(program) + trnmpa::kSettingsFileName,
                        "stands beside this program and says another decoder; --decoder cannot change that");
}

} // namespace

Decoder DecoderBySettings(const std::wstring& module) {
    const Settings settings = SettingsOf(module.empty() ? DefaultModulePath() : module);
    return settings.decoderUse == DecoderUseOf(Decoder::kExternal) ? Decoder::kExternal : Decoder::kBuiltIn;
}

ModulePlace::ModulePlace(const std::wstring& module, std::optional<Decoder> decoder)
    : name_(module.empty() ? DefaultModulePath() : module), path_(name_),
      decoder_(decoder ? *decoder : DecoderBySettings(name_)) {
    if (decoder && SettingsOf(name_).decoderUse != DecoderUseOf(*decoder))
        MoveToPrivateFolder(*decoder);
}

void ModulePlace::MoveToPrivateFolder(Decoder decoder) {
    RequireReadable(name_);
    const std::wstring full = os::FullPath(name_);
    Settings settings = SettingsOf(name_);
    settings.decoderUse = DecoderUseOf(decoder);
    const auto require = [this](bool done) {
        if (!done)
            throw ToolError(name_, L"no private folder can be made for it: " + folder_.ErrorText());
    };
    require(folder_.Create(L"mpatool-"));
    require(folder_.AddFile(trnmpa::kSettingsFileName, SettingsText(settings)));
    require(folder_.AddLibrary(full));
    path_ = folder_.PathOf(FileNameOf(full));
    RequireNoSettingsBesideProgram(path_);
#if defined(MPATOOL_MODULE_COMPANION)
    // The module looks for the external decoder's library beside itself.
    const std::wstring companion = FolderOf(full) + MPATOOL_MODULE_COMPANION;
    if (os::IsReadable(companion))
        require(folder_.AddLibrary(companion));
#endif
}

} // namespace mpatool
